#pragma once

#include "Sensor/Http/ProblemTypes.h"

#include <array>
#include <string>

namespace Sensor::Http {

/// Why a request is refused before a handler has it. The connection is closed after the answer.
struct Refusal {
    ProblemType type;
    std::string detail; ///< what is wrong with this request
};

/// What is wrong with a request on the wire, whatever it asks for.
namespace WireProblems {

inline constexpr ProblemType Malformed{
    400, "bad-request", "Bad request",
    "The request is not correct HTTP/1.1, so nobody can say for certain where it ends. Nothing was done."};
inline constexpr ProblemType TooSlow{408, "request-timeout", "Request too slow",
                                     "The request didn't arrive in time. Nothing was done. It can be sent again."};
inline constexpr ProblemType BodyTooLarge{413, "content-too-large", "Content too large",
                                          "The request has a larger body than is accepted. Nothing was done."};
inline constexpr ProblemType TargetTooLong{414, "uri-too-long", "URI too long",
                                           "The first line of the request is longer than is accepted."};
inline constexpr ProblemType Expectation{
    417, "expectation-failed", "Expectation failed",
    "The field Expect asks for something other than 100-continue, which is all that is known. Nothing was done."};
inline constexpr ProblemType HeaderTooLarge{431, "header-too-large", "Header too large",
                                            "The request has more or longer header fields than are accepted."};
inline constexpr ProblemType Failure{500, "internal-error", "Internal error",
                                     "The request couldn't be answered for a reason inside of the sensor. Its log has "
                                     "more about it."};
inline constexpr ProblemType NotImplemented{
    501, "not-implemented", "Not implemented",
    "The method of the request, or the way in which its body is encoded, is unknown. Nothing was done."};
inline constexpr ProblemType Version{505, "http-version-not-supported", "HTTP version not supported",
                                     "HTTP/1.1 and HTTP/1.0 are known."};

inline constexpr std::array All{Malformed,      TooSlow, BodyTooLarge,   TargetTooLong, Expectation,
                                HeaderTooLarge, Failure, NotImplemented, Version};

} // namespace WireProblems
} // namespace Sensor::Http
