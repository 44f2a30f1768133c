#include "VorControl/Control/ControlDeviceOperations.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeOutputDevice.h"
#include "Tests/Support/FakeScanEngineInterface.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/Signal.h"
#include "Tests/Support/WaitForLoop.h"
#include "Vor/AsyncLoop.h"
#include "Vor/Logging.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using Tests::FakeOutputDevice;
using Tests::Signal;
using VorControl::ControlDeviceActionId;
using VorControl::ControlDeviceOperations;
using Results = VorControl::ControlDeviceOperationsResults;

namespace {

using Texts = std::vector<std::string>;

constexpr const char* LessThanOne = "pendingDigitalOutputSetStateRequestCount shouldn't be less than 1!";

class ControlDeviceOperationsTest : public testing::Test {
protected:
    ControlDeviceOperationsTest() {
        scanEngine.outputs["engine"] = devices;
        devices->Put("p", device);
    }
    ~ControlDeviceOperationsTest() override {
        leave.Set();
        if (operations != nullptr) {
            operations->RemoveOpEndEventHandler("a", handle);
        }
        operations.reset();
        Tests::WaitForLoop(); // for what the operations didn't wait for
    }

    void Collect(const std::string& name, const Results& results) {
        const std::lock_guard guard(mutex);
        ends.push_back(name + " " + results.clientId + " " + std::to_string(static_cast<int>(results.actionId)) + " " +
                       std::to_string(results.status));
        lastDevices = results.devices;
        changed.notify_all();
    }

    std::function<void(Results)> Collector(const std::string& name) {
        return [this, name](const Results& results) { Collect(name, results); };
    }

    /// The ends since the last call, once there are that many; fewer after the time-out.
    Texts WaitFor(std::size_t count = 1) {
        std::unique_lock guard(mutex);
        changed.wait_for(guard, std::chrono::seconds(20), [&] { return ends.size() >= count; });
        return std::exchange(ends, {});
    }

    bool Switch(bool canDrop, long long target = 0) {
        return operations->SetDigitalOutputState("a", device, 2, canDrop, true, target);
    }

    /// The device doesn't return from its next call until the test sets `leave`.
    void Occupy() {
        device->OnCall([this](const std::string&) {
            entered.Set();
            leave.Wait();
        });
        ASSERT_TRUE(Switch(false, -1));
        ASSERT_TRUE(entered.Wait());
    }

    std::uint32_t Pending() const { return operations->PendingDigitalOutputSetStateRequestCount(); }

    Tests::Faults faults;
    Vor::LogCapture log;
    Tests::FakeScanEngineInterface scanEngine;
    std::shared_ptr<Tests::FakeOutputDevices> devices = std::make_shared<Tests::FakeOutputDevices>();
    std::shared_ptr<FakeOutputDevice> device = std::make_shared<FakeOutputDevice>();
    Signal entered;
    Signal leave;
    std::mutex mutex; ///< guards the ends
    std::condition_variable changed;
    Texts ends;
    std::shared_ptr<std::vector<VorControl::ControlAvailableDeviceProp>> lastDevices;
    std::unique_ptr<ControlDeviceOperations> operations = std::make_unique<ControlDeviceOperations>(scanEngine);
    ControlDeviceOperations::OpEndEvent::CallbackId handle = operations->AddOpEndEventHandler("a", Collector("first"));
};

} // namespace

TEST_F(ControlDeviceOperationsTest, AnOutputIsSwitchedOnTheLoopAndItsEndReported) {
    EXPECT_TRUE(operations->SetDigitalOutputState("a", device, 3, true, true, -5));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 1"});
    EXPECT_EQ(device->NewCalls(), Texts{"3 on -5"});
    EXPECT_EQ(lastDevices, nullptr);
    EXPECT_EQ(Pending(), 0U);
}

TEST_F(ControlDeviceOperationsTest, AListOfDevicesIsReported) {
    EXPECT_TRUE(operations->FindAvailableSensors("a"));
    EXPECT_EQ(WaitFor(), Texts{"first a 0 1"});
    ASSERT_EQ(lastDevices->size(), 1U);
    EXPECT_EQ(lastDevices->front().device.lock(), device);
    EXPECT_EQ(lastDevices->front().providerId, "p");
}

