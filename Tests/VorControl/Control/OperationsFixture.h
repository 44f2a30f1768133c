#pragma once

#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeScanEngineInterface.h"
#include "Tests/Support/FakeSystemInterface.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/Signal.h"
#include "Tests/Support/Threads.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorCommon/RuntimeCache.h"
#include "VorControl/Control/ControlProtocolOperations.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Tests {

using Texts = std::vector<std::string>;

inline constexpr const char* DispatcherName = "CtlProtoOp.Disp";

/// Ends of operations, as texts such as "a 1": the name of the handler and the status.
class EndCollector {
public:
    std::function<void(int)> Handler(const std::string& name) {
        return [this, name](int status) { Add(name + " " + std::to_string(status)); };
    }

    void Add(const std::string& end) {
        const std::lock_guard guard(mutex);
        ends.push_back(end);
        changed.notify_all();
    }

    /// The ends since the last call, once there are that many; fewer after the time-out.
    Texts WaitFor(std::size_t count = 1) {
        std::unique_lock guard(mutex);
        changed.wait_for(guard, std::chrono::seconds(20), [&] { return ends.size() >= count; });
        return std::exchange(ends, {});
    }

    std::size_t Count() const {
        const std::lock_guard guard(mutex);
        return ends.size();
    }

private:
    mutable std::mutex mutex;
    std::condition_variable changed;
    Texts ends;
};

/// Operations on a fake system. The test's thread is the main loop's and runs it step by step. The service "a" has a
/// handler from the start.
class OperationsFixture : public testing::Test {
protected:
    using ActionId = VorControl::ControlProtocolOperations::ActionId;

    OperationsFixture() {
        loop.RunReady(); // what an earlier test left there
        Make();
    }
    ~OperationsFixture() override {
        operations.reset();
        EXPECT_EQ(CountThreads(DispatcherName), 0U);
    }

    void Make() {
        operations = std::make_unique<VorControl::ControlProtocolOperations>(system, scanEngine, runtimeCache);
        operations->AddOpEndEventHandler("a", ends.Handler("a"));
    }

    void RunAction(int id) { operations->RunSynchronousOp("a", static_cast<ActionId>(id), {}); }

    /// Runs what was posted, and returns the ends that were reported.
    Texts RunToEnd(std::size_t count = 1) {
        loop.RunReady();
        return ends.WaitFor(count);
    }

    bool SlotIsUsed() {
        const auto failure = FailureOf([&] { operations->RunSynchronousOp("probe", ActionId::EndAtOnce, {}); });
        if (failure) {
            EXPECT_EQ(failure->status, yERROR_BUSY);
            return true;
        }
        auto id = operations->AddOpEndEventHandler("probe", ends.Handler("probe"));
        EXPECT_EQ(RunToEnd(), Texts{"probe 1"});
        operations->RemoveOpEndEventHandler("probe", id);
        return false;
    }

    Faults faults;
    Vor::LogCapture log;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    FakeSystemInterface system;
    FakeScanEngineInterface scanEngine;
    VorCommon::RuntimeCache runtimeCache;
    EndCollector ends;
    std::unique_ptr<VorControl::ControlProtocolOperations> operations;
};

} // namespace Tests
