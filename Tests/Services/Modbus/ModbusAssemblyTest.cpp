#include "Services/Modbus/ModbusAssembly.h"

#include "Tests/Support/Failure.h"
#include "Vor/JsonSerializer.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "yApi/yStatus.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Services::Modbus {
namespace {

using nlohmann::json;
using namespace VorControl::ControlProtocol;

class ModbusAssemblyTest : public testing::Test {
protected:
    void Add(const json& blocks) {
        AddBlockParams params;
        Vor::Properties::JsonSerializer::Deserialize(params, json{{"blocks", blocks}});
        assembly.Add(params);
    }
    void Update(const json& request) {
        UpdateBlockParams params;
        Vor::Properties::JsonSerializer::Deserialize(params, request);
        assembly.Update(params);
    }
    static json Text(unsigned short address, unsigned count) {
        return {{"type", "String"}, {"dataSource", "t"}, {"outputId", address}, {"registerCount", count}};
    }
    static std::string Refusal(unsigned count) {
        return "A block of the type String has 1 to 125 registers, as many as one request reads, but " +
               std::to_string(count) + " were given.";
    }
    std::vector<unsigned> Counts() {
        const AssemblyLock lock(assembly);
        std::vector<unsigned> counts;
        for (const auto& block : assembly.AddedRegisterBlocks()) {
            counts.push_back(block->RegisterCount());
        }
        return counts;
    }

    unsigned short FirstAddress() {
        const AssemblyLock lock(assembly);
        return assembly.AddedRegisterBlocks().front()->OutputId();
    }

    ModbusAssembly assembly;
};

TEST_F(ModbusAssemblyTest, TakesATextThatOneRequestReads) {
    Add(json::array({Text(0, 1), Text(10, 125), {{"type", "String"}, {"dataSource", "t"}, {"outputId", 200}}}));
    EXPECT_EQ(Counts(), (std::vector<unsigned>{1, 125, 4}));
}

TEST_F(ModbusAssemblyTest, RefusesAnyOtherText) {
    const json number = {{"type", "MeasurementValue"}, {"dataSource", "a"}, {"outputId", 0}};
    for (const unsigned count : {0U, 126U, 65534U}) {
        EXPECT_FAILURE(Add(json::array({number, Text(10, count)})), yERROR_PARAMETER, Refusal(count));
        EXPECT_TRUE(Counts().empty());
    }
}

TEST_F(ModbusAssemblyTest, RefusesToMakeATextLongerThanOneRequestReads) {
    Add(json::array({Text(0, 4)}));
    for (const unsigned count : {0U, 126U}) {
        EXPECT_FAILURE(Update({{"outputId", 0}, {"newParams", {{"registerCount", count}, {"outputId", 7}}}}),
                       yERROR_PARAMETER, Refusal(count));
    }
    EXPECT_EQ(FirstAddress(), 0);
    Update({{"outputId", 0}, {"newParams", {{"registerCount", 125}}}});
    EXPECT_EQ(Counts(), std::vector<unsigned>{125});
    Update({{"outputId", 0}, {"newParams", {{"displayName", "Text"}}}});
    EXPECT_EQ(Counts(), std::vector<unsigned>{125});
}

} // namespace
} // namespace Services::Modbus
