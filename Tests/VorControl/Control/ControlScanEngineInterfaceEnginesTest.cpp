#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeOutputDevice.h"
#include "Tests/Support/FakeScanner.h"
#include "VorControl/Control/ControlScanEngineInterface.h"

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using Tests::AddEngine;
using Tests::AddScanner;
using Tests::FakeOutputDevice;
using Tests::FakeOutputDevices;
using Tests::FakeScanner;
using VorControl::ControlScanEngineInterface;
using VorScan::Internal::ScanEngineManager;

namespace {

using Info = VorControl::IControlScanEngineInterface::ScannerStateInfo;
using DeviceStatus = VorCommon::IDeviceProvider::DeviceStatus;
using OutputManager = VorCommon::IProviderManager<VorCommon::IDigitalOutputProvider>;

constexpr const char* NoManager = "Scan engine manager reference is uninitialized.";

void Offer(Tests::FakeScanEngine& engine, const std::shared_ptr<OutputManager>& manager) {
    engine.services[&typeid(OutputManager)] = manager;
}

/// One engine of id and type "scan".
class AvailableDevicesTest : public testing::Test {
protected:
    ScanEngineManager manager;
    Tests::FakeScanEngine& engine = AddEngine(manager, "scan", "scan");
    ControlScanEngineInterface subject{&manager};
};

/// Engines as each test adds them.
class EngineChoiceTest : public testing::Test {
protected:
    ScanEngineManager manager;
    ControlScanEngineInterface subject{&manager};

    FakeScanner& AddTriggered(const std::string& engineId, const std::string& id,
                              std::vector<std::string> sensors = {"sensor"}) {
        FakeScanner& scanner = AddScanner(manager, engineId, id, std::move(sensors));
        scanner.target.actions = {"trigger"};
        return scanner;
    }
};

} // namespace

TEST_F(EngineChoiceTest, EmptyIdMeansTheFirstScannerOfTheFirstEngineWithScanners) {
    AddEngine(manager, "empty", "any");
    AddEngine(manager, "first", "any");
    AddEngine(manager, "second", "any");
    FakeScanner& one = AddTriggered("first", "B");
    FakeScanner& two = AddTriggered("first", "A");
    FakeScanner& three = AddTriggered("second", "C");

    subject.SoftwareTrigger("");

    EXPECT_THAT(one.target.calls, ElementsAre("ActionParameters trigger", "ExecuteAction trigger"));
    EXPECT_THAT(two.target.calls, IsEmpty());
    EXPECT_THAT(three.target.calls, IsEmpty());
}

TEST_F(EngineChoiceTest, AnIdIsLookedForOnTheFirstEngineWithScannersOnly) {
    AddEngine(manager, "empty", "any");
    AddEngine(manager, "first", "any");
    AddEngine(manager, "second", "any");
    FakeScanner& one = AddTriggered("first", "A");
    FakeScanner& two = AddTriggered("first", "B");
    FakeScanner& three = AddTriggered("second", "C");

    subject.SoftwareTrigger("B");
    const auto failure = Tests::FailureOf([&] { subject.SoftwareTrigger("C"); });

    EXPECT_THAT(one.target.calls, IsEmpty());
    EXPECT_EQ(two.target.calls.size(), 2U);
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_NOT_FOUND);
    EXPECT_THAT(three.target.calls, IsEmpty());
}

TEST_F(EngineChoiceTest, AScannerWithoutSensorsTakesOperations) {
    AddEngine(manager, "first", "any");
    FakeScanner& scanner = AddTriggered("first", "A", {});
    subject.SoftwareTrigger("");
    EXPECT_EQ(scanner.target.calls.size(), 2U);
}

TEST_F(EngineChoiceTest, WithoutEnginesOperationsFail) {
    Info info;
    EXPECT_FAILURE(subject.SoftwareTrigger(""), yERROR_NOT_FOUND, "No scan engines found");
    EXPECT_FAILURE(subject.Alignment(""), yERROR_NOT_FOUND, "No scan engines found");
    EXPECT_FAILURE(subject.ClearAlignment(""), yERROR_NOT_FOUND, "No scan engines found");
    EXPECT_FAILURE(subject.BlinkLed(true, true), yERROR_NOT_FOUND, "No scan engines found");
    EXPECT_FAILURE(subject.AlignmentCompletedEvent(""), yERROR_NOT_FOUND, "No scan engines found");
    EXPECT_FAILURE(subject.ScannerInfo("", info), yERROR_NOT_FOUND, "No scan engines found");
}