TEST_F(ControlDeviceOperationsTest, OnlyTheClientOfAnOperationIsNotified) {
    auto other = operations->AddOpEndEventHandler("b", Collector("other"));
    auto second = operations->AddOpEndEventHandler("a", Collector("second"));
    EXPECT_TRUE(operations->FindAvailableSensors("nobody"));
    EXPECT_TRUE(operations->FindAvailableSensors("a"));
    EXPECT_EQ(WaitFor(2), (Texts{"first a 0 1", "second a 0 1"}));
    operations->RemoveOpEndEventHandler("a", second);
    EXPECT_FALSE(second.IsSet());
    EXPECT_TRUE(operations->FindAvailableSensors("a"));
    EXPECT_TRUE(operations->FindAvailableSensors("b"));
    EXPECT_EQ(WaitFor(2), (Texts{"first a 0 1", "other b 0 1"}));
    operations->RemoveOpEndEventHandler("b", other);
}

TEST_F(ControlDeviceOperationsTest, AnEmptyHandlerIsntAdded) {
    auto id = operations->AddOpEndEventHandler("a", nullptr);
    EXPECT_FALSE(id.IsSet());
    operations->RemoveOpEndEventHandler("a", id);
    EXPECT_TRUE(Switch(true));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 1"});
}

TEST_F(ControlDeviceOperationsTest, TheTwentyFirstDroppableRequestIsRefused) {
    Occupy();
    for (int i = 1; i < 20; ++i) {
        EXPECT_TRUE(Switch(true)) << i;
    }
    EXPECT_EQ(Pending(), 20U);
    EXPECT_FALSE(Switch(true));
    EXPECT_EQ(Pending(), 20U);
    leave.Set();
    EXPECT_EQ(WaitFor(20).size(), 20U);
    EXPECT_EQ(device->NewCalls().size(), 20U);
    EXPECT_TRUE(Switch(true));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 1"});
}

TEST_F(ControlDeviceOperationsTest, ARequestThatMayNotBeDroppedIsQueuedWithoutLimit) {
    Occupy();
    for (int i = 1; i < 100; ++i) {
        EXPECT_TRUE(Switch(false)) << i;
    }
    EXPECT_EQ(Pending(), 100U);
    EXPECT_TRUE(Switch(false));
    EXPECT_EQ(Pending(), 101U);
    EXPECT_FALSE(Switch(true));
    EXPECT_EQ(Pending(), 101U);
    leave.Set();
    EXPECT_EQ(WaitFor(101).size(), 101U);
    EXPECT_EQ(Pending(), 0U);
}

TEST_F(ControlDeviceOperationsTest, AListOfDevicesIsNeverDropped) {
    Occupy();
    for (int i = 0; i < 30; ++i) {
        EXPECT_TRUE(operations->FindAvailableSensors("a"));
    }
    EXPECT_EQ(Pending(), 1U);
    leave.Set();
    EXPECT_EQ(WaitFor(31).size(), 31U);
}

TEST_F(ControlDeviceOperationsTest, OnlyAnOutputMayBeDropped) {
    EXPECT_FALSE(operations->RunSynchronousOp({.clientId = "a"}, true));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "The current control device action ID (0) should not be able to drop."));
    EXPECT_TRUE(Switch(true));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 1"});
}

TEST_F(ControlDeviceOperationsTest, RequestsRunInOrder) {
    Occupy();
    EXPECT_TRUE(Switch(true, 1));
    EXPECT_TRUE(Switch(false, 2));
    EXPECT_TRUE(operations->SetDigitalOutputState("a", device, 0, true, false, 3));
    leave.Set();
    EXPECT_EQ(WaitFor(4).size(), 4U);
    EXPECT_EQ(device->NewCalls(), (Texts{"2 on -1", "2 on 1", "2 on 2", "0 off 3"}));
}

TEST_F(ControlDeviceOperationsTest, TheSlotIsFreeWhenTheEndIsReported) {
    std::vector<std::uint32_t> counts;
    auto probe = operations->AddOpEndEventHandler("b", [&](const Results& results) {
        counts.push_back(Pending());
        Collect("probe", results);
    });
    EXPECT_TRUE(operations->SetDigitalOutputState("b", device, 0, true, true, 0));
    EXPECT_EQ(WaitFor(), Texts{"probe b 1 1"});
    operations->RemoveOpEndEventHandler("b", probe);
    EXPECT_EQ(counts, std::vector<std::uint32_t>{0});
}

