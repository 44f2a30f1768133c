#pragma once

#include "VorControl/Persistence/PersistLog.h"

#include <exception>

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

/// What couldn't be loaded gets its defaults. A failure of that is logged.
template <class Reset>
void ResetAfterFailure(const Reset& reset) {
    try {
        reset();
    } catch (const std::exception& e) {
        Persistence::LogThrown(e, "EXCEPTION THROWN: ");
    }
}

} // namespace VorControl::Providers