TEST_F(EngineChoiceTest, WithoutScannersOperationsFail) {
    AddEngine(manager, "first", "any");
    AddEngine(manager, "second", "any");
    EXPECT_FAILURE(subject.SoftwareTrigger(""), yERROR_NOT_FOUND, "No usable scan engines found");
    EXPECT_FAILURE(subject.SoftwareTrigger("A"), yERROR_NOT_FOUND, "No usable scan engines found");
}

TEST_F(EngineChoiceTest, AnEngineIdIsTheTypeNameOfAnEngine) {
    AddEngine(manager, "name", "type");
    FakeScanner& scanner = AddScanner(manager, "name", "A");
    EXPECT_EQ(&subject.GetAlignmentState("type"), &scanner.alignmentState);
    EXPECT_EQ(&subject.AlignmentStateUpdatedEvent("type"),
              &manager.GetInstance("name").FindScanner("A").ScannerAlignStateUpdatedEvent());
    EXPECT_TEXTLESS_FAILURE(subject.GetAlignmentState("name"), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(subject.AlignmentStateUpdatedEvent("name"), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(subject.GetDigitalOutputProviderManager("name"), yERROR_NOT_FOUND);
}

TEST_F(EngineChoiceTest, AQueryByEngineIdSkipsScannersWithoutSensors) {
    AddEngine(manager, "other", "other");
    AddEngine(manager, "first", "type");
    AddEngine(manager, "second", "type");
    AddScanner(manager, "other", "O");
    AddScanner(manager, "first", "A", {});
    AddScanner(manager, "first", "B", {});
    AddScanner(manager, "second", "C", {});
    FakeScanner& scanner = AddScanner(manager, "second", "D");
    AddScanner(manager, "second", "E");
    EXPECT_EQ(&subject.GetAlignmentState("type"), &scanner.alignmentState);
}

TEST_F(EngineChoiceTest, AQueryByEngineIdWithoutAScannerWithSensorsFails) {
    AddEngine(manager, "first", "type");
    AddScanner(manager, "first", "A", {});
    EXPECT_TEXTLESS_FAILURE(subject.GetAlignmentState("type"), yERROR_NOT_FOUND);
}

TEST_F(EngineChoiceTest, WithoutEnginesAQueryByEngineIdFails) {
    EXPECT_FAILURE(subject.GetAlignmentState("type"), yERROR_NOT_FOUND, "No scan engines found.");
    EXPECT_FAILURE(subject.AlignmentStateUpdatedEvent("type"), yERROR_NOT_FOUND, "No scan engines found.");
    EXPECT_TEXTLESS_FAILURE(subject.GetDigitalOutputProviderManager("type"), yERROR_NOT_FOUND);
}

TEST_F(EngineChoiceTest, EnginesAreListedInOrderOfAdding) {
    EXPECT_THAT(subject.GetScanEngineList(), IsEmpty());
    AddEngine(manager, "second", "any");
    AddEngine(manager, "first", "any");
    EXPECT_THAT(subject.GetScanEngineList(), ElementsAre("second", "first"));
    EXPECT_TRUE(subject.IsScanEngineManagerValid());
}

TEST(ControlScanEngineInterfaceWithoutEnginesTest, WithoutAManagerNothingIsReached) {
    ControlScanEngineInterface subject(nullptr);
    Info info;
    EXPECT_FALSE(subject.IsScanEngineManagerValid());
    EXPECT_THAT(subject.FindAvailableSensors(), IsEmpty());
    EXPECT_FAILURE(subject.SoftwareTrigger("A"), yERROR_STATE, NoManager);
    EXPECT_FAILURE(subject.Alignment(""), yERROR_STATE, NoManager);
    EXPECT_FAILURE(subject.ClearAlignment(""), yERROR_STATE, NoManager);
    EXPECT_FAILURE(subject.BlinkLed(true, true), yERROR_STATE, NoManager);
    EXPECT_FAILURE(subject.AlignmentCompletedEvent(""), yERROR_STATE, NoManager);
    EXPECT_FAILURE(subject.AlignmentStateUpdatedEvent("any"), yERROR_STATE, NoManager);
    EXPECT_FAILURE(subject.GetAlignmentState("any"), yERROR_STATE, NoManager);
    EXPECT_FAILURE(subject.ScannerInfo("", info), yERROR_STATE, NoManager);
    EXPECT_FAILURE(subject.GetDigitalOutputProviderManager("any"), yERROR_STATE, NoManager);
    EXPECT_FAILURE(subject.GetScanEngineList(), yERROR_STATE, NoManager);
}

TEST_F(AvailableDevicesTest, DigitalOutputsAreFoundByTheServiceOfTheEngine) {
    EXPECT_EQ(subject.GetDigitalOutputProviderManager("scan"), nullptr);
    auto outputs = std::make_shared<FakeOutputDevices>();
    Offer(engine, outputs);
    EXPECT_EQ(subject.GetDigitalOutputProviderManager("scan"), outputs);
    outputs.reset();
    EXPECT_EQ(subject.GetDigitalOutputProviderManager("scan"), nullptr);
}

TEST_F(AvailableDevicesTest, AvailableDevicesAreThoseOfAllEnginesInOrder) {
    const auto a = std::make_shared<FakeOutputDevice>("modelA", "100", DeviceStatus::Connected);
    const auto b = std::make_shared<FakeOutputDevice>("modelB", "200", DeviceStatus::NotConnected);
    const auto c = std::make_shared<FakeOutputDevice>("modelC", "300", DeviceStatus::Connected);
    auto gone = std::make_shared<FakeOutputDevice>("modelD", "400", DeviceStatus::Connected);
    const auto outputs = std::make_shared<FakeOutputDevices>();
    outputs->Put("2", a);
    outputs->Put("1", b);
    outputs->Put("0", gone);
    gone.reset();
    Offer(engine, outputs);
    AddEngine(manager, "bare", "bare");
    const auto others = std::make_shared<FakeOutputDevices>();
    others->Put("9", c);
    Offer(AddEngine(manager, "more", "more"), others);

    const auto found = subject.FindAvailableSensors();

    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].device.lock(), b);
    EXPECT_EQ(found[0].engineId, "scan");
    EXPECT_EQ(found[0].deviceModel, "modelB");
    EXPECT_EQ(found[0].serialNumber, "200");
    EXPECT_EQ(found[0].providerId, "1");
    EXPECT_EQ(found[0].deviceStatus, DeviceStatus::NotConnected);
    EXPECT_EQ(found[1].device.lock(), a);
    EXPECT_EQ(found[1].providerId, "2");
    EXPECT_EQ(found[1].deviceStatus, DeviceStatus::Connected);
    EXPECT_EQ(found[2].device.lock(), c);
    EXPECT_EQ(found[2].engineId, "more");
}

