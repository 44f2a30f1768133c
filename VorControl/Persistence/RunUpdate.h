#pragma once

#include <type_traits>

namespace VorControl::Persistence {

/// Runs an update and then its end, which also runs when the update throws. Returns the result of the update.
template <class Update, class End>
auto RunUpdate(const Update& update, const End& end) {
    const auto run = [&] {
        try {
            return update();
        } catch (...) {
            end();
            throw;
        }
    };
    if constexpr (std::is_void_v<decltype(update())>) {
        run();
        end();
    } else {
        auto result = run();
        end();
        return result;
    }
}

} // namespace VorControl::Persistence