TEST_F(ControlDeviceOperationsTest, AHandlerMayQueueTheNextRequest) {
    auto again = operations->AddOpEndEventHandler("b", [&](const Results& results) {
        if (results.actionId == ControlDeviceActionId::FindAvailableSensors) {
            operations->SetDigitalOutputState("b", device, 0, true, true, 0);
        }
        Collect("again", results);
    });
    EXPECT_TRUE(operations->FindAvailableSensors("b"));
    EXPECT_EQ(WaitFor(2), (Texts{"again b 0 1", "again b 1 1"}));
    operations->RemoveOpEndEventHandler("b", again);
}

TEST_F(ControlDeviceOperationsTest, AFailingDeviceIsReportedWithStatus0) {
    device->OnCall([](const std::string&) { Vor::Throw(yERROR_BUSY, "device"); });
    EXPECT_TRUE(Switch(true));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 0"});
    device->OnCall([](const std::string&) { throw std::runtime_error("standard"); });
    EXPECT_TRUE(Switch(true));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 0"});
    device->OnCall([](const std::string&) { throw 5; });
    EXPECT_TRUE(Switch(true));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 0"});
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception processing action id 1"), 3U);
    EXPECT_TRUE(log.Contains("Caught exception with status -976: device"));
    device->OnCall(nullptr);
    device->answer = yERROR_FULL;
    EXPECT_TRUE(Switch(true));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 0"});
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception processing action id 1"), 4U);
    EXPECT_EQ(Pending(), 0U);
}

TEST_F(ControlDeviceOperationsTest, AListThatFailsIsReportedWithStatus0AndWithoutDevices) {
    scanEngine.OnCall([](const std::string&) { Vor::Throw(yERROR_NOT_FOUND); });
    EXPECT_TRUE(operations->FindAvailableSensors("a"));
    EXPECT_EQ(WaitFor(), Texts{"first a 0 0"});
    EXPECT_EQ(lastDevices, nullptr);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Exception processing action id 0"));
}

TEST_F(ControlDeviceOperationsTest, AnUnknownActionIsReportedAsABadParameter) {
    EXPECT_TRUE(
        operations->RunSynchronousOp({.clientId = "a", .actionId = static_cast<ControlDeviceActionId>(9)}, false));
    EXPECT_EQ(WaitFor(), Texts{"first a 9 -997"});
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Unexpected action id 9"));
}

TEST_F(ControlDeviceOperationsTest, AFailingHandlerIsLoggedAndTheNextRequestRuns) {
    auto failing = operations->AddOpEndEventHandler("b", [](const Results&) { throw std::runtime_error("handler"); });
    EXPECT_TRUE(operations->SetDigitalOutputState("b", device, 0, true, true, 0));
    EXPECT_TRUE(Switch(true));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 1"});
    operations->RemoveOpEndEventHandler("b", failing);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "EXCEPTION THROWN: "));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Exception notifying operation end for action id 1"));
    EXPECT_EQ(Pending(), 0U);
}

TEST_F(ControlDeviceOperationsTest, ClearDropsTheRequestsOfOneActionWithoutAnEnd) {
    Occupy();
    EXPECT_TRUE(Switch(true, 1));
    EXPECT_TRUE(operations->FindAvailableSensors("a"));
    EXPECT_TRUE(Switch(true, 2));
    operations->ClearPendingOperations(ControlDeviceActionId::SetDigitalOutputState);
    EXPECT_EQ(Pending(), 0U);
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Cleared 2 queued operations of actionId 1."));
    EXPECT_FALSE(log.Contains(LessThanOne));
    leave.Set();
    EXPECT_EQ(WaitFor(2), (Texts{"first a 1 1", "first a 0 1"}));
    EXPECT_EQ(device->NewCalls(), Texts{"2 on -1"});
    EXPECT_EQ(log.Count(Vor::LevelError, LessThanOne), 1U);
    EXPECT_EQ(Pending(), 0U);
}

TEST_F(ControlDeviceOperationsTest, ClearOfListsLeavesTheOutputs) {
    Occupy();
    EXPECT_TRUE(operations->FindAvailableSensors("a"));
    EXPECT_TRUE(Switch(true, 1));
    operations->ClearPendingOperations(ControlDeviceActionId::FindAvailableSensors);
    EXPECT_EQ(Pending(), 2U);
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Cleared 1 queued operations of actionId 0."));
    leave.Set();
    EXPECT_EQ(WaitFor(2), (Texts{"first a 1 1", "first a 1 1"}));
}

