#include "Sensor/Http/ProblemTypes.h"

#include "Sensor/Http/WireProblems.h"

#include <algorithm>
#include <vector>

namespace Sensor::Http {

namespace {

constexpr ProblemType ResourceProblems[] = {
    {403, "forbidden", "Forbidden",
     "The request is understood and not allowed, for instance because a page of another host sent it."},
    {404, "not-found", "Not found", "There is nothing at this path."},
    {405, "method-not-allowed", "Method not allowed",
     "What is at this path doesn't have this method. The field Allow lists those that it has."},
    {406, "not-acceptable", "Not acceptable", "A stream of events was asked for, and this is none."},
    {409, "conflict", "Conflict",
     "The sensor's state, or something that exists already, doesn't allow this at present."},
    {412, "precondition-failed", "Precondition failed",
     "The configuration isn't the one that the field If-Match names: somebody has changed it. Read it again. Or what "
     "If-None-Match excludes exists already."},
    {415, "unsupported-media-type", "Unsupported media type",
     "The body isn't of a type that is accepted here. The sensor expects JSON in UTF-8, and bytes for a file."},
    {421, "misdirected-request", "Misdirected request",
     "The field Host names another host. The sensor answers to loopback names and addresses, and to the names that it "
     "was started with."},
    {422, "unprocessable-content", "Unprocessable content",
     "The body is well-formed, and its content is refused. The member 'errors' lists each value that is wrong."},
    {503, "unavailable", "Unavailable",
     "The sensor is busy with other requests or an operation. Try again after the time in the field Retry-After."},
    {504, "timeout", "Timeout", "A part of the sensor didn't answer in time."},
    {507, "insufficient-storage", "Insufficient storage",
     "The disk couldn't take what was sent, for instance since it is full. Nothing was replaced."},
};

std::vector<ProblemType> AllTypes() {
    std::vector<ProblemType> types(WireProblems::All.begin(), WireProblems::All.end());
    types.insert(types.end(), std::begin(ResourceProblems), std::end(ResourceProblems));
    std::ranges::sort(types, {}, &ProblemType::status);
    return types;
}

} // namespace

std::span<const ProblemType> ProblemTypes() {
    static const std::vector<ProblemType> Types = AllTypes();
    return Types;
}

const ProblemType& ProblemTypeOf(unsigned status) {
    const auto types = ProblemTypes();
    const auto found = std::ranges::find(types, status, &ProblemType::status);
    return found != types.end() ? *found : *std::ranges::find(types, 500U, &ProblemType::status);
}

} // namespace Sensor::Http
