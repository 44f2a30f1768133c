#include "VorCommon/ProblemsManager.h"
#include "VorCommon/ProblemsTracker.h"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using VorCommon::ProblemsManager;
using VorCommon::ProblemsTracker;

namespace {

std::vector<std::string> Texts(const ProblemsManager& manager) {
    std::vector<std::string> texts;
    for (const auto& problem : manager.List()) {
        texts.push_back(problem.text);
    }
    return texts;
}

using List = std::vector<std::string>;

} // namespace

TEST(ProblemsManagerTest, ListsProblemsInOrderOfAdding) {
    ProblemsManager manager;
    const auto first = manager.Add(1, "Protocol", "Could not start service: %s", "50% off");
    const auto second = manager.Add(0, "VorControl", "%2$s %1$s", "a", "b");
    EXPECT_NE(first, 0U);
    EXPECT_NE(first, second);
    const auto list = manager.List();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].handle, first);
    EXPECT_EQ(list[0].severity, 1);
    EXPECT_EQ(list[0].title, "Protocol");
    EXPECT_EQ(list[0].text, "Could not start service: 50% off");
    EXPECT_EQ(list[1].text, "b a");
}

TEST(ProblemsManagerTest, EqualProblemsAreListedEachTime) {
    ProblemsManager manager;
    EXPECT_NE(manager.Add(0, "t", "same"), manager.Add(0, "t", "same"));
    EXPECT_EQ(manager.List().size(), 2U);
}

TEST(ProblemsManagerTest, RemovesByHandleAndIgnoresUnknownOnes) {
    ProblemsManager manager;
    const auto handle = manager.Add(0, "t", "one");
    manager.Remove(handle + 1);
    EXPECT_EQ(manager.List().size(), 1U);
    manager.Remove(handle);
    manager.Remove(handle);
    EXPECT_TRUE(manager.List().empty());
}

TEST(ProblemsTrackerTest, AProblemHasTheOwnerOfItsTracker) {
    ProblemsManager manager;
    const auto nobodys = manager.Add(1, "t", "nobody's");
    ProblemsTracker tracker(&manager, "modbus");
    tracker.Begin();
    tracker.Register(manager.Add(1, "t", "modbus'"));
    tracker.Register(nobodys + 100);
    tracker.End();
    const auto list = manager.List();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].owner, "");
    EXPECT_EQ(list[1].owner, "modbus");
}

TEST(ProblemsTrackerTest, EndWithdrawsTheProblemsOfEarlierRuns) {
    ProblemsManager manager;
    ProblemsTracker tracker(&manager);
    tracker.Begin();
    tracker.Register(manager.Add(1, "t", "old"));
    tracker.End();
    EXPECT_EQ(Texts(manager), List{"old"});
    tracker.Begin();
    EXPECT_EQ(Texts(manager), List{"old"});
    tracker.Register(manager.Add(1, "t", "new"));
    tracker.End();
    EXPECT_EQ(Texts(manager), List{"new"});
    tracker.Begin();
    tracker.End();
    EXPECT_TRUE(manager.List().empty());
}

TEST(ProblemsTrackerTest, ProblemRegisteredAgainStays) {
    ProblemsManager manager;
    ProblemsTracker tracker(&manager);
    const auto problem = manager.Add(1, "t", "same");
    tracker.Begin();
    tracker.Register(problem);
    tracker.End();
    tracker.Begin();
    tracker.Register(problem);
    tracker.End();
    EXPECT_EQ(Texts(manager), List{"same"});
}

TEST(ProblemsTrackerTest, RunLeftOpenCountsAsAnEarlierOne) {
    ProblemsManager manager;
    ProblemsTracker tracker(&manager);
    tracker.Begin();
    tracker.Register(manager.Add(1, "t", "open"));
    tracker.Begin();
    tracker.Register(manager.Add(1, "t", "second"));
    tracker.End();
    EXPECT_EQ(Texts(manager), List{"second"});
}

TEST(ProblemsTrackerTest, EndWithoutBeginDoesNothing) {
    ProblemsManager manager;
    ProblemsTracker tracker(&manager);
    tracker.Begin();
    tracker.Register(manager.Add(1, "t", "one"));
    tracker.End();
    tracker.End();
    EXPECT_EQ(Texts(manager), List{"one"});
}

TEST(ProblemsTrackerTest, TrackersOfOneManagerAreIndependent) {
    ProblemsManager manager;
    ProblemsTracker instance(&manager);
    ProblemsTracker protocol(&manager);
    manager.Add(0, "t", "nobody's");
    instance.Begin();
    instance.Register(manager.Add(1, "t", "instance's"));
    instance.End();
    protocol.Begin();
    protocol.Register(manager.Add(0, "t", "protocol's"));
    protocol.End();
    protocol.Begin();
    protocol.End();
    EXPECT_EQ(Texts(manager), (List{"nobody's", "instance's"}));
}

TEST(ProblemsTrackerTest, DestructorWithdrawsAllOfItsProblems) {
    ProblemsManager manager;
    {
        ProblemsTracker tracker(&manager);
        tracker.Begin();
        tracker.Register(manager.Add(1, "t", "ended"));
        tracker.End();
        tracker.Begin();
        tracker.Register(manager.Add(1, "t", "open"));
    }
    EXPECT_TRUE(manager.List().empty());
}

TEST(ProblemsTrackerTest, WithoutAManagerNothingHappens) {
    ProblemsTracker tracker(nullptr);
    tracker.Begin();
    tracker.Register(1);
    EXPECT_NO_THROW(tracker.End());
}

TEST(ProblemsTrackerTest, ThreadsMayUseOneTracker) {
    ProblemsManager manager;
    ProblemsTracker tracker(&manager);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 100; ++k) {
                tracker.Begin();
                tracker.Register(manager.Add(0, "t", "text"));
                tracker.End();
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    tracker.Begin();
    tracker.End();
    EXPECT_TRUE(manager.List().empty());
}
