#include "Sensor/Http/OpenApi.h"

#include "Sensor/Http/ExplanationsResource.h"
#include "Sensor/Resources/OpenApiResource.h"
#include "Sensor/Resources/ResourceDescriptions.h"
#include "Tests/Sensor/Resources/SensorFixture.h"
#include "Tests/Support/BuildFolders.h"
#include "Vor/ByteVector.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorApi/IParentResource.h"
#include "VorApi/Path.h"
#include "VorApi/RoutedResource.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Resources {
namespace {

using Json = nlohmann::json;
using NameSet = std::set<std::string>;
using VorApi::Path;

/// What nobody describes: a document that can be changed, created and deleted.
class Notes : public VorApi::DocumentResourceBase, public VorApi::IParentResource {
public:
    void Document(const VorApi::RequestInfoEx&, VorApi::ResponseInfoEx&, VorApi::VorDataTree&) override {
        ADD_FAILURE() << "It is described without being read.";
    }
    bool IsUpdatable() const override { return true; }
    Created Create(const VorApi::RequestInfo&, const Json&) override { return {}; }
    using IParentResource::Delete;
    void Delete(const VorApi::RequestInfo&) override {}
};

class OpenApiTest : public SensorFixture {
protected:
    OpenApiTest()
        : SensorFixture(Tests::BuiltFile("plugins")) {}

    Json Api() {
        const Vor::Properties::ByteVector bytes = Read(OpenApiResource::Route).AsBinary();
        return Json::parse(bytes.Data(), bytes.Data() + bytes.Size());
    }

    static NameSet Names(const Json& object) {
        NameSet names;
        for (const auto& member : object.items()) {
            names.insert(member.key());
        }
        return names;
    }
    /// The operations of all paths.
    static std::vector<Json> Operations(const Json& api) {
        std::vector<Json> operations;
        for (const Json& path : api.at("paths")) {
            for (const auto& [method, operation] : path.items()) {
                if (method != "parameters") {
                    operations.push_back(operation);
                }
            }
        }
        return operations;
    }
    /// The schema of a component.
    static const Json& Schema(const Json& api, const std::string& name) {
        return api.at("components").at("schemas").at(name);
    }
    static Json Reference(const std::string& name) { return {{"$ref", "#/components/schemas/" + name}}; }
    static NameSet NamesIn(const Json& parameters) {
        NameSet names;
        for (const Json& parameter : parameters) {
            names.insert(parameter.contains("$ref") ? parameter["$ref"].get<std::string>()
                                                    : parameter["name"].get<std::string>());
        }
        return names;
    }

