#include "Vor/AsyncLoop.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/Signal.h"
#include "Tests/Support/Threads.h"
#include "Tests/Support/WaitForLoop.h"
#include "Vor/IAsyncEventReceiver.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

using Tests::Signal;
using Tests::WaitForLoop;
using Vor::AsyncLoop;

namespace {

/// Registered while it lives. Does what a test says in each event.
class Receiver : public Vor::IAsyncEventReceiver {
public:
    ~Receiver() { AsyncLoop::MainLoop().DeregisterHandler(handle); }

    void ProcessEvent() override {
        action();
        const std::lock_guard guard(mutex);
        ++events;
        changed.notify_all();
    }

    void Enqueue() const { AsyncLoop::MainLoop().EnqueueImmediate(handle); }

    /// False when there were fewer events after the time-out.
    bool WaitFor(int count) {
        std::unique_lock guard(mutex);
        return changed.wait_for(guard, std::chrono::seconds(20), [&] { return events >= count; });
    }

    int Events() const {
        const std::lock_guard guard(mutex);
        return events;
    }

    std::function<void()> action = [] {};
    const AsyncLoop::ReceiverHandle handle = AsyncLoop::MainLoop().RegisterHandler(*this);

private:
    mutable std::mutex mutex;
    std::condition_variable changed;
    int events = 0;
};

} // namespace

TEST(AsyncLoopTest, EachEnqueueCausesOneEventOnTheLoopsThread) {
    const Vor::MainLoop mainLoop(Vor::MainLoop::Mode::Manual);
    Receiver receiver;
    EXPECT_NE(receiver.handle, AsyncLoop::NoReceiver);
    std::atomic<bool> onMainLoop{true};
    std::atomic<std::size_t> threads{0};
    receiver.action = [&] {
        onMainLoop = AsyncLoop::OnMainLoop();
        threads = Tests::CountThreads("DeviceLoop");
    };
    receiver.Enqueue();
    receiver.Enqueue();
    ASSERT_TRUE(receiver.WaitFor(2));
    EXPECT_FALSE(onMainLoop);
    EXPECT_EQ(threads, 1U);
    WaitForLoop();
    EXPECT_EQ(receiver.Events(), 2);
}

TEST(AsyncLoopTest, AnEventThatIsEnqueuedInAnEventComesLater) {
    Receiver receiver;
    int depth = 0;
    int deepest = 0;
    receiver.action = [&] {
        deepest = std::max(deepest, ++depth);
        if (receiver.Events() == 0) {
            receiver.Enqueue();
        }
        --depth;
    };
    receiver.Enqueue();
    ASSERT_TRUE(receiver.WaitFor(2));
    EXPECT_EQ(deepest, 1);
}

TEST(AsyncLoopTest, EventsOfSeveralReceiversRunOneAfterTheOtherInOrder) {
    std::mutex mutex;
    std::string order;
    Receiver first;
    Receiver second;
    const auto note = [&](char name) {
        const std::lock_guard guard(mutex);
        order += name;
    };
    first.action = [&] { note('a'); };
    second.action = [&] { note('b'); };
    first.Enqueue();
    second.Enqueue();
    first.Enqueue();
    ASSERT_TRUE(first.WaitFor(2));
    const std::lock_guard guard(mutex);
    EXPECT_EQ(order, "aba");
}

TEST(AsyncLoopTest, EnqueueOfAnUnknownHandleThrowsNotFound) {
    EXPECT_EQ(Tests::StatusOf([] { AsyncLoop::MainLoop().EnqueueImmediate(AsyncLoop::NoReceiver); }), yERROR_NOT_FOUND);
    EXPECT_TRUE(AsyncLoop::MainLoop().DeregisterHandler(AsyncLoop::NoReceiver));
}

TEST(AsyncLoopTest, AnEnqueueThatFailsCausesNoEvent) {
    Tests::Faults faults;
    Receiver receiver;
    faults.SetHere("AsyncLoop_EnqueueImmediate", -31);
    EXPECT_EQ(Tests::StatusOf([&] { receiver.Enqueue(); }), -31);
    WaitForLoop();
    EXPECT_EQ(receiver.Events(), 0);
}

TEST(AsyncLoopTest, NoEventComesAfterDeregistration) {
    Signal entered;
    Signal leave;
    Receiver busy;
    busy.action = [&] {
        entered.Set();
        leave.Wait();
    };
    Receiver receiver;
    busy.Enqueue();
    ASSERT_TRUE(entered.Wait());
    receiver.Enqueue();
    EXPECT_TRUE(AsyncLoop::MainLoop().DeregisterHandler(receiver.handle));
    leave.Set();
    WaitForLoop();
    EXPECT_EQ(receiver.Events(), 0);
}

TEST(AsyncLoopTest, ReceiverMayDeregisterItselfInItsEvent) {
    Receiver receiver;
    receiver.action = [&] { AsyncLoop::MainLoop().DeregisterHandler(receiver.handle); };
    Signal entered;
    Signal leave;
    Receiver busy;
    busy.action = [&] {
        entered.Set();
        leave.Wait();
    };
    busy.Enqueue();
    ASSERT_TRUE(entered.Wait());
    receiver.Enqueue();
    receiver.Enqueue();
    leave.Set();
    WaitForLoop();
    EXPECT_EQ(receiver.Events(), 1);
}

TEST(AsyncLoopTest, DeregistrationWaitsForARunningEvent) {
    Signal entered;
    Signal leave;
    std::atomic<bool> left{false};
    Receiver receiver;
    receiver.action = [&] {
        entered.Set();
        leave.Wait();
        left = true;
    };
    receiver.Enqueue();
    ASSERT_TRUE(entered.Wait());
    std::thread helper([&] { leave.Set(); });
    EXPECT_TRUE(AsyncLoop::MainLoop().DeregisterHandler(receiver.handle));
    EXPECT_TRUE(left);
    helper.join();
}

TEST(AsyncLoopTest, DeregistrationReportsAnEventThatStillRunsAtItsTimeOut) {
    Signal entered;
    Signal leave;
    Receiver receiver;
    receiver.action = [&] {
        entered.Set();
        leave.Wait();
    };
    receiver.Enqueue();
    ASSERT_TRUE(entered.Wait());
    EXPECT_FALSE(AsyncLoop::MainLoop().DeregisterHandler(receiver.handle, 1000));
    leave.Set();
    EXPECT_TRUE(receiver.WaitFor(1));
    WaitForLoop();
}

TEST(AsyncLoopTest, FailingEventDoesntEndTheLoop) {
    const Vor::LogCapture log;
    Receiver receiver;
    receiver.action = [] { throw std::runtime_error("event"); };
    receiver.Enqueue();
    WaitForLoop();
    receiver.action = [] { throw 5; };
    receiver.Enqueue();
    WaitForLoop();
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Exception in an event of the device loop"));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "unknown exception"));
}
