#include "VorApi/Threads/CallGuard.h"

#include "VorApi/Event.h"

#include <atomic>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

namespace {

class CallGuardTest : public testing::Test {
protected:
    std::unique_ptr<Vor::CallGuard> guard = std::make_unique<Vor::CallGuard>();
    Vor::Event<const std::string&, int> event;
    std::string got;
};

TEST_F(CallGuardTest, PassesTheArgumentsOn) {
    event.Add(guard->Guarded([this](const std::string& text, int number) { got = text + std::to_string(number); }));
    event.Raise("a", 7);
    EXPECT_EQ(got, "a7");
}

TEST_F(CallGuardTest, CallsNothingAfterItsEnd) {
    event.Add(guard->Guarded([this](const std::string& text, int) { got = text; }));
    guard.reset();
    event.Raise("a", 7);
    EXPECT_EQ(got, "");
}

TEST_F(CallGuardTest, AHandlerMayCauseItsOwnCall) {
    event.Add(guard->Guarded([this](const std::string& text, int number) {
        got += text;
        if (number > 0) {
            event.Raise(text, number - 1);
        }
    }));
    event.Raise("a", 2);
    EXPECT_EQ(got, "aaa");
}

TEST_F(CallGuardTest, ItsEndWaitsForACallOnAnotherThread) {
    std::promise<void> entered;
    std::promise<void> mayLeave;
    std::atomic<bool> left = false;
    event.Add(guard->Guarded([&](const std::string&, int) {
        entered.set_value();
        mayLeave.get_future().wait();
        left = true;
    }));
    std::thread calling([this] { event.Raise("a", 7); });
    entered.get_future().wait();
    std::thread releasing([&] { mayLeave.set_value(); });
    guard.reset();
    EXPECT_TRUE(left);
    calling.join();
    releasing.join();
}

} // namespace
