#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyCommandTarget.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestAssembly.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace Tests;
using nlohmann::json;
using Vor::Properties::JsonSerializer;

namespace {

using Places = std::vector<Placed>;

/// Fills the parameters of a command from a document and runs it, as a client does.
void Invoke(IProtocolRegisterAssembly& assembly, const std::string& command, const json& params = json::object()) {
    auto& target = assembly.CommandTarget();
    const auto group = target.GetCommandParams(command);
    JsonSerializer::Deserialize(*group, params);
    const auto result = target.InvokeCommand(command, *group);
    EXPECT_EQ(result->GetTitle(), "");
    EXPECT_EQ(result->Members().size(), 0U);
}

} // namespace

TEST(ProtocolRegisterAssemblyCommandTarget, ListsTheCommandsInTheirOrder) {
    TestAssembly assembly(true);
    VorGetText::GetInstance().ForgetCalls();
    std::vector<std::pair<std::string, std::string>> listed;
    for (const auto& command : assembly.CommandTarget().ListCommands()) {
        listed.emplace_back(command.Id(), command.DisplayName());
        EXPECT_TRUE(assembly.CommandTarget().IsCommandSupported(command.Id()));
        EXPECT_FALSE(WasTranslated("beApp.ctrl", command.DisplayName().c_str()));
    }
    EXPECT_EQ(listed, (std::vector<std::pair<std::string, std::string>>{{"add", "Add"},
                                                                        {"remove", "Remove"},
                                                                        {"removeAll", "RemoveAll"},
                                                                        {"compact", "Compact"},
                                                                        {"update", "Update"}}));
}

TEST(ProtocolRegisterAssemblyCommandTarget, ParametersAreTheRequestsOfTheAssembly) {
    TestAssembly assembly(true);
    auto& target = assembly.CommandTarget();
    EXPECT_NE(dynamic_cast<AddBlockParams*>(target.GetCommandParams("add").get()), nullptr);
    EXPECT_NE(dynamic_cast<RemoveBlockParams*>(target.GetCommandParams("remove").get()), nullptr);
    EXPECT_NE(dynamic_cast<CompactBlocksParams*>(target.GetCommandParams("compact").get()), nullptr);
    EXPECT_NE(dynamic_cast<UpdateBlockParams*>(target.GetCommandParams("update").get()), nullptr);
    EXPECT_EQ(JsonSerializer::Serialize(*target.GetCommandParams("removeAll")), json::object());
    EXPECT_NE(target.GetCommandParams("add"), target.GetCommandParams("add"));
}

TEST(ProtocolRegisterAssemblyCommandTarget, CommandsEditTheAssembly) {
    TestAssembly assembly(true);
    assembly.WithTypes();
    Invoke(assembly, "add",
           {{"blocks", {{{"type", "four"}, {"displayName", "a"}}, {{"type", "flexible"}, {"displayName", "b"}}}}});
    EXPECT_EQ(assembly.Places(), (Places{{0, 3, "a"}, {4, 7, "b"}}));
    Invoke(assembly, "update",
           {{"outputId", 4}, {"autoShift", true}, {"newParams", {{"outputId", 2}, {"registerCount", 1}}}});
    EXPECT_EQ(assembly.Places(), (Places{{2, 2, "b"}, {3, 6, "a"}}));
    Invoke(assembly, "add",
           {{"blocks", {{{"type", "one"}, {"outputId", 2}, {"displayName", "c"}}}}, {"autoShift", true}});
    Invoke(assembly, "remove", {{"outputIdList", {{{"outputId", 3}}}}});
    EXPECT_EQ(assembly.Places(), (Places{{2, 2, "c"}, {4, 7, "a"}}));
    Invoke(assembly, "compact");
    EXPECT_EQ(assembly.Places(), (Places{{0, 0, "c"}, {1, 4, "a"}}));
    Invoke(assembly, "compact", {{"startingOutputId", 9}});
    EXPECT_EQ(assembly.Places(), (Places{{9, 9, "c"}, {10, 13, "a"}}));
    Invoke(assembly, "removeAll");
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 0U);
}

TEST(ProtocolRegisterAssemblyCommandTarget, UnknownCommandIsNotFound) {
    TestAssembly assembly(true);
    auto& target = assembly.CommandTarget();
    Vor::Params::Group params;
    for (const std::string command : {"Add", "", "add ", "compactId", "updateId"}) {
        VorGetText::GetInstance().ForgetCalls();
        const Vor::LogCapture log;
        EXPECT_FALSE(target.IsCommandSupported(command));
        EXPECT_TEXTLESS_FAILURE(target.InvokeCommand(command, params), yERROR_NOT_FOUND);
        EXPECT_TRUE(log.Records().empty());
        EXPECT_TEXTLESS_FAILURE(target.GetCommandParams(command), yERROR_NOT_FOUND);
        ASSERT_EQ(log.Records().size(), 1U);
        EXPECT_EQ(log.Records()[0].level, 0x8000000100000000);
        EXPECT_EQ(log.Records()[0].title, "VorControl");
        EXPECT_EQ(log.Records()[0].text, "The command '" + command + "' does not exist.");
        EXPECT_TRUE(WasTranslated("beApp.ctrl", "The command '%1$s' does not exist."));
    }
}

TEST(ProtocolRegisterAssemblyCommandTarget, FailureOfTheAssemblyPassesThrough) {
    TestAssembly assembly(true);
    RemoveBlockParams params;
    params.outputIdList.Emplace().outputId = 4;
    EXPECT_FAILURE(assembly.CommandTarget().InvokeCommand("remove", params), yERROR_NOT_FOUND,
                   "No data sources were removed.");
    EXPECT_THROW(assembly.CommandTarget().InvokeCommand("add", params), std::bad_cast);
}
