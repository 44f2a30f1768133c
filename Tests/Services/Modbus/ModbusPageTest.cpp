#include "Tests/Support/MarkdownTable.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"

#include <map>
#include <string>

#include <gtest/gtest.h>

namespace Services::Modbus {
namespace {

using CommandData = VorControl::ControlProtocol::ControlRegisterCommandData;

TEST(ModbusPage, ListsTheCommandsWithTheirNumbers) {
    std::map<std::string, std::string> documented;
    for (const auto& [number, cells] : Tests::MarkdownTable("Docs/modbus.md", {"Command", ""})) {
        documented[number] = cells.at(1);
    }
    std::map<std::string, std::string> known = {{"any other", ""}};
    for (const auto& [id, name] :
         {std::pair(CommandData::NoCommand, "no command"), std::pair(CommandData::Start, "start"),
          std::pair(CommandData::Stop, "stop"), std::pair(CommandData::Align, "align"),
          std::pair(CommandData::ClearAlign, "clear align"), std::pair(CommandData::LoadJob, "load job"),
          std::pair(CommandData::SoftwareTrigger, "software trigger"),
          std::pair(CommandData::SetUserData, "set user data")}) {
        known[std::to_string(static_cast<int>(id))] = name;
    }
    EXPECT_EQ(documented, known);
}

} // namespace
} // namespace Services::Modbus
