#include "VorControl/Control/ControlDevicePort.h"

#include "Tests/Support/AddBlocks.h"
#include "Vor/JsonSerializer.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using VorControl::ControlDevicePort;

namespace {

json Figures(const ControlDevicePort& port) {
    return Vor::Properties::JsonSerializer::Serialize(port.GetMetrics());
}

} // namespace

TEST(ControlDevicePortTest, ANewPortHasOneAssemblyForMeasurementsWithoutBlocks) {
    ControlDevicePort port(7);
    EXPECT_EQ(port.PortNumber(), 7U);
    EXPECT_EQ(ControlDevicePort::Key(7), "port-7");
    const auto assembly = port.RegisterAssembly();
    EXPECT_STREQ(assembly->Id(), "registerAssembly-0");
    EXPECT_STREQ(assembly->DisplayName(), "Register Assembly 0");
    EXPECT_EQ(assembly->AddedRegisterBlocksCount(), 0U);
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(assembly->Attributes()),
              (json{{"isGlobalAddressSpaceUsed", false},
                    {"outputIdMin", 0},
                    {"outputIdMax", 65534},
                    {"outputIdReadOnly", false}}));
    const VorControl::ControlProtocol::AssemblyLock lock(*assembly);
    ASSERT_EQ(assembly->SupportedRegisterBlockTypes().size(), 1U);
    EXPECT_EQ(assembly->SupportedRegisterBlockTypes().front()->Type(), "Measurement");
}

TEST(ControlDevicePortTest, ItsCommandTargetChangesItsAssembly) {
    ControlDevicePort port(0);
    const auto params = port.RegisterAssemblyCmdTarget().GetCommandParams("add");
    Vor::Properties::JsonSerializer::Deserialize(
        *params, json{{"blocks", {{{"type", "Measurement"}, {"dataSource", "profile/max"}}}}});
    port.RegisterAssemblyCmdTarget().InvokeCommand("add", *params);
    EXPECT_EQ(port.RegisterAssembly()->DataSourceList(), std::vector<std::string>{"profile/max"});
}

TEST(ControlDevicePortTest, FiguresChangeWhenTheyAreRefreshed) {
    ControlDevicePort port(0);
    port.SetDropCount(5);
    port.SetHighCount(3);
    port.SetLowCount(2);
    port.IncrementDiscardCount(4);
    port.IncrementDiscardCount(1);
    EXPECT_EQ(Figures(port).dump(), R"({"dropCount":0,"highCount":0,"lowCount":0})");
    port.UpdateMetrics();
    EXPECT_EQ(Figures(port), (json{{"dropCount", 10}, {"highCount", 3}, {"lowCount", 2}}));
    port.ResetDiscardCount();
    port.UpdateMetrics();
    EXPECT_EQ(Figures(port)["dropCount"], 5);
}

TEST(ControlDevicePortTest, ResetClearsFiguresAndDiscardedRequests) {
    ControlDevicePort port(0);
    port.SetDropCount(5);
    port.SetHighCount(3);
    port.SetLowCount(2);
    port.IncrementDiscardCount(4);
    port.UpdateMetrics();
    port.ResetMetrics();
    EXPECT_EQ(Figures(port), (json{{"dropCount", 0}, {"highCount", 0}, {"lowCount", 0}}));
    port.UpdateMetrics();
    EXPECT_EQ(Figures(port), (json{{"dropCount", 5}, {"highCount", 3}, {"lowCount", 2}}));
}

TEST(ControlDevicePortTest, AnUnchangedFigureNotifiesNobody) {
    ControlDevicePort port(0);
    auto& metrics = const_cast<Vor::Properties::Structure&>(port.GetMetrics());
    int changes = 0;
    dynamic_cast<Vor::Properties::Value<long long>&>(metrics.At("highCount"))
        .AddChangeHandler([&](Vor::Properties::Node&) { ++changes; });
    port.SetHighCount(3);
    port.UpdateMetrics();
    port.UpdateMetrics();
    EXPECT_EQ(changes, 1);
}
