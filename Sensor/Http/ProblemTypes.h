#pragma once

#include <span>

namespace Sensor::Http {

/// A type of problem, which "/problems/SLUG" explains.
struct ProblemType {
    unsigned status;
    const char* slug;
    const char* title;
    const char* explanation;
};

/// By status, ascending.
std::span<const ProblemType> ProblemTypes();
/// That of status 500 for a status without one.
const ProblemType& ProblemTypeOf(unsigned status);

} // namespace Sensor::Http
