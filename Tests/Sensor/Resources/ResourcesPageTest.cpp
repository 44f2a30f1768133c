// The tables of Docs/resources.md agree with the documents of the resources, and that of the links in Docs/http.md.

#include "Sensor/Http/ExplanationsResource.h"
#include "Sensor/Http/ResourceMap.h"
#include "Tests/Sensor/Resources/SensorFixture.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/DocumentTables.h"
#include "Tests/Support/MarkdownTable.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Path.h"
#include "VorApi/RoutedResource.h"
#include "VorApi/VorDataTree.h"

#include <algorithm>
#include <exception>
#include <set>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Resources {
namespace {

using nlohmann::json;
using Tests::Documented;
using Tests::Entries;
using Tests::FirstOf;
using Tests::Members;
using VorApi::Path;

constexpr const char* AssemblyPath = "/controls/:protocol/registerAssemblies/:registerAssembly";

/// The resources with the services of this project.
class ResourcesPage : public SensorFixture {
protected:
    ResourcesPage()
        : SensorFixture(Tests::BuiltFile("plugins")) {}

    /// The answer to a read with schema.
    VorRest::Answer AnswerOf(const std::string& path) {
        VorRest::Answer answer = Ask({.path = path, .wantsSchema = true});
        if (answer.failure != nullptr) {
            std::rethrow_exception(answer.failure);
        }
        return answer;
    }
    json Document(const std::string& path) { return Read(path, true).ToJson(); }

    /// The relations of a document with the routes, or the collections, to which they lead.
    Entries Relations(const std::string& path) {
        Entries entries;
        for (const auto& relation : AnswerOf(path).relations) {
            const auto target = host.Router().Find(relation.path).value();
            const auto parameters = std::ranges::count_if(Path::Split(target.route), &Path::IsParameter);
            entries[relation.name] = std::cmp_less(target.keys.size(), parameters) ? relation.path : target.route;
        }
        return entries;
    }

    /// The links that a document has over HTTP beside its own relations, with their targets.
    Entries AddedLinks(const std::string& path) {
        VorRest::Answer answer = AnswerOf(path);
        std::set<std::string> own;
        for (const auto& relation : answer.relations) {
            own.insert(relation.name);
        }
        Entries entries;
        for (const auto& link : Http::ResourceMap(host.Router()).Describe(path, std::move(answer)).links) {
            if (!own.contains(link.relation)) {
                entries[link.relation] = link.href;
            }
        }
        return entries;
    }

    /// The commands of a collection with their parameters.
    Entries Commands(const std::string& path) {
        Entries entries;
        for (const auto& relation : AnswerOf(path).relations) {
            const json document = Document(relation.path);
            std::string parameters;
            for (const auto& parameter : document.at("parameters").items()) {
                parameters += (parameters.empty() ? "" : ", ") + parameter.key();
            }
            entries[document.at("id")] = parameters.empty() ? "none" : parameters;
        }
        return entries;
    }

    static std::set<std::string> Names(const Entries& entries) {
        std::set<std::string> names;
        for (const auto& entry : entries) {
            names.insert(entry.first);
        }
        return names;
    }

