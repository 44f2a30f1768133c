#include "Sensor/Http/FailureResponse.h"

#include "Sensor/Http/ProblemTypes.h"
#include "Tests/Support/Failure.h"
#include "Vor/DocumentErrors.h"
#include "Vor/Logging.h"

#include <set>
#include <stdexcept>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Http {
namespace {

using Json = nlohmann::json;
using VorRest::Verb;

constexpr Methods OnlyGet{.get = true};
constexpr Methods OnlyPost{.post = true};
constexpr Methods NoMethods;

template <class Failure>
HttpResponse ResponseTo(const Failure& failure, Verb verb, const Methods& methods = OnlyGet) {
    return FailureResponse(std::make_exception_ptr(failure), verb, methods);
}

Vor::Exception MakeFailure(yStatus status, const char* text = "why") {
    return {1, "file.cpp", status, "function", "%s", text};
}

unsigned StatusOf(yStatus status, Verb verb, const Methods& methods = OnlyGet) {
    return ResponseTo(MakeFailure(status), verb, methods).status;
}

Json DocumentOf(const HttpResponse& response) {
    EXPECT_EQ(response.fields.Find("Content-Type"), "application/problem+json");
    EXPECT_EQ(response.fields.Find("Cache-Control"), "no-store");
    return Json::parse(*response.body);
}

constexpr Verb EachVerb[] = {Verb::Read, Verb::Update, Verb::Create, Verb::Delete, Verb::Invoke};
constexpr Verb EachChange[] = {Verb::Update, Verb::Create, Verb::Delete, Verb::Invoke};

TEST(FailureResponseTest, IsAProblemDocument) {
    const HttpResponse response = ResponseTo(MakeFailure(yERROR_CONFLICT, "The place is taken."), Verb::Invoke);
    EXPECT_EQ(response.status, 409U);
    EXPECT_EQ(*response.body, R"({"type":"/problems/conflict","title":"Conflict","status":409,)"
                              R"("detail":"The place is taken.","code":-980})");
    EXPECT_EQ(DocumentOf(response)["status"], 409);
}

TEST(FailureResponseTest, EachStatusOfTheSystemHasOneOfHttp) {
    for (const Verb verb : EachVerb) {
        EXPECT_EQ(StatusOf(yERROR_NOT_FOUND, verb), 404U);
        for (const yStatus status : {yERROR_FORMAT, yERROR_VERSION, yERROR_SIZE, yERROR_COMMAND}) {
            EXPECT_EQ(StatusOf(status, verb), 422U) << status;
        }
        for (const yStatus status : {yERROR_FULL, yERROR_CONFLICT, yERROR_ALREADY_EXISTS, yERROR_PARTIAL}) {
            EXPECT_EQ(StatusOf(status, verb), 409U) << status;
        }
        EXPECT_EQ(StatusOf(yERROR_BUSY, verb), 503U);
        EXPECT_EQ(StatusOf(yERROR_TIMEOUT, verb), 504U);
        EXPECT_EQ(StatusOf(yERROR_WRITE_ONLY, verb), 500U);
        EXPECT_EQ(StatusOf(-1, verb), 500U);
    }
}

TEST(FailureResponseTest, AStateThatForbidsAChangeIsAConflictAndForAReadUnavailable) {
    EXPECT_EQ(StatusOf(yERROR_STATE, Verb::Read), 503U);
    for (const Verb verb : EachChange) {
        EXPECT_EQ(StatusOf(yERROR_STATE, verb), 409U);
    }
}

TEST(FailureResponseTest, ABusyClientIsAskedToTryAgain) {
    EXPECT_EQ(ResponseTo(MakeFailure(yERROR_BUSY), Verb::Invoke).fields.Find("Retry-After"), "1");
    EXPECT_EQ(ResponseTo(MakeFailure(yERROR_STATE), Verb::Read).fields.Find("Retry-After"), "1");
    EXPECT_FALSE(ResponseTo(MakeFailure(yERROR_TIMEOUT), Verb::Invoke).fields.Find("Retry-After"));
}

TEST(FailureResponseTest, WhatHasNoDocumentIsNotFoundUnlessItHasAnotherMethod) {
    for (const yStatus status : {yERROR_UNIMPLEMENTED, yERROR_PARAMETER}) {
        EXPECT_EQ(StatusOf(status, Verb::Read, NoMethods), 404U);
        EXPECT_EQ(StatusOf(status, Verb::Read, OnlyGet), 404U);
        EXPECT_EQ(StatusOf(status, Verb::Read, OnlyPost), 405U);
    }
    const HttpResponse response = ResponseTo(MakeFailure(yERROR_UNIMPLEMENTED), Verb::Read, OnlyPost);
    EXPECT_EQ(response.fields.Find("Allow"), "POST, OPTIONS");
}

TEST(FailureResponseTest, AParameterOfAChangeIsRefusedUnlessThePathNamesNothing) {
    for (const Verb verb : EachChange) {
        EXPECT_EQ(StatusOf(yERROR_PARAMETER, verb, OnlyGet), 422U);
        EXPECT_EQ(StatusOf(yERROR_PARAMETER, verb, NoMethods), 404U);
    }
}

TEST(FailureResponseTest, WhatCantBeChangedDoesntHaveTheMethod) {
    for (const Verb verb : {Verb::Update, Verb::Create, Verb::Delete}) {
        for (const yStatus status : {yERROR_READ_ONLY, yERROR_UNIMPLEMENTED}) {
            const HttpResponse response = ResponseTo(MakeFailure(status), verb, Methods{.get = true, .patch = true});
            EXPECT_EQ(response.status, 405U) << status;
            EXPECT_EQ(response.fields.Find("Allow"), "GET, HEAD, PATCH, OPTIONS");
            EXPECT_EQ(response.fields.Find("Accept-Patch"), "application/json, application/merge-patch+json");
            EXPECT_EQ(StatusOf(status, verb, NoMethods), 404U) << status;
        }
    }
    EXPECT_EQ(StatusOf(yERROR_READ_ONLY, Verb::Invoke), 403U);
    EXPECT_EQ(StatusOf(yERROR_READ_ONLY, Verb::Read), 403U);
    EXPECT_EQ(StatusOf(yERROR_UNIMPLEMENTED, Verb::Invoke), 404U);
}

TEST(FailureResponseTest, AGeneralFailureOfAChangeIsARefusalWithItsText) {
    for (const Verb verb : EachChange) {
        const HttpResponse response = ResponseTo(MakeFailure(yERROR, "no room left"), verb);
        EXPECT_EQ(response.status, 422U);
        EXPECT_EQ(DocumentOf(response)["detail"], "no room left");
        EXPECT_EQ(DocumentOf(response)["code"], 0);
    }
}

TEST(FailureResponseTest, TheInsideIsLoggedAndNotAnswered) {
    for (const HttpResponse& response :
         {ResponseTo(MakeFailure(yERROR, "secret"), Verb::Read), ResponseTo(MakeFailure(-1, "secret"), Verb::Invoke),
          ResponseTo(std::logic_error("secret"), Verb::Update), ResponseTo(7, Verb::Read)}) {
        EXPECT_EQ(response.status, 500U);
        EXPECT_EQ(DocumentOf(response)["detail"], ProblemTypeOf(500).explanation);
        EXPECT_EQ(response.body->find("secret"), std::string::npos);
    }
    const Vor::LogCapture log;
    ResponseTo(std::logic_error("secret"), Verb::Update);
    EXPECT_TRUE(log.Contains("A request over HTTP failed."));
    ResponseTo(7, Verb::Read);
    EXPECT_TRUE(log.Contains("A request over HTTP failed: unknown exception"));
}

TEST(FailureResponseTest, OutOfRangeIsNotFound) {
    const HttpResponse response = ResponseTo(std::out_of_range("map::at"), Verb::Invoke);
    EXPECT_EQ(response.status, 404U);
    EXPECT_EQ(DocumentOf(response)["detail"], ProblemTypeOf(404).explanation);
    EXPECT_FALSE(DocumentOf(response).contains("code"));
}

TEST(FailureResponseTest, TheDetailHasTheNestedTextsEachOnce) {
    std::exception_ptr failure;
    try {
        try {
            try {
                try {
                    throw MakeFailure(yERROR_PARAMETER, "inner");
                } catch (...) {
                    Vor::ThrowNested(yERROR_PARAMETER, "inner");
                }
            } catch (...) {
                Vor::ThrowNested(yERROR_PARAMETER);
            }
        } catch (...) {
            Vor::ThrowNested(yERROR_FULL, "outer");
        }
    } catch (...) {
        failure = std::current_exception();
    }
    const HttpResponse response = FailureResponse(failure, Verb::Invoke, OnlyGet);
    EXPECT_EQ(response.status, 409U);
    EXPECT_EQ(DocumentOf(response)["detail"], "outer: inner");
    EXPECT_EQ(DocumentOf(response)["code"], yERROR_FULL);
}

TEST(FailureResponseTest, ARefusedDocumentHasItsErrorsAlsoWhenItIsNested) {
    Vor::DocumentErrors errors;
    errors.Add("/parameters/port", MakeFailure(yERROR_PARAMETER, "too large"));
    errors.Add("/enabled", MakeFailure(yERROR_FORMAT, "no bool"));
    std::exception_ptr failure;
    try {
        try {
            errors.ThrowIfAny();
        } catch (...) {
            Vor::ThrowNested(yERROR_PARAMETER, "refused");
        }
    } catch (...) {
        failure = std::current_exception();
    }
    const Json document = DocumentOf(FailureResponse(failure, Verb::Update, OnlyGet));
    EXPECT_EQ(document["status"], 422);
    EXPECT_EQ(document["detail"], "refused: too large");
    EXPECT_EQ(document["errors"], Json::parse(R"([{"pointer":"/parameters/port","text":"too large","status":-997},
                                                  {"pointer":"/enabled","text":"no bool","status":-984}])"));
}

TEST(FailureResponseTest, ATextThatIsNoUtf8IsMended) {
    EXPECT_EQ(DocumentOf(ResponseTo(MakeFailure(yERROR_FULL, "a\xff"), Verb::Invoke))["detail"], "a\xef\xbf\xbd");
}

TEST(ProblemTypesTest, EachStatusHasOneType) {
    std::set<std::string> slugs;
    unsigned last = 0;
    for (const ProblemType& type : ProblemTypes()) {
        EXPECT_GT(type.status, last);
        last = type.status;
        EXPECT_TRUE(slugs.insert(type.slug).second) << type.slug;
        EXPECT_EQ(&ProblemTypeOf(type.status), &type);
        EXPECT_NE(std::string(type.title), "");
        EXPECT_NE(std::string(type.explanation), "");
    }
    EXPECT_EQ(ProblemTypeOf(599).status, 500U);
}

} // namespace
} // namespace Sensor::Http
