// An independent client of hypertext that is given the entry alone finds everything.

#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/MarkdownTable.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {
namespace {

using Json = nlohmann::json;
using Texts = std::set<std::string>;

std::vector<std::string> StepsOf(const std::string& path) {
    std::vector<std::string> steps;
    std::istringstream stream(path);
    for (std::string step; std::getline(stream, step, '/');) {
        steps.push_back(step);
    }
    return steps;
}

/// Whether the path is one of the route, whose steps that begin with a colon stand for any step.
bool IsOf(const std::string& path, const std::string& route) {
    return std::ranges::equal(StepsOf(path), StepsOf(route), [](const std::string& step, const std::string& wanted) {
        return wanted.starts_with(':') || step == wanted;
    });
}

/// The routes of the page, once for each service.
Texts Routes() {
    const std::string service = ":protocol";
    Texts routes;
    for (const auto& [route, cells] : MarkdownTable("Docs/resources.md", {"Path", "Content"})) {
        const auto at = route.find(service);
        if (at == std::string::npos) {
            routes.insert(route);
            continue;
        }
        for (const char* id : {"ascii", "modbus"}) {
            routes.insert(std::string(route).replace(at, service.size(), id));
        }
    }
    return routes;
}

TEST(HttpWalk, FindsEveryResourceAndNoDeadLink) {
    if (!std::filesystem::exists(SourceFile("Tests/EndToEnd/node_modules/ketting"))) {
        GTEST_SKIP() << "there is no client";
    }
    VirtualSensor sensor;
    const HttpClient http = HttpClient::Of(sensor);
    ASSERT_TRUE(sensor.Process().WaitForLine("Scanning."));
    const Answer answer =
        RunToEnd({"node", SourceFile("Tests/EndToEnd/walk.js"), http.Address()}, std::chrono::minutes(2));
    ASSERT_EQ(answer.status, 0) << answer.errors;
    const Json found = Json::parse(answer.output);
    EXPECT_EQ(found.at("dead"), Json::array());
    EXPECT_EQ(found.at("commands"), Json::array()) << "each command has a document, too";
    EXPECT_EQ(found.at("unlike"), Json::array());
    EXPECT_GT(found.at("filled"), 0);
    EXPECT_EQ(found.at("faults"), Json::array());
    EXPECT_EQ(found.at("plain").get<Texts>(), (Texts{"/metrics", "/openapi.json", "/sensor/jobs/demo/file"}));

    const std::vector<std::string> documents = found.at("documents");
    Texts missed;
    for (const std::string& route : Routes()) {
        const bool isOfDevices = // which no service has
            route.find("/devices") != std::string::npos || route.find("/availableDevices") != std::string::npos;
        if (!isOfDevices &&
            std::ranges::none_of(documents, [&](const std::string& path) { return IsOf(path, route); })) {
            missed.insert(route);
        }
    }
    // There is no open stream and no operation, no service has commands of its own, and Modbus has no output map.
    EXPECT_EQ(
        missed,
        (Texts{"/controls/ascii/commands", "/controls/ascii/commands/:command", "/controls/modbus/commands",
               "/controls/modbus/commands/:command", "/controls/modbus/outputs", "/controls/modbus/outputs/commands",
               "/controls/modbus/outputs/commands/:command", "/events/:stream", "/sensor/operations/:operation"}));
}

TEST(HttpWalk, ALinterHasNothingToSayAboutTheDescriptionOfTheResources) {
    if (!std::filesystem::exists(SourceFile("Tests/EndToEnd/node_modules/@redocly"))) {
        GTEST_SKIP() << "there is no linter";
    }
    VirtualSensor sensor;
    const HttpClient http = HttpClient::Of(sensor);
    const std::string path = http.Get("/").Link("service-desc");
    EXPECT_EQ(http.Get(path).body.at("openapi"), "3.1.0");
    const std::string host = http.Address().substr(0, http.Address().size() - 1);
    const Answer answer = RunToEnd({"node", SourceFile("Tests/EndToEnd/lint.js"), host + path});
    EXPECT_EQ(answer.status, 0) << answer.errors;
    EXPECT_EQ(answer.output, "");
}

} // namespace
} // namespace Tests
