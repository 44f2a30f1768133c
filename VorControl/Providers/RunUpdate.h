#pragma once

namespace VorControl::Providers {

/// Runs an update and then its end, also when the update throws. Gives the result of the update.
template <class Update, class End>
auto RunUpdate(const Update& update, const End& end) {
    const auto updated = [&] {
        try {
            return update();
        } catch (...) {
            end();
            throw;
        }
    }();
    end();
    return updated;
}

} // namespace VorControl::Providers