    VorApi::RoutedResource<Http::ExplanationsResource> problems{host.Router(), Http::ProblemsRoute, Http::ProblemsRoute,
                                                                Http::ExplainProblems()};
    VorApi::RoutedResource<Http::ExplanationsResource> relations{host.Router(), Http::RelationsRoute,
                                                                 Http::RelationsRoute, Http::ExplainRelations()};
};

TEST_F(OpenApiTest, HasEachRouteAndItsCollectionAndNoOthers) {
    NameSet paths;
    for (const std::string& route : host.Router().Routes()) {
        paths.insert(Http::OpenApi::TemplateOf(route));
        if (route != "/" && Path::IsParameter(Path::Split(route).back())) {
            paths.insert(Http::OpenApi::TemplateOf(route.substr(0, route.rfind('/'))));
        }
    }
    const Json api = Api();
    EXPECT_EQ(Names(api["paths"]), paths);
    EXPECT_EQ(api["openapi"], "3.1.0");
    EXPECT_EQ(api["info"]["version"], VOR_VERSION);
}

TEST_F(OpenApiTest, EachRouteIsDescribedInWords) {
    const std::vector<std::string> routes = host.Router().Routes();
    const std::vector<std::string> known = ResourceDescriptions::Known();
    EXPECT_EQ(NameSet(known.begin(), known.end()), NameSet(routes.begin(), routes.end()))
        << "the table of ResourceDescriptions.cpp has a row for each route";
}

TEST_F(OpenApiTest, EachPathHasTheMethodsOfItsResource) {
    const Json paths = Api()["paths"];
    EXPECT_EQ(Names(paths["/"]), (NameSet{"get"}));
    EXPECT_EQ(Names(paths["/controls"]), (NameSet{"get"}));
    EXPECT_EQ(Names(paths["/controls/{protocol}"]), (NameSet{"parameters", "get", "patch"}));
    EXPECT_EQ(Names(paths["/events/{stream}"]), (NameSet{"parameters", "get", "patch"}));
    EXPECT_EQ(Names(paths["/sensor/commands/{command}"]), (NameSet{"parameters", "get", "post"}));
    EXPECT_EQ(Names(paths["/sensor/jobs/{job}"]), (NameSet{"parameters", "get", "delete"}));
    EXPECT_EQ(Names(paths["/sensor/jobs"]), (NameSet{"get"}));
    EXPECT_EQ(Names(paths["/sensor/jobs/{job}/file"]), (NameSet{"parameters", "get", "put"}));
    EXPECT_EQ(Names(paths["/sensor/jobs/{job}/file"]["put"]["responses"]), (NameSet{"200", "201", "4XX", "5XX"}));
    const std::string command = "/controls/{protocol}/registerAssemblies/{registerAssembly}/commands/{command}";
    EXPECT_EQ(NamesIn(paths[command]["parameters"]), (NameSet{"protocol", "registerAssembly", "command"}));
    for (const Json& parameter : paths[command]["parameters"]) {
        EXPECT_EQ(parameter["in"], "path");
        EXPECT_EQ(parameter["required"], true);
    }
}

TEST_F(OpenApiTest, OperationsHaveReadableIdsOfTheirOwn) {
    const Json api = Api();
    NameSet ids;
    for (const Json& operation : Operations(api)) {
        const std::string id = operation.at("operationId");
        EXPECT_TRUE(ids.insert(id).second) << id;
        EXPECT_TRUE(std::ranges::all_of(id, [](unsigned char c) { return std::isalnum(c) != 0; })) << id;
        EXPECT_FALSE(operation.at("summary").get<std::string>().empty()) << id;
        EXPECT_EQ(operation["summary"].get<std::string>().find("what is at"), std::string::npos) << id;
        EXPECT_TRUE(operation["responses"].contains("4XX")) << id;
    }
    for (const char* const id :
         {"getEntry", "listControls", "getProtocol", "updateProtocol", "runSensorCommand", "listSensorJobs",
          "deleteSensorJob", "getSensorJobFile", "getSensorScanHistory", "runProtocolRegisterAssemblyCommand"}) {
        EXPECT_TRUE(ids.contains(id)) << id;
    }
}

TEST_F(OpenApiTest, EachTagHasAText) {
    const Json api = Api();
    NameSet tags;
    for (const Json& tag : api["tags"]) {
        EXPECT_TRUE(tags.insert(tag.at("name").get<std::string>()).second) << tag;
        EXPECT_FALSE(tag.at("description").get<std::string>().empty()) << tag;
    }
    EXPECT_EQ(tags, Names(Json(ResourceDescriptions::Tags())));
    for (const Json& operation : Operations(api)) {
        EXPECT_TRUE(tags.contains(operation.at("tags").at(0).get<std::string>())) << operation;
    }
}

TEST_F(OpenApiTest, AnswersAreDocumentsBytesOrEvents) {
    const Json api = Api();
    const auto content = [&](const char* path) { return api["paths"][path]["get"]["responses"]["200"]["content"]; };
    EXPECT_EQ(content("/sensor")["application/hal+json"]["schema"],
              (Json{{"allOf", {Reference("Hypertext"), Reference("Sensor")}}}));
    EXPECT_EQ(content("/controls")["application/hal+json"]["schema"], Reference("Hypertext"));
    EXPECT_EQ(Names(content("/sensor/jobs/{job}/file")), (NameSet{"application/octet-stream"}));
    EXPECT_EQ(Names(content("/openapi.json")), (NameSet{"application/json"}));
    for (const char* const path : {"/events", "/sensor/scan", "/controls/{protocol}/metrics"}) {
        EXPECT_EQ(Names(content(path)), (NameSet{"application/hal+json", "text/event-stream"})) << path;
    }
    EXPECT_EQ(Names(content("/events/{stream}")), (NameSet{"application/hal+json"}));
    EXPECT_EQ(Names(api["components"]["responses"]["Refusal"]["content"]), (NameSet{"application/problem+json"}));
}

TEST_F(OpenApiTest, BodiesHaveTheSchemasOfWhatMayBeSent) {
    const Json api = Api();
    const Json patch = api["paths"]["/controls/{protocol}"]["patch"];
    EXPECT_EQ(patch["requestBody"]["content"],
              (Json{{"application/json", {{"schema", Reference("ProtocolUpdate")}}},
                    {"application/merge-patch+json", {{"schema", Reference("ProtocolUpdate")}}}}));
    const Json update = Schema(api, "ProtocolUpdate");
    ASSERT_EQ(update["anyOf"].size(), 2U) << "ASCII and Modbus";
    for (const Json& service : update["anyOf"]) {
        EXPECT_EQ(Names(service["properties"]), (NameSet{"enabled", "parameters"}));
        EXPECT_TRUE(service["properties"]["parameters"]["properties"].contains("idleTimeout"));
        EXPECT_FALSE(service.contains("required"));
    }
    EXPECT_EQ(Names(Schema(api, "StreamUpdate")["properties"]), (NameSet{"add", "remove"}));

    NameSet commands;
    for (const Json& arguments : Schema(api, "SensorCommandArguments")["anyOf"]) {
        commands.insert(arguments["title"].get<std::string>());
    }
    EXPECT_EQ(commands,
              (NameSet{"start", "stop", "trigger", "align", "clearAlign", "blinkLed", "factoryRestore", "restart"}));
    for (const Json& arguments : Schema(api, "ProtocolRegisterAssemblyCommandArguments")["anyOf"]) {
        if (arguments["title"] == "add") {
            EXPECT_TRUE(arguments["properties"]["blocks"]["items"]["properties"].contains("dataSource")) << arguments;
            commands.insert("add");
        }
    }
    EXPECT_TRUE(commands.contains("add"));
}

TEST_F(OpenApiTest, SchemasHaveTheElementsOfListsThatAreEmptyNow) {
    const Json api = Api();
    EXPECT_TRUE(Schema(api, "SensorProblems")["properties"]["items"]["items"]["properties"].contains("severity"));
    EXPECT_TRUE(Schema(api, "SensorOperation")["properties"]["notes"]["items"]["properties"].contains("texts"));
    EXPECT_TRUE(
        Schema(api, "SensorJobsLoadedChanges")["properties"]["changes"]["items"]["properties"].contains("pointer"));
    EXPECT_TRUE(Schema(api, "ProtocolOutputs")["properties"]["map"]["items"]["properties"].contains("source"));
}

TEST_F(OpenApiTest, QueriesAreParameters) {
    const Json paths = Api()["paths"];
    const std::string common = "#/components/parameters/";
    EXPECT_EQ(NamesIn(paths["/sensor/log"]["get"]["parameters"]),
              (NameSet{common + "Schema", common + "Expand", "n", "before", "level", "q"}));
    EXPECT_EQ(NamesIn(paths["/events"]["get"]["parameters"]), (NameSet{common + "Schema", common + "Expand", "topic"}));
    EXPECT_EQ(NamesIn(paths["/events/{stream}"]["get"]["parameters"]), (NameSet{common + "Schema", common + "Expand"}));
    EXPECT_EQ(NamesIn(paths["/openapi.json"]["get"]["parameters"]), NameSet());
}

TEST_F(OpenApiTest, WhatNobodyDescribesHasItsPathAndMethods) {
    const VorApi::RoutedResource<Notes> notes(host.Router(), "/notes/:note");
    const VorApi::RoutedResource<Notes> others(host.Router(), "/other/:note");
    const Json api = Api();
    const Json note = api["paths"]["/notes/{note}"];
    EXPECT_EQ(Names(note), (NameSet{"parameters", "get", "patch", "delete"}));
    EXPECT_EQ(note["get"]["summary"], "Reads what is at /notes/{note}");
    EXPECT_EQ(note["get"]["tags"], Json::array({"notes"}));
    EXPECT_EQ(note["patch"]["requestBody"]["content"]["application/json"]["schema"], (Json{{"type", "object"}}));
    EXPECT_EQ(api["paths"]["/notes"]["post"]["operationId"], "createNotes");
    EXPECT_EQ(api["tags"].back()["description"], "What is below /other.");
    NameSet ids;
    for (const Json& operation : Operations(api)) {
        EXPECT_TRUE(ids.insert(operation.at("operationId").get<std::string>()).second) << operation["operationId"];
    }
}

} // namespace
} // namespace Sensor::Resources
