#include "VorApi/DocumentResourceBase.h"

#include "Tests/Support/Failure.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using VorApi::RequestInfo;
using VorApi::RequestInfoEx;
using VorApi::VorDataTree;

namespace {

class Port : public Vor::Params::Group {
public:
    Port() {
        Register("port", port);
        port.EnableMaximum(true);
        port.SetMaximum(1000);
        Register("name", name);
    }

    Vor::Params::Value<unsigned short> port{502};
    Vor::Params::Value<std::string> name;
};

class Resource : public VorApi::DocumentResourceBase {
public:
    void Document(const RequestInfoEx&, VorApi::ResponseInfoEx&, VorDataTree&) override {}

    using DocumentResourceBase::NodeFromJson;
    using DocumentResourceBase::NodeFromJsonAndValidate;
    using DocumentResourceBase::NodeFromVorDataTree;
    using DocumentResourceBase::NodeToVorDataTree;
    using DocumentResourceBase::ValidateJsonFromNode;
};

nlohmann::json Json(const char* text) {
    return nlohmann::json::parse(text);
}

TEST(DocumentResourceBaseTest, TheUpdateOfAResourceWithoutOneIsNotImplemented) {
    Resource resource;
    EXPECT_TEXTLESS_FAILURE(resource.UpdateDocument(RequestInfo({}), nlohmann::json::object()), yERROR_UNIMPLEMENTED);
}

TEST(DocumentResourceBaseTest, ThereIsADocumentUnlessItsMakingFails) {
    class Sometimes : public VorApi::DocumentResourceBase {
    public:
        void Document(const RequestInfoEx& request, VorApi::ResponseInfoEx& response, VorDataTree& data) override {
            if (request.FindKey("fails") != nullptr) {
                throw 1;
            }
            data["a"].Set(true);
            response.Defer();
        }
    } resource;
    EXPECT_TRUE(resource.HasDocument(RequestInfoEx({}, false)));
    EXPECT_FALSE(resource.HasDocument(RequestInfoEx({{"fails", ""}}, false)));
    EXPECT_FALSE(resource.IsUpdatable());
}

TEST(DocumentResourceBaseTest, ANodeIsWrittenWithItsSchemaIfTheClientWantsIt) {
    const Port port;
    VorDataTree plain;
    Resource::NodeToVorDataTree(port, RequestInfoEx({}, false), plain, true);
    EXPECT_EQ(plain.Dump(false), R"({"port":502,"name":""})");
    VorDataTree valuesOnly;
    Resource::NodeToVorDataTree(port, RequestInfoEx({}, true), valuesOnly, false);
    EXPECT_EQ(valuesOnly.Dump(false), plain.Dump(false));
    VorDataTree withSchema;
    Resource::NodeToVorDataTree(port, RequestInfoEx({}, true), withSchema, true);
    EXPECT_EQ(withSchema.Names(), (std::vector<std::string>{"port", "name", "_schema"}));
    EXPECT_EQ(withSchema["_schema"]["properties"]["port"]["maximum"].AsUInt64(), 1000U);
}

TEST(DocumentResourceBaseTest, WhatTheTreeHoldsAlreadyStays) {
    const Port port;
    VorDataTree tree;
    tree["status"].Set("Running");
    tree["_schema"]["properties"]["status"]["type"].Set("string");
    Resource::NodeToVorDataTree(port, RequestInfoEx({}, true), tree, true);
    EXPECT_EQ(tree["status"].AsText(), "Running");
    EXPECT_EQ(tree["_schema"]["properties"].Names(), (std::vector<std::string>{"status", "port", "name"}));
}

TEST(DocumentResourceBaseTest, ReadingAssignsKnownMembersWithoutValidation) {
    Port port;
    Resource::NodeFromVorDataTree(port, VorDataTree::FromJson(Json(R"({"port":2000,"other":1})")));
    EXPECT_EQ(port.port.Get(), 2000);
    Resource::NodeFromJson(port, Json(R"({"name":"x"})"));
    EXPECT_EQ(port.port.Get(), 2000);
    EXPECT_EQ(port.name.Get(), "x");
    EXPECT_EQ(Tests::StatusOf([&] { Resource::NodeFromJson(port, Json(R"({"name":"y","port":"z"})")); }),
              yERROR_PARAMETER);
    EXPECT_EQ(port.name.Get(), "x");
}

TEST(DocumentResourceBaseTest, ValidationRefusesWithoutAssigning) {
    Port port;
    EXPECT_EQ(Tests::StatusOf([&] { Resource::ValidateJsonFromNode(port, Json(R"({"port":2000})")); }),
              yERROR_PARAMETER);
    EXPECT_EQ(Tests::StatusOf([&] { Resource::NodeFromJsonAndValidate(port, Json(R"({"name":"x","port":2000})")); }),
              yERROR_PARAMETER);
    EXPECT_EQ(port.name.Get(), "");
    Resource::NodeFromJsonAndValidate(port, Json(R"({"name":"x","port":1000})"));
    EXPECT_EQ(port.port.Get(), 1000);
}

TEST(RequestInfoTest, AKeyThatThePathLacksIsNull) {
    const RequestInfoEx request({{"protocol", "modbus"}}, true);
    ASSERT_NE(request.FindKey("protocol"), nullptr);
    EXPECT_EQ(*request.FindKey("protocol"), "modbus");
    EXPECT_EQ(request.FindKey("command"), nullptr);
    EXPECT_TRUE(request.WantsSchema());
}

} // namespace
