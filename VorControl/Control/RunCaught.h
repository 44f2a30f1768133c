#pragma once

#include <exception>
#include <stdexcept>

namespace VorControl {

/// The text of a failure that isn't a std::exception.
inline constexpr const char* UnknownException = "unknown exception";

/// Runs the work of a service. Whatever it throws is passed to `failed` as a std::exception.
template <class Work, class Failed>
void RunCaught(const Work& work, const Failed& failed) {
    try {
        work();
    } catch (const std::exception& e) {
        failed(e);
    } catch (...) {
        failed(std::runtime_error(UnknownException));
    }
}

} // namespace VorControl
