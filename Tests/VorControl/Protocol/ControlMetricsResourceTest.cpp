#include "VorControl/Protocol/ControlMetricsResource.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/StreamReceiver.h"
#include "Tests/VorControl/Protocol/FakeReporter.h"
#include "VorControl/Protocol/MetricsDocument.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Tests::StreamReceiver;
using VorApi::RequestInfoEx;
using VorApi::VorDataTree;
using VorControl::Protocol::ControlMetricsResource;

namespace {

class ControlMetricsResourceTest : public testing::Test {
protected:
    static RequestInfoEx Request(const char* protocol, bool wantsSchema = false) {
        return RequestInfoEx({{"protocol", protocol}}, wantsSchema);
    }
    VorDataTree Document(const RequestInfoEx& request) {
        VorApi::ResponseInfoEx response;
        VorDataTree data;
        resource.Document(request, response, data);
        return data;
    }

    Tests::FakeReporter reporter;
    ControlMetricsResource resource{reporter};
    StreamReceiver receiver;
};

TEST_F(ControlMetricsResourceTest, TheDocumentHasTheFiguresAndTheirSchemaIfTheClientWantsIt) {
    reporter.source.figures.dropCount = 7;
    EXPECT_EQ(Document(Request("full")).Dump(false), R"({"dropCount":7})");
    const VorDataTree document = Document(Request("full", true));
    EXPECT_EQ(document["dropCount"].AsInt64(), 7);
    EXPECT_EQ(document["_schema"]["properties"]["dropCount"]["type"].AsText(), "integer");
}

TEST_F(ControlMetricsResourceTest, FiguresAsJsonAreTheSameDocument) {
    reporter.source.figures.dropCount = 7;
    for (const bool withSchema : {false, true}) {
        EXPECT_EQ(VorControl::Protocol::MetricsToJson(reporter.source.figures, withSchema),
                  Document(Request("full", withSchema)).ToJson());
    }
}

TEST_F(ControlMetricsResourceTest, ARequestNeedsTheService) {
    EXPECT_FAILURE(Document(RequestInfoEx({}, false)), yERROR_PARAMETER, "Missing control protocol name in request");
    EXPECT_FAILURE(resource.StartStream(RequestInfoEx({}, false), receiver), yERROR_PARAMETER,
                   "Missing control protocol name in request");
    EXPECT_EQ(Tests::StatusOf([&] { Document(Request("x")); }), yERROR_NOT_FOUND);
}

TEST_F(ControlMetricsResourceTest, AStreamGetsEachReportWithoutSchema) {
    EXPECT_EQ(resource.StreamableProvider(), &resource);
    EXPECT_EQ(resource.StartStream(Request("full", true), receiver), 0U);
    EXPECT_TRUE(receiver.messages.empty());
    reporter.event.Raise(reporter.source);
    reporter.source.figures.dropCount = 1;
    reporter.event.Raise(reporter.source);
    EXPECT_EQ(receiver.messages, (std::vector<std::string>{R"({"dropCount":0})", R"({"dropCount":1})"}));
}

TEST_F(ControlMetricsResourceTest, StreamIdsAreNotReused) {
    StreamReceiver other;
    EXPECT_EQ(resource.StartStream(Request("full"), receiver), 0U);
    EXPECT_EQ(resource.StartStream(Request("full"), other), 1U);
    resource.StopStream(0);
    EXPECT_EQ(resource.StartStream(Request("full"), receiver), 2U);
    resource.StopStream(2);
    reporter.event.Raise(reporter.source);
    EXPECT_TRUE(receiver.messages.empty());
    EXPECT_EQ(other.messages.size(), 1U);
}

TEST_F(ControlMetricsResourceTest, AStreamThatCantStartIsNotRecorded) {
    EXPECT_EQ(Tests::StatusOf([&] { resource.StartStream(Request("x"), receiver); }), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(resource.StopStream(0), yERROR_PARAMETER);
    EXPECT_EQ(resource.StartStream(Request("full"), receiver), 0U);
}

TEST_F(ControlMetricsResourceTest, AStreamIsForgottenEvenIfItsHandlerCantBeRemoved) {
    resource.StartStream(Request("full"), receiver);
    reporter.removalFails = true;
    resource.StopStream(0);
    EXPECT_TEXTLESS_FAILURE(resource.StopStream(0), yERROR_PARAMETER);
}

TEST_F(ControlMetricsResourceTest, AFailureOfOneStreamReachesNobodyElse) {
    StreamReceiver other;
    receiver.fails = true;
    resource.StartStream(Request("full"), receiver);
    resource.StartStream(Request("full"), other);
    reporter.event.Raise(reporter.source);
    EXPECT_EQ(other.messages.size(), 1U);
    reporter.source.fails = true;
    reporter.event.Raise(reporter.source);
    EXPECT_EQ(other.messages.size(), 1U);
}

TEST_F(ControlMetricsResourceTest, CantBeUpdated) {
    EXPECT_TEXTLESS_FAILURE(resource.UpdateDocument(VorApi::RequestInfo({}), nlohmann::json::object()),
                            yERROR_UNIMPLEMENTED);
}

} // namespace
