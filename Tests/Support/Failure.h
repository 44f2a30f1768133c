#pragma once

#include "Vor/Exception.h"

#include <optional>
#include <string>

namespace Tests {

/// A Vor::Exception.
struct Failure {
    yStatus status;
    bool hasText;
    std::string text;
    std::string function;
};

/// The Vor::Exception that the call throws, or nothing. Other exceptions pass through.
template <class Call>
std::optional<Failure> FailureOf(Call&& call) {
    try {
        call();
    } catch (const Vor::Exception& exception) {
        return Failure{exception.Status(), exception.HasText(), exception.what(), exception.Function()};
    }
    return std::nullopt;
}

/// The status of what a call threw, yOK when it threw nothing.
template <class Call>
yStatus StatusOf(Call&& call) {
    const auto failure = FailureOf(call);
    return failure ? failure->status : yOK;
}

} // namespace Tests

/// The call throws a Vor::Exception with this status and exactly this text.
#define EXPECT_FAILURE(call, expectedStatus, expectedText)                                                             \
    do {                                                                                                               \
        const auto failure = Tests::FailureOf([&] { call; });                                                          \
        ASSERT_TRUE(failure.has_value()) << "nothing was thrown";                                                      \
        EXPECT_EQ(failure->status, expectedStatus);                                                                    \
        EXPECT_EQ(failure->text, expectedText);                                                                        \
    } while (false)

/// The call throws a Vor::Exception with this status and no text.
#define EXPECT_TEXTLESS_FAILURE(call, expectedStatus)                                                                  \
    do {                                                                                                               \
        const auto failure = Tests::FailureOf([&] { call; });                                                          \
        ASSERT_TRUE(failure.has_value()) << "nothing was thrown";                                                      \
        EXPECT_EQ(failure->status, expectedStatus);                                                                    \
        EXPECT_FALSE(failure->hasText) << failure->text;                                                               \
    } while (false)
