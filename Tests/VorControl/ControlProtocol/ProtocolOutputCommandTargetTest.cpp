#include "VorControl/ControlProtocol/ProtocolOutputCommandTarget.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestOutputs.h"
#include "Vor/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace Tests;
using namespace VorControl::ControlProtocol;
using nlohmann::json;
using Vor::Properties::JsonSerializer;

namespace {

using Entries = NumericOutputs::Entries;

/// Fills the parameters of a command from a document and runs it, as a client does.
json Invoke(IProtocolOutput& map, const std::string& id, const json& params) {
    auto& target = map.CommandTarget();
    const auto group = target.GetCommandParams(id);
    JsonSerializer::Deserialize(*group, params);
    const auto result = target.InvokeCommand(id, *group);
    EXPECT_EQ(result->GetTitle(), "");
    EXPECT_EQ(result->Members().size(), 0U);
    return JsonSerializer::Serialize(*group);
}

json List(std::initializer_list<NumericOutputs::Entry> entries, bool autoShift = false) {
    json list = json::array();
    for (const auto& [id, source] : entries) {
        list.push_back({{"outputId", id}, {"source", source}});
    }
    return {{"map", list}, {"autoShift", autoShift}};
}

} // namespace

TEST(ProtocolOutputCommandTarget, ListsTheCommandsInTheirOrder) {
    NumericOutputs map(10, 0, 100);
    std::vector<std::pair<std::string, std::string>> listed;
    for (const auto& command : map.CommandTarget().ListCommands()) {
        listed.emplace_back(command.Id(), command.DisplayName());
        EXPECT_TRUE(map.CommandTarget().IsCommandSupported(command.Id()));
    }
    EXPECT_EQ(listed, (std::vector<std::pair<std::string, std::string>>{{"add", "Add"},
                                                                        {"addAll", "AddAll"},
                                                                        {"remove", "Remove"},
                                                                        {"removeAll", "RemoveAll"},
                                                                        {"compactId", "Compact"},
                                                                        {"updateId", "Update"}}));
}

TEST(ProtocolOutputCommandTarget, ParametersAreTheRequestsOfTheMap) {
    NumericOutputs numeric(10, 0, 100);
    auto& target = numeric.CommandTarget();
    EXPECT_NE(dynamic_cast<StandardOutputItemArgs*>(target.GetCommandParams("add").get()), nullptr);
    EXPECT_NE(dynamic_cast<StandardOutputsArgs*>(target.GetCommandParams("addAll").get()), nullptr);
    EXPECT_NE(dynamic_cast<StandardOutputRemoveArgs*>(target.GetCommandParams("remove").get()), nullptr);
    EXPECT_NE(dynamic_cast<StandardOutputsArgs*>(target.GetCommandParams("updateId").get()), nullptr);
    EXPECT_EQ(JsonSerializer::Serialize(*target.GetCommandParams("removeAll")), json::object());
    EXPECT_EQ(JsonSerializer::Serialize(*target.GetCommandParams("compactId")), json::object());
    EXPECT_NE(target.GetCommandParams("add"), target.GetCommandParams("add"));

    TextOutputs text(10);
    EXPECT_NE(dynamic_cast<TextIdStandardOutputItemArgs*>(text.CommandTarget().GetCommandParams("add").get()), nullptr);
    EXPECT_NE(dynamic_cast<TextIdStandardOutputsArgs*>(text.CommandTarget().GetCommandParams("addAll").get()), nullptr);
    EXPECT_NE(dynamic_cast<TextIdStandardOutputRemoveArgs*>(text.CommandTarget().GetCommandParams("remove").get()),
              nullptr);
}

TEST(ProtocolOutputCommandTarget, CommandsEditANumericMap) {
    NumericOutputs map(10, 0, 100);
    Invoke(map, "addAll", List({{9, "a"}, {9, "b"}, {9, "c"}}));
    EXPECT_EQ(map.List(), (Entries{{0, "a"}, {1, "b"}, {2, "c"}}));
    Invoke(map, "add", {{"outputId", 1}, {"source", "d"}, {"autoShift", true}});
    EXPECT_EQ(map.List(), (Entries{{0, "a"}, {1, "d"}, {2, "b"}, {3, "c"}}));
    Invoke(map, "updateId", List({{0, ""}, {7, ""}}));
    EXPECT_EQ(map.List(), (Entries{{1, "d"}, {2, "b"}, {3, "c"}, {7, "a"}}));
    Invoke(map, "remove", {{"outputId", 2}});
    Invoke(map, "remove", {{"outputIdList", json::array({3})}});
    Invoke(map, "compactId", json::object());
    EXPECT_EQ(map.List(), (Entries{{0, "d"}, {1, "a"}}));
    Invoke(map, "removeAll", json::object());
    EXPECT_EQ(map.Count(), 0U);
}

TEST(ProtocolOutputCommandTarget, ParametersTellTheIdsThatWereGiven) {
    NumericOutputs map(10, 0, 100);
    EXPECT_EQ(Invoke(map, "addAll", List({{9, "a"}}))["map"], json::parse(R"([{"outputId": 0, "source": "a"}])"));
}

TEST(ProtocolOutputCommandTarget, RemoveAllOfAnEmptyMapSucceeds) {
    NumericOutputs numeric(10, 0, 100);
    Invoke(numeric, "removeAll", json::object());
    TextOutputs text(10);
    Invoke(text, "removeAll", json::object());
}

TEST(ProtocolOutputCommandTarget, CompactIdOfATextMapDoesNothing) {
    TextOutputs map(10);
    Invoke(map, "addAll", json::parse(R"({"map": [{"source": "b"}, {"source": "a"}]})"));
    Invoke(map, "compactId", json::object());
    EXPECT_EQ(map.List(), (TextOutputs::Entries{{"a", "a"}, {"b", "b"}}));
}

TEST(ProtocolOutputCommandTarget, UnknownCommandIsNotFound) {
    VorGetText::GetInstance().ForgetCalls();
    NumericOutputs map(10, 0, 100);
    auto& target = map.CommandTarget();
    Vor::Params::Group params;
    for (const std::string id : {"AddAll", "Add", "", "add ", "update"}) {
        EXPECT_FALSE(target.IsCommandSupported(id));
        EXPECT_FAILURE(target.GetCommandParams(id), yERROR_NOT_FOUND,
                       "The command '" + id + "' does not exist. No parameters available");
        EXPECT_FAILURE(target.InvokeCommand(id, params), yERROR_NOT_FOUND,
                       "The command '" + id + "' does not exist. Command ignored.");
    }
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "The command '%s' does not exist. No parameters available"));
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "The command '%s' does not exist. Command ignored."));
}

TEST(ProtocolOutputCommandTarget, FailureOfTheMapPassesThrough) {
    NumericOutputs map(10, 0, 100);
    StandardOutputRemoveArgs args;
    args.outputId = 4;
    EXPECT_TEXTLESS_FAILURE(map.CommandTarget().InvokeCommand("remove", args), yERROR_NOT_FOUND);
    EXPECT_THROW(map.CommandTarget().InvokeCommand("add", args), std::bad_cast);
}
