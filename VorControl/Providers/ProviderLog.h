#pragma once

#include "Vor/LocatedFormat.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorControl/Control/RunCaught.h"
#include "VorControl/ControlProtocol/Translate.h"

#include <cstdint>
#include <exception>

namespace VorControl::Providers {

/// An entry of the user's log in the user's language.
template <typename... Args>
void LogForUser(std::uint64_t level, const Vor::LocatedFormat& text, const Args&... args) {
    Vor::LogUser(level, ControlProtocol::Translate("control", "ControlPersistProvider"),
                 Vor::LocatedFormat(ControlProtocol::Translate("VorControl", text.text), text.where), args...);
}

/// Runs a step and returns its result. A failure of it is logged with the text, and thrown on.
template <class Step, typename... Args>
auto RunLogged(const Step& step, const Vor::LocatedFormat& failureText, const Args&... args) {
    try {
        return step();
    } catch (const std::exception&) {
        Vor::LogError(failureText, args...);
        throw;
    }
}

/// Resets to the defaults what couldn't be loaded. A failure of that is logged.
template <class Reset>
void ResetAfterFailure(const Reset& reset) {
    RunCaught(reset, [](const std::exception& e) { Vor::LogThrown(e, "EXCEPTION THROWN: "); });
}

} // namespace VorControl::Providers
