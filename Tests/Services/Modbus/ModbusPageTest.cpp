// The tables of the page have what the service has. The functions have no default, so the compiler reports an
// enumerator that they don't name.

#include "Services/Common/Registers/CommandCells.h"
#include "Services/Modbus/ExceptionCodes.h"
#include "Tests/Support/MarkdownTable.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"

#include <limits>
#include <map>
#include <regex>
#include <string>

#include <gtest/gtest.h>

namespace Services::Modbus {
namespace {

using Common::CommandCells;
using CommandData = VorControl::ControlProtocol::ControlRegisterCommandData;
using Names = std::map<std::string, std::string>;

const char* NameOf(CommandData::CommandId id) {
    switch (id) {
    case CommandData::NoCommand:
        return "no command";
    case CommandData::Start:
        return "start";
    case CommandData::Stop:
        return "stop";
    case CommandData::Align:
        return "align";
    case CommandData::ClearAlign:
        return "clear align";
    case CommandData::LoadJob:
        return "load job";
    case CommandData::SoftwareTrigger:
        return "software trigger";
    case CommandData::SetUserData:
        return "set user data";
    }
    return nullptr;
}

const char* NameOf(CommandCells::CommandStatus status) {
    switch (status) {
    case CommandCells::NoCommandYet:
        return "no command yet";
    case CommandCells::CommandInProgress:
        return "in progress";
    case CommandCells::CommandDone:
        return "done";
    case CommandCells::CommandFailed:
        return "failed";
    }
    return nullptr;
}

const char* NameOf(ExceptionCode code) {
    switch (code) {
    case NoException:
        return nullptr;
    case IllegalFunction:
        return "Illegal function";
    case IllegalDataAddress:
        return "Illegal data address";
    case IllegalDataValue:
        return "Illegal data value";
    case ServerDeviceBusy:
        return "Server device busy";
    case GatewayTargetFailedToRespond:
        return "Gateway target device failed to respond";
    }
    return nullptr;
}

/// The names of all enumerators, by their numbers.
template <class Enum>
Names NamesOf() {
    Names names;
    for (unsigned number = 0; number <= std::numeric_limits<unsigned char>::max(); ++number) {
        if (const char* const name = NameOf(static_cast<Enum>(number))) {
            names[std::to_string(number)] = name;
        }
    }
    return names;
}

/// The second cells, by the first ones.
Names SecondCells(const Tests::MarkdownCells& titles) {
    Names names;
    for (const auto& [number, cells] : Tests::MarkdownTable("Docs/modbus.md", titles)) {
        names[number] = cells.at(1);
    }
    return names;
}

TEST(ModbusPage, ListsTheCommandsWithTheirNumbers) {
    Names known = NamesOf<CommandData::CommandId>();
    known["any other"] = "";
    EXPECT_EQ(SecondCells({"Command", ""}), known);
}

TEST(ModbusPage, ListsTheStatusesOfACommand) {
    const std::string cell = SecondCells({"Address", "Content of the answer"})["1101"];
    const std::regex status("([0-9]+) ([a-z ]+)");
    Names documented;
    for (std::sregex_iterator found(cell.begin(), cell.end(), status); found != std::sregex_iterator(); ++found) {
        documented[(*found)[1]] = (*found)[2];
    }
    EXPECT_EQ(documented, NamesOf<CommandCells::CommandStatus>());
}

TEST(ModbusPage, ListsTheExceptions) {
    EXPECT_EQ(SecondCells({"Code", "Name"}), NamesOf<ExceptionCode>());
}

} // namespace
} // namespace Services::Modbus