TEST_F(AvailableDevicesTest, AvailableDevicesAskForEachEngineOnce) {
    class Counting : public ControlScanEngineInterface {
    public:
        using ControlScanEngineInterface::ControlScanEngineInterface;
        std::vector<std::string> asked;
        std::shared_ptr<OutputManager> GetDigitalOutputProviderManager(const std::string& engineId) override {
            asked.push_back(engineId);
            return nullptr;
        }
    };
    AddEngine(manager, "more", "other");
    Counting counting(&manager);
    EXPECT_THAT(counting.FindAvailableSensors(), IsEmpty());
    EXPECT_THAT(counting.asked, ElementsAre("scan", "more"));
}

TEST_F(EngineChoiceTest, AvailableDevicesOfAnEngineWhoseNameIsntItsTypeCantBeFound) {
    AddEngine(manager, "name", "type");
    EXPECT_TEXTLESS_FAILURE(subject.FindAvailableSensors(), yERROR_NOT_FOUND);
}

TEST_F(AvailableDevicesTest, AnOutputIsSwitchedByItsProvider) {
    const auto provider = std::make_shared<FakeOutputDevice>("model", "1", DeviceStatus::Connected);
    EXPECT_EQ(subject.SetDigitalOutputState(provider, 3, true, -5), yOK);
    provider->answer = yERROR_FULL;
    EXPECT_EQ(subject.SetDigitalOutputState(provider, 0, false, 8), yERROR_FULL);
    EXPECT_THAT(provider->NewCalls(), ElementsAre("3 on -5", "0 off 8"));
    EXPECT_TEXTLESS_FAILURE(subject.SetDigitalOutputState(nullptr, 0, false, 0), yERROR_STATE);
}