TEST_F(ControlDeviceOperationsTest, ARequestKeepsItsDeviceUntilItHasRun) {
    Occupy();
    auto other = std::make_shared<FakeOutputDevice>();
    const std::weak_ptr<FakeOutputDevice> watch = other;
    EXPECT_TRUE(operations->SetDigitalOutputState("a", std::move(other), 0, true, true, 0));
    EXPECT_FALSE(watch.expired());
    leave.Set();
    EXPECT_EQ(WaitFor(2), (Texts{"first a 1 1", "first a 1 1"}));
    Tests::WaitForLoop();
    EXPECT_TRUE(watch.expired());
}

TEST_F(ControlDeviceOperationsTest, ARequestWithoutADeviceFails) {
    scanEngine.OnCall([](const std::string& call) {
        if (call.starts_with("SetDigitalOutputState")) {
            Vor::Throw(yERROR_STATE);
        }
    });
    EXPECT_TRUE(operations->SetDigitalOutputState("a", nullptr, 0, true, true, 0));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 0"});
}

TEST_F(ControlDeviceOperationsTest, ARequestThatCantWakeTheLoopIsntQueued) {
    faults.SetHere("AsyncLoop_EnqueueImmediate", -31);
    EXPECT_TEXTLESS_FAILURE(Switch(true), -31);
    EXPECT_EQ(Pending(), 0U);
    EXPECT_TRUE(Switch(true, 7));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 1"});
    EXPECT_EQ(device->NewCalls(), Texts{"2 on 7"});
}

TEST_F(ControlDeviceOperationsTest, WhatIsQueuedWhenTheLoopCouldntBeWokenRuns) {
    faults.SetHere("AsyncLoop_EnqueueImmediate", -31);
    faults.SetHere("yLock_Enter", -32, 1); // the withdrawal of the request
    EXPECT_TEXTLESS_FAILURE(Switch(true, 7), -31);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Exception withdrawing a request"));
    EXPECT_EQ(WaitFor(), Texts{"first a 1 1"});
    EXPECT_EQ(device->NewCalls(), Texts{"2 on 7"});
    EXPECT_EQ(Pending(), 0U);
}

TEST_F(ControlDeviceOperationsTest, ALockThatCannotBeMadeIsThrown) {
    for (unsigned skip : {0U, 1U}) {
        faults.SetHere("yLock_Construct", -31, skip);
        EXPECT_TEXTLESS_FAILURE(std::make_unique<ControlDeviceOperations>(scanEngine), -31);
    }
}

TEST_F(ControlDeviceOperationsTest, DestructionDropsWhatIsQueued) {
    Occupy();
    const Signal& dropped = leave;
    std::shared_ptr<FakeOutputDevice> other(new FakeOutputDevice, [&](FakeOutputDevice* last) {
        EXPECT_EQ(last->NewCalls(), Texts{});
        delete last;
        leave.Set();
    });
    EXPECT_TRUE(operations->SetDigitalOutputState("a", std::move(other), 0, false, true, 1));
    operations->RemoveOpEndEventHandler("a", handle);
    operations.reset();
    EXPECT_TRUE(dropped.IsSet());
    EXPECT_EQ(device->NewCalls(), Texts{"2 on -1"});
}

TEST_F(ControlDeviceOperationsTest, ADeviceThatDoesntReturnDoesntHoldUpDestruction) {
    Occupy();
    operations->RemoveOpEndEventHandler("a", handle);
    operations.reset();
    EXPECT_TRUE(log.Contains(Vor::LevelError, "A call of a device doesn't return. Nothing waits for it any more."));
    leave.Set();
    // The loop goes on, with the operations of others.
    operations = std::make_unique<ControlDeviceOperations>(scanEngine);
    handle = operations->AddOpEndEventHandler("a", Collector("first"));
    EXPECT_TRUE(operations->FindAvailableSensors("a"));
    EXPECT_EQ(WaitFor(), Texts{"first a 0 1"});
}

TEST_F(ControlDeviceOperationsTest, RequestsOfManyThreadsAllEnd) {
    constexpr int Threads = 4;
    constexpr int Requests = 250;
    std::vector<std::thread> callers;
    for (int i = 0; i < Threads; ++i) {
        callers.emplace_back([&] {
            for (int k = 0; k < Requests; ++k) {
                EXPECT_TRUE(Switch(false));
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    EXPECT_EQ(WaitFor(Threads * Requests).size(), static_cast<std::size_t>(Threads * Requests));
    EXPECT_EQ(Pending(), 0U);
    EXPECT_FALSE(log.Contains(LessThanOne));
}