    VorApi::RoutedResource<Http::ExplanationsResource> problems{host.Router(), Http::ProblemsRoute, Http::ProblemsRoute,
                                                                Http::ExplainProblems()};
    VorApi::RoutedResource<Http::ExplanationsResource> relations{host.Router(), Http::RelationsRoute,
                                                                 Http::RelationsRoute, Http::ExplainRelations()};
};

TEST_F(ResourcesPage, ListsTheRoutes) {
    std::set<std::string> routes;
    for (const std::string& route : host.Router().Routes()) {
        routes.insert(route);
        if (route != "/" && Path::IsParameter(Path::Split(route).back())) {
            routes.insert(route.substr(0, route.rfind('/')));
        }
    }
    EXPECT_EQ(Names(Documented("Path", "Content")), routes);
}

TEST_F(ResourcesPage, ListsTheLinksThatHttpAdds) {
    EXPECT_EQ(AddedLinks("/"), (Entries{{"curies", "/rels/{rel}"}}));
    EXPECT_EQ(AddedLinks("/controls"), (Entries{{"up", "/"}}));
    EXPECT_EQ(AddedLinks("/sensor"),
              (Entries{{"up", "/"}, {"vor:commands", "/sensor/commands"}, {"curies", "/rels/{rel}"}}));
    const Entries service = AddedLinks("/controls/modbus");
    EXPECT_EQ(service, (Entries{{"up", "/controls"},
                                {"collection", "/controls"},
                                {"vor:metrics", "/controls/modbus/metrics"},
                                {"curies", "/rels/{rel}"}}));
    const std::string assembly = Path::Format(AssemblyPath, {"modbus", "registerAssembly-0"});
    std::set<std::string> names = Names(service);
    names.merge(Names(AddedLinks(assembly)));
    EXPECT_EQ(Names(Documented("Link", "Leads to", "Docs/http.md")), names);
}

TEST_F(ResourcesPage, ListsTheMembersOfTheEntry) {
    EXPECT_EQ(Documented("Member of the entry", "Type"), Members(Document("/")));
    EXPECT_EQ(Documented("Relation of the entry", "Leads to"), Relations("/"));
    EXPECT_EQ(Documented("Member of the health", "Type"), Members(Document("/healthz")));
}

TEST_F(ResourcesPage, ListsTheMembersOfTheSensor) {
    const json sensorDocument = Document("/sensor");
    EXPECT_EQ(Documented("Member of the sensor", "Type"), Members(sensorDocument));
    const json schema = sensorDocument.at("_schema").at("properties");
    json service = sensorDocument.at("services").at(0);
    service["_schema"] = schema.at("services").at("items").at(0);
    EXPECT_EQ(Documented("Member of a service of the sensor", "Type"), Members(service));
    json problems = sensorDocument.at("problems");
    problems["_schema"] = schema.at("problems");
    EXPECT_EQ(Documented("Member of the problems", "Type"), Members(problems));
    EXPECT_EQ(Documented("Relation of the sensor", "Leads to"), Relations("/sensor"));
}

TEST_F(ResourcesPage, ListsTheMembersOfTheProblems) {
    host.Problems().Add(1, "Temperature", "Hot");
    const json problems = Document("/sensor/problems");
    EXPECT_EQ(Documented("Member of the problem list", "Type"), Members(problems));
    EXPECT_EQ(Documented("Member of a problem of the sensor", "Type"), Members(FirstOf(problems, "items")));
}

TEST_F(ResourcesPage, ListsTheMembersOfTheLog) {
    Vor::LogUser(Vor::UserInfo, "HTTP", "It is served.");
    const json entries = Document("/sensor/log");
    EXPECT_EQ(Documented("Member of the log", "Type"), Members(entries));
    EXPECT_EQ(Documented("Member of a log entry", "Type"), Members(FirstOf(entries, "items")));
}

TEST_F(ResourcesPage, ListsTheMembersOfTheDataSources) {
    const json sources = Document("/sensor/sources");
    EXPECT_EQ(Documented("Member of the data sources", "Type"), Members(sources));
    EXPECT_EQ(Documented("Member of a data source", "Type"), Members(FirstOf(sources, "items")));
    EXPECT_EQ(Documented("Relation of the data sources", "Leads to"), Relations("/sensor/sources"));
}

TEST_F(ResourcesPage, ListsTheMembersOfATool) {
    EXPECT_EQ(Documented("Member of a tool", "Type"), Members(Document("/sensor/tools/profile-max")));
}

TEST_F(ResourcesPage, ListsTheMembersOfTheScan) {
    MakeFrames(1);
    const json scan = Document("/sensor/scan");
    EXPECT_EQ(Documented("Member of the scan", "Type"), Members(scan));
    EXPECT_EQ(Documented("Member of a value of the scan", "Type"), Members(FirstOf(scan, "values")));
    EXPECT_EQ(Documented("Relation of the scan", "Leads to"), Relations("/sensor/scan"));
    const json history = Document("/sensor/scan/history");
    EXPECT_EQ(Documented("Member of the history of the scan", "Type"), Members(history));
    EXPECT_EQ(Documented("Member of a column", "Type"), Members(FirstOf(history, "columns")));
}

TEST_F(ResourcesPage, ListsTheMembersOfTheDigitalOutputs) {
    const auto device = sensor.Devices().Find("io-0");
    device->Enable(true);
    device->SetOutputState(0, true, 0);
    const json io = Document("/sensor/io");
    EXPECT_EQ(Documented("Member of the digital outputs", "Type"), Members(io));
    const json shown = FirstOf(io, "devices");
    EXPECT_EQ(Documented("Member of a device of the sensor", "Type"), Members(shown));
    const json port = FirstOf(shown, "ports");
    EXPECT_EQ(Documented("Member of a port of a device", "Type"), Members(port));
    EXPECT_EQ(Documented("Member of an edge", "Type"), Members(FirstOf(port, "edges")));
    json params = Vor::Properties::JsonSerializer::Serialize(*device->PortParams(0));
    params["_schema"] = Vor::Properties::JsonSerializer::SerializeSchema(*device->PortParams(0));
    EXPECT_EQ(Documented("Parameter of a port", "Type"), Members(params));
}

TEST_F(ResourcesPage, ListsTheCommandsOfTheSensor) {
    EXPECT_EQ(Documented("Command of the sensor", "Parameters"), Commands("/sensor/commands"));
}

TEST_F(ResourcesPage, ListsTheMembersOfAJobAndItsChanges) {
    EXPECT_EQ(Documented("Command of a job", "Parameters"), Commands("/sensor/jobs/test/commands"));
    EXPECT_EQ(Documented("Member of a job", "Type"), Members(Document("/sensor/jobs/test")));
    const json changes = Document("/sensor/jobs/loaded/changes");
    EXPECT_EQ(Documented("Member of the changes", "Type"), Members(changes));
    EXPECT_EQ(Documented("Member of a change", "Type"), Members(FirstOf(changes, "changes")));
}

TEST_F(ResourcesPage, ListsTheMembersOfAnOperation) {
    Invoke("/sensor/jobs/test/commands/save");
    Invoke("/sensor/jobs/test/commands/load");
    const json operation = Document("/sensor/operations/1");
    EXPECT_EQ(Documented("Member of an operation", "Type"), Members(operation));
    EXPECT_EQ(Documented("Member of a note", "Type"), Members(FirstOf(operation, "notes")));
}

TEST_F(ResourcesPage, ListsTheMembersOfTheEvents) {
    EXPECT_EQ(Documented("Member of the events", "Type"), Members(Document("/events")));
}

TEST_F(ResourcesPage, ListsTheMembersOfTheExplanations) {
    EXPECT_EQ(Documented("Member of a problem", "Type"), Members(Document(AnswerOf("/problems").relations.at(0).path)));
    EXPECT_EQ(Documented("Member of a relation", "Type"), Members(Document("/rels/sensor")));
}

TEST_F(ResourcesPage, ListsTheMembersOfTheServiceTypes) {
    const json types = Document("/controlTypes");
    EXPECT_EQ(Documented("Member of the service types", "Type"), Members(types));
    EXPECT_EQ(Documented("Member of a service type", "Type"), Members(types.at("items").at(0)));
}

TEST_F(ResourcesPage, ListsTheMembersOfAService) {
    Entries common = Members(Document("/controls/modbus"));
    const Entries other = Members(Document("/controls/ascii"));
    std::erase_if(common, [&](const auto& entry) { return !other.contains(entry.first); });
    EXPECT_EQ(Documented("Member of a service", "Type"), common);
}

TEST_F(ResourcesPage, ListsTheRelationsOfAService) {
    EXPECT_EQ(Relations("/controls"), (Entries{{"item", "/controls/:protocol"}}));
    Entries relations = Relations("/controls/modbus");
    relations.merge(Relations("/controls/ascii"));
    EXPECT_EQ(Documented("Relation of a service", "Leads to"), relations);
}

TEST_F(ResourcesPage, ListsTheMetrics) {
    Entries figures = Members(Document("/controls/modbus/metrics"));
    figures.merge(Members(Document("/controls/ascii/metrics")));
    EXPECT_EQ(Documented("Metric of a service", "Type"), figures);
}

TEST_F(ResourcesPage, ListsTheMembersOfAnOutputMap) {
    Invoke("/controls/ascii/outputs/commands/add", {{"outputId", "height"}, {"source", "profile/max"}});
    const json map = Document("/controls/ascii/outputs");
    EXPECT_EQ(Documented("Member of an output map", "Type"), Members(map));
    json entry = map.at("map").at(0);
    entry["_schema"] = map.at("_schema").at("properties").at("map").at("items").at(0);
    EXPECT_EQ(Documented("Member of an entry", "Type"), Members(entry));
    EXPECT_EQ(Names(Relations("/controls/ascii/outputs")), std::set<std::string>{"vor:command"});
}

TEST_F(ResourcesPage, ListsTheCommandsOfAnOutputMap) {
    EXPECT_EQ(Documented("Command of an output map", "Parameters"), Commands("/controls/ascii/outputs/commands"));
}

TEST_F(ResourcesPage, ListsTheMembersOfARegisterAssembly) {
    const std::string path = Path::Format(AssemblyPath, {"modbus", "registerAssembly-0"});
    Invoke(path + "/commands/add", {{"blocks", {{{"type", "Measurement"}, {"dataSource", "profile/max"}}}}});
    const json assembly = Document(path);
    EXPECT_EQ(Documented("Member of a register assembly", "Type"), Members(assembly));
    EXPECT_EQ(Documented("Attribute", "Type"), Members(assembly.at("attributes")));
    EXPECT_EQ(Documented("Member of a block type", "Type"), Members(assembly.at("supportedBlockTypes").at(0)));
    EXPECT_EQ(Documented("Member of a block", "Type"), Members(assembly.at("blocks").at(0)));
    EXPECT_EQ(Names(Relations(path)), std::set<std::string>{"vor:command"});
}

TEST_F(ResourcesPage, ListsTheCommandsOfARegisterAssembly) {
    const std::string path = Path::Format(AssemblyPath, {"modbus", "registerAssembly-0"});
    EXPECT_EQ(Documented("Command of a register assembly", "Parameters"), Commands(path + "/commands"));
}

} // namespace
} // namespace Sensor::Resources
