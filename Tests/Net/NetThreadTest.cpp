#include "Net/NetThread.h"

#include "Tests/Support/Threads.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Net {
namespace {

using namespace std::chrono_literals;

TEST(NetThread, HasItsNameWhileItIsThere) {
    {
        NetThread thread("NetTest");
        thread.Call([] {});
        EXPECT_EQ(thread.Name(), "NetTest");
        EXPECT_EQ(Tests::CountThreads("NetTest"), 1u);
    }
    EXPECT_EQ(Tests::CountThreads("NetTest"), 0u);
}

TEST(NetThread, RunsCallsAndReturnsOrThrowsWhatTheyDo) {
    NetThread thread("NetTest");
    EXPECT_FALSE(thread.IsCurrent());
    EXPECT_TRUE(thread.Call([&] { return thread.IsCurrent(); }));
    EXPECT_EQ(thread.Call([] { return std::make_unique<int>(7); }).operator*(), 7);
    EXPECT_THROW(thread.Call([] { throw std::out_of_range("far"); }), std::out_of_range);
    EXPECT_EQ(thread.Call([&] { return thread.Call([] { return 3; }); }), 3) << "a call on the thread itself";
}

TEST(NetThread, RefusesWhatMustRunOnIt) {
    NetThread thread("NetTest");
    thread.Call([&] { thread.AssertCurrent(); });
    try {
        thread.AssertCurrent();
        FAIL() << "it is another thread";
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_STATE);
        EXPECT_STREQ(e.what(), "called on another thread than \"NetTest\"");
    }
}

TEST(NetThread, RunsPostedWorkInItsOrder) {
    NetThread thread("NetTest");
    std::vector<int> order;
    for (int i = 0; i < 100; ++i) {
        thread.Post([&order, i] { order.push_back(i); });
    }
    thread.Call([] {});
    ASSERT_EQ(order.size(), 100u);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(NetThread, GoesOnAfterWorkThatThrows) {
    NetThread thread("NetTest");
    const Vor::LogCapture log;
    thread.Post([] { throw std::runtime_error("posted"); });
    thread.Post([] { throw 7; });
    EXPECT_EQ(thread.Call([] { return 1; }), 1);
    EXPECT_EQ(log.Count(Vor::LevelError, "unknown exception"), 1u);
}

TEST(NetThread, RepeatsWorkUntilItEnds) {
    std::atomic<unsigned> runs = 0;
    auto thread = std::make_unique<NetThread>("NetTest");
    const auto begin = std::chrono::steady_clock::now();
    thread->Repeat(10ms, [&] {
        if (++runs == 2) {
            throw std::runtime_error("the second one");
        }
    });
    EXPECT_TRUE(Tests::WaitUntil([&] { return runs >= 5; })) << "also after one that threw";
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 40ms) << "the first at once, then one each period";
    thread.reset();
    const unsigned last = runs;
    std::this_thread::yield();
    EXPECT_EQ(runs, last);
}

} // namespace
} // namespace Net
