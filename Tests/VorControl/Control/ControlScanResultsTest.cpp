#include "VorControl/Control/ControlScanResults.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/ResultSets.h"
#include "Tests/Support/SetCollector.h"
#include "Tests/Support/Signal.h"
#include "Tests/Support/Threads.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorCore/ResultHub.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <memory_resource>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using VorControl::ControlScanResults;

namespace {

constexpr std::uint64_t Deadline = 20'000'000;

using Sources = std::vector<std::string>;

/// Counts allocations, from any thread.
class CountingResource : public std::pmr::memory_resource {
public:
    std::atomic<int> alive = 0;
    std::atomic<int> allocations = 0;

private:
    void* do_allocate(std::size_t size, std::size_t alignment) override {
        ++alive;
        ++allocations;
        return std::pmr::new_delete_resource()->allocate(size, alignment);
    }
    void do_deallocate(void* memory, std::size_t size, std::size_t alignment) override {
        --alive;
        std::pmr::new_delete_resource()->deallocate(memory, size, alignment);
    }
    bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }
};

} // namespace

/// Without a hub: the tests call `ProcessResultSet` themselves.
class ControlScanResultsTest : public testing::Test {
protected:
    void TearDown() override {
        results.reset();
        EXPECT_EQ(Tests::CountThreads(Tests::ScanResultsThread), 0U);
        for (auto& [id, collector] : collectors) {
            collector.Clear();
        }
        EXPECT_EQ(yObject_LiveCount(), liveBefore);
    }

    Tests::SetCollector& Collect(const std::string& id) {
        ids[id] = results->AddResultHandler(id, collectors[id].Handler());
        return collectors[id];
    }

    Tests::SetCollector& CollectAll(const std::string& id) {
        auto& collector = Collect(id);
        results->SetForwardScanResultsToProtocol(id, true);
        results->SetScanResultsFiltering(id, false);
        return collector;
    }

    Tests::SetCollector& CollectFiltered(const std::string& id, const Sources& sources) {
        auto& collector = Collect(id);
        results->SetForwardScanResultsToProtocol(id, true);
        results->UpdateOutputMap(id, sources);
        return collector;
    }

    void Process(const Sources& sources) { results->ProcessResultSet(Tests::MakeResultSet(sources).Get()); }

    const std::int64_t liveBefore = yObject_LiveCount();
    Tests::Faults faults;
    std::map<std::string, Tests::SetCollector> collectors;
    std::map<std::string, Vor::Event<void*>::CallbackId> ids;
    std::unique_ptr<ControlScanResults> results = std::make_unique<ControlScanResults>(nullptr, nullptr);
};

TEST_F(ControlScanResultsTest, WithoutAHubWarnsAndStaysUsable) {
    Vor::LogCapture log;
    results = std::make_unique<ControlScanResults>(nullptr, nullptr);
    EXPECT_EQ(log.Count(Vor::LevelWarning, "No resultHub to listen to."), 1U);
    auto& collector = CollectAll("a");
    Process({"x"});
    EXPECT_TRUE(collector.WaitFor(1));
}

TEST_F(ControlScanResultsTest, LocksThatCantBeMadeAreThrownWithTheirStatus) {
    for (const unsigned skip : {0U, 1U}) {
        faults.Set("yLock_Construct", -21, skip);
        EXPECT_EQ(Tests::StatusOf([] { const ControlScanResults failing(nullptr, nullptr); }), -21);
        yFault_Clear();
    }
}

TEST_F(ControlScanResultsTest, FirstHandlerStartsTheThreadOfTheService) {
    Vor::LogCapture log;
    Collect("a");
    EXPECT_TRUE(ids["a"].IsSet());
    EXPECT_TRUE(Tests::WaitUntil([] { return Tests::CountThreads(Tests::ScanResultsThread) == 1; }));
    EXPECT_EQ(log.Count(Vor::LevelInfo, "ControlScanResults::AddResultHandler new handler registered for protocol: a"),
              1U);
    auto second = results->AddResultHandler("a", [](void*) {});
    EXPECT_EQ(log.Count(Vor::LevelInfo, "ControlScanResults::AddResultHandler new handler registered for protocol: a"),
              2U);
    EXPECT_EQ(Tests::CountThreads(Tests::ScanResultsThread), 1U);
}

TEST_F(ControlScanResultsTest, DispatcherThatCantBeMadeIsThrownAndNotKept) {
    faults.Set("yThread_Start", -22);
    EXPECT_EQ(Tests::StatusOf([&] { results->AddResultHandler("a", [](void*) {}); }), -22);
    Vor::LogCapture log;
    results->SetForwardScanResultsToProtocol("a", true);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 1U);
}

TEST_F(ControlScanResultsTest, NewHandlerGetsNothingUntilForwardingIsOnAndIsFilteredUntilToldOtherwise) {
    auto& collector = Collect("a");
    results->UpdateOutputMap("a", {"x"});
    Process({"x"});
    results->SetForwardScanResultsToProtocol("a", true);
    Process({"x", "y"});
    results->SetScanResultsFiltering("a", false);
    Process({"y"});
    results->SetForwardScanResultsToProtocol("a", false);
    Process({"x"});
    results->SetForwardScanResultsToProtocol("a", true);
    Process({"z"});
    ASSERT_TRUE(collector.WaitFor(3));
    const auto sets = collector.Sets();
    ASSERT_EQ(sets.size(), 3U);
    EXPECT_EQ(Tests::SourcesOf(sets[0].Get()), Sources{"x"});
    EXPECT_EQ(Tests::SourcesOf(sets[1].Get()), Sources{"y"});
    EXPECT_EQ(Tests::SourcesOf(sets[2].Get()), Sources{"z"});
}

TEST_F(ControlScanResultsTest, WithoutFilteringTheVerySameSetReachesEveryService) {
    auto& first = CollectAll("a");
    auto& second = CollectAll("b");
    const auto set = Tests::MakeResultSet({"x", "y"});
    results->ProcessResultSet(set.Get());
    ASSERT_TRUE(first.WaitFor(1));
    ASSERT_TRUE(second.WaitFor(1));
    EXPECT_EQ(first.Sets().front().Get(), set.Get());
    EXPECT_EQ(second.Sets().front().Get(), set.Get());
}

TEST_F(ControlScanResultsTest, WithFilteringEachServiceGetsItsOwnSetInOrderOfTheInput) {
    auto& first = CollectFiltered("a", {"z", "x"});
    auto& second = CollectFiltered("b", {"y", "z"});
    const auto set = Tests::MakeResultSet({"x", "y", "z", "x"});
    results->ProcessResultSet(set.Get());
    ASSERT_TRUE(first.WaitFor(1));
    ASSERT_TRUE(second.WaitFor(1));
    const auto firstSet = first.Sets().front();
    const auto secondSet = second.Sets().front();
    EXPECT_EQ(Tests::SourcesOf(firstSet.Get()), (Sources{"x", "z", "x"}));
    EXPECT_EQ(Tests::SourcesOf(secondSet.Get()), (Sources{"y", "z"}));
    EXPECT_NE(firstSet.Get(), set.Get());
    EXPECT_NE(firstSet.Get(), secondSet.Get());
    const ResultItem original = ResultSet_At(set.Get(), 3);
    const ResultItem forwarded = ResultSet_At(firstSet.Get(), 2);
    EXPECT_EQ(ResultItem_MsgInfo(forwarded), ResultItem_MsgInfo(original));
    EXPECT_EQ(ResultItem_ResultInfo(forwarded), ResultItem_ResultInfo(original));
    EXPECT_EQ(yObject_ShareCount(ResultItem_MsgInfo(original)), 2);
}

TEST_F(ControlScanResultsTest, SetWithoutAPassingItemMakesNoEntryAndNoCall) {
    auto& collector = CollectFiltered("a", {"x"});
    Process({"y", "z"});
    Process({"y", "x"});
    ASSERT_TRUE(collector.WaitFor(1));
    ASSERT_EQ(collector.Sets().size(), 1U);
    EXPECT_EQ(Tests::SourcesOf(collector.Sets().front().Get()), Sources{"x"});
}

TEST_F(ControlScanResultsTest, FilteringServiceWithoutIdsGetsNothing) {
    auto& unknown = Collect("a");
    results->SetForwardScanResultsToProtocol("a", true);
    auto& empty = CollectFiltered("b", {});
    Process({"x"});
    results->UpdateOutputMap("a", {"y"});
    results->UpdateOutputMap("b", {"y"});
    Process({"y"});
    ASSERT_TRUE(unknown.WaitFor(1));
    ASSERT_TRUE(empty.WaitFor(1));
    EXPECT_EQ(unknown.Sets().size(), 1U);
    EXPECT_EQ(empty.Sets().size(), 1U);
    EXPECT_EQ(Tests::SourcesOf(empty.Sets().front().Get()), Sources{"y"});
}

TEST_F(ControlScanResultsTest, OutputMapIsReplacedAndAnIdGivenTwiceCountsOnce) {
    auto& collector = CollectFiltered("a", {"x", "x"});
    Process({"x", "y"});
    results->UpdateOutputMap("a", {"y", "y", "z"});
    Process({"x", "y"});
    ASSERT_TRUE(collector.WaitFor(2));
    const auto sets = collector.Sets();
    EXPECT_EQ(Tests::SourcesOf(sets[0].Get()), Sources{"x"});
    EXPECT_EQ(Tests::SourcesOf(sets[1].Get()), Sources{"y"});
}

TEST_F(ControlScanResultsTest, OutputMapSurvivesTheHandlersButTheFlagsDoNot) {
    CollectFiltered("a", {"x"});
    results->SetScanResultsFiltering("a", false);
    results->RemoveResultHandler("a", ids["a"]);
    auto& collector = Collect("a");
    Process({"x"});
    results->SetForwardScanResultsToProtocol("a", true);
    Process({"x", "y"});
    ASSERT_TRUE(collector.WaitFor(1));
    ASSERT_EQ(collector.Sets().size(), 1U);
    EXPECT_EQ(Tests::SourcesOf(collector.Sets().front().Get()), Sources{"x"});
}

TEST_F(ControlScanResultsTest, FlagsOfAServiceWithoutHandlerAreLoggedAndLost) {
    Vor::LogCapture log;
    results->SetForwardScanResultsToProtocol("a", true);
    EXPECT_EQ(log.Count(Vor::LevelError, "Cannot set scan results forwarding until protocol a is enabled"), 1U);
    results->SetScanResultsFiltering("a", false);
    EXPECT_EQ(log.Count(Vor::LevelError, "Cannot set scan results filtering until protocol a is enabled"), 1U);
    auto& collector = Collect("a");
    Process({"x"});
    results->SetForwardScanResultsToProtocol("a", true);
    results->SetScanResultsFiltering("a", false);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 2U);
    Process({"y"});
    ASSERT_TRUE(collector.WaitFor(1));
    ASSERT_EQ(collector.Sets().size(), 1U);
    EXPECT_EQ(Tests::SourcesOf(collector.Sets().front().Get()), Sources{"y"});
}

TEST_F(ControlScanResultsTest, RemovalOfAnUnknownServiceOnlyWarns) {
    Vor::LogCapture log;
    Vor::Event<void*>::CallbackId id;
    results->RemoveResultHandler("a", id);
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Failed to find dispatcher of protocol: a."), 1U);
    EXPECT_EQ(log.Records().size(), 1U);
}

TEST_F(ControlScanResultsTest, RemovalOfTheLastHandlerStopsTheThreadBeforeItReturns) {
    Collect("a");
    ASSERT_TRUE(Tests::WaitUntil([] { return Tests::CountThreads(Tests::ScanResultsThread) == 1; }));
    Vor::LogCapture log;
    results->RemoveResultHandler("a", ids["a"]);
    EXPECT_EQ(Tests::CountThreads(Tests::ScanResultsThread), 0U);
    EXPECT_FALSE(ids["a"].IsSet());
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].level, Vor::LevelInfo);
    EXPECT_EQ(records[0].text, "ControlScanResults::dispatcher removed for protocol: a");
    EXPECT_EQ(records[1].level, Vor::LevelInfo);
    EXPECT_EQ(records[1].text, "ControlScanResults::RemoveResultHandler handler removed for protocol: a");
}

TEST_F(ControlScanResultsTest, RemovalOfOneOfTwoHandlersKeepsTheDispatcher) {
    auto& collector = CollectAll("a");
    auto second = results->AddResultHandler("a", [](void*) { FAIL() << "was removed"; });
    Vor::LogCapture log;
    results->RemoveResultHandler("a", second);
    ASSERT_EQ(log.Records().size(), 1U);
    EXPECT_EQ(log.Records().front().text, "ControlScanResults::RemoveResultHandler handler removed for protocol: a");
    Process({"x"});
    EXPECT_TRUE(collector.WaitFor(1));
}

TEST_F(ControlScanResultsTest, EmptyHandlerGivesAnIdThatIsNotSetAndItsRemovalTakesTheDispatcherAway) {
    auto id = results->AddResultHandler("a", nullptr);
    EXPECT_FALSE(id.IsSet());
    results->RemoveResultHandler("a", id);
    EXPECT_EQ(Tests::CountThreads(Tests::ScanResultsThread), 0U);
}

TEST_F(ControlScanResultsTest, RemovalFromOutsideWaitsForTheRunningHandlerAndDiscardsWhatIsQueued) {
    Tests::Signal entered;
    Tests::Signal leave;
    std::atomic<int> calls = 0;
    auto id = results->AddResultHandler("a", [&](void*) {
        ++calls;
        entered.Set();
        leave.Wait();
    });
    results->SetForwardScanResultsToProtocol("a", true);
    results->SetScanResultsFiltering("a", false);
    Process({"x"});
    ASSERT_TRUE(entered.Wait());
    const auto queued = Tests::MakeResultSet({"y"});
    results->ProcessResultSet(queued.Get());
    EXPECT_EQ(yObject_ShareCount(queued.Get()), 2);
    Tests::Signal removed;
    std::thread remover([&] {
        results->RemoveResultHandler("a", id);
        removed.Set();
    });
    EXPECT_FALSE(removed.IsSet());
    leave.Set();
    EXPECT_TRUE(removed.Wait());
    remover.join();
    EXPECT_EQ(Tests::CountThreads(Tests::ScanResultsThread), 0U);
    EXPECT_EQ(yObject_ShareCount(queued.Get()), 1);
    EXPECT_GE(calls, 1);
}

TEST_F(ControlScanResultsTest, HandlerMayReplaceItsOutputMap) {
    Tests::SetCollector collector;
    Vor::Event<void*>::CallbackId id;
    id = results->AddResultHandler("a", [&](void* batch) {
        results->UpdateOutputMap("a", {"y"});
        collector.Append(batch);
    });
    results->SetForwardScanResultsToProtocol("a", true);
    results->UpdateOutputMap("a", {"x"});
    Process({"x", "y"});
    ASSERT_TRUE(collector.WaitFor(1));
    Process({"x", "y"});
    ASSERT_TRUE(collector.WaitFor(2));
    EXPECT_EQ(Tests::SourcesOf(collector.Sets()[1].Get()), Sources{"y"});
    results->RemoveResultHandler("a", id);
}

TEST_F(ControlScanResultsTest, SimulatedSetsReachNobodyWhateverTheFlags) {
    auto& collector = CollectAll("a");
    Vor::LogCapture log;
    const auto simulated = Tests::MakeResultSet({"x"});
    ResultSet_SetFromSimulation(simulated.Get(), true);
    results->ProcessResultSet(simulated.Get());
    EXPECT_EQ(log.Count(Vor::LevelInfo, "Simulation data filtered out."), 1U);
    EXPECT_EQ(yObject_ShareCount(simulated.Get()), 1);
    Process({"y"});
    ASSERT_TRUE(collector.WaitFor(1));
    EXPECT_EQ(Tests::SourcesOf(collector.Sets().front().Get()), Sources{"y"});
}

TEST_F(ControlScanResultsTest, EmptySetsAreIgnoredSilentlyEvenSimulatedOnes) {
    CollectAll("a");
    Vor::LogCapture log;
    const auto empty = Tests::MakeResultSet({});
    results->ProcessResultSet(empty.Get());
    ResultSet_SetFromSimulation(empty.Get(), true);
    results->ProcessResultSet(empty.Get());
    EXPECT_TRUE(log.Records().empty());
    EXPECT_EQ(yObject_ShareCount(empty.Get()), 1);
}

TEST_F(ControlScanResultsTest, WithoutDispatchersASetHasNoEffect) {
    Vor::LogCapture log;
    const auto set = Tests::MakeResultSet({"x"});
    results->ProcessResultSet(set.Get());
    EXPECT_EQ(yObject_ShareCount(set.Get()), 1);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ControlScanResultsTest, SetThatCantBeFilteredIsThrownAndTheRemainingServicesMissIt) {
    for (const char* step : {"ResultSet_Construct", "ResultSet_Add"}) {
        auto& first = CollectFiltered("a", {"x"});
        auto& second = CollectFiltered("b", {"x"});
        auto& third = CollectFiltered("c", {"x"});
        const auto lost = Tests::MakeResultSet({"x", "y"});
        faults.Set(step, -23, 1);
        EXPECT_EQ(Tests::StatusOf([&] { results->ProcessResultSet(lost.Get()); }), -23) << step;
        ASSERT_TRUE(first.WaitFor(1));
        Process({"x"});
        ASSERT_TRUE(second.WaitFor(1));
        ASSERT_TRUE(third.WaitFor(1));
        ASSERT_TRUE(first.WaitFor(2));
        EXPECT_EQ(second.Sets().size(), 1U) << step;
        EXPECT_EQ(third.Sets().size(), 1U) << step;
        for (const auto& [id, collector] : collectors) {
            results->RemoveResultHandler(id, ids[id]);
            collectors[id].Clear();
        }
        EXPECT_EQ(yObject_ShareCount(ResultItem_MsgInfo(ResultSet_At(lost.Get(), 0))), 1) << step;
    }
}

TEST_F(ControlScanResultsTest, FailedAppendIsThrownAndTheRemainingServicesMissTheSet) {
    auto& first = CollectAll("a");
    auto& second = CollectAll("b");
    const auto lost = Tests::MakeResultSet({"x"});
    faults.Set("yArrayList_Add", yERROR_FULL);
    EXPECT_EQ(Tests::StatusOf([&] { results->ProcessResultSet(lost.Get()); }), yERROR_FULL);
    EXPECT_EQ(yObject_ShareCount(lost.Get()), 1);
    Process({"y"});
    ASSERT_TRUE(first.WaitFor(1));
    ASSERT_TRUE(second.WaitFor(1));
    EXPECT_EQ(second.Sets().size(), 1U);
}

TEST_F(ControlScanResultsTest, LockThatCantBeEnteredIsThrownWithItsStatus) {
    CollectFiltered("a", {"x"});
    const auto set = Tests::MakeResultSet({"x"});
    for (const unsigned skip : {0U, 1U, 2U}) {
        faults.SetHere("yLock_Enter", -24, skip);
        EXPECT_EQ(Tests::StatusOf([&] { results->ProcessResultSet(set.Get()); }), -24) << skip;
        yFault_Clear();
    }
    Vor::Event<void*>::CallbackId id;
    const std::vector<std::function<void()>> calls{
        [&] { results->AddResultHandler("a", [](void*) {}); },
        [&] { results->RemoveResultHandler("a", id); },
        [&] { results->UpdateOutputMap("a", {}); },
        [&] { results->SetForwardScanResultsToProtocol("a", true); },
        [&] { results->SetScanResultsFiltering("a", true); },
    };
    for (const auto& call : calls) {
        faults.SetHere("yLock_Enter", -25);
        EXPECT_EQ(Tests::StatusOf(call), -25);
    }
}

TEST_F(ControlScanResultsTest, SlowServiceLosesNothingAndDelaysNoOther) {
    Tests::Signal leave;
    Tests::SetCollector slow;
    auto id = results->AddResultHandler("slow", [&](void* batch) {
        leave.Wait();
        slow.Append(batch);
    });
    results->SetForwardScanResultsToProtocol("slow", true);
    results->SetScanResultsFiltering("slow", false);
    auto& quick = CollectAll("quick");
    for (int i = 0; i < 1000; ++i) {
        Process({std::to_string(i)});
    }
    EXPECT_TRUE(quick.WaitFor(1000));
    EXPECT_TRUE(slow.Sets().empty());
    leave.Set();
    ASSERT_TRUE(slow.WaitFor(1000));
    const auto sets = slow.Sets();
    for (std::size_t i = 0; i < 1000; ++i) {
        EXPECT_EQ(Tests::SourcesOf(sets[i].Get()), Sources{std::to_string(i)});
    }
    results->RemoveResultHandler("slow", id);
}

TEST_F(ControlScanResultsTest, FilteredSetsAndListsComeFromTheAllocator) {
    CountingResource resource;
    {
        ControlScanResults allocating(nullptr, static_cast<std::pmr::memory_resource*>(&resource));
        Tests::SetCollector collector;
        auto id = allocating.AddResultHandler("a", collector.Handler());
        EXPECT_EQ(resource.allocations, 2);
        allocating.SetForwardScanResultsToProtocol("a", true);
        allocating.UpdateOutputMap("a", {"x"});
        allocating.ProcessResultSet(Tests::MakeResultSet({"x"}).Get());
        EXPECT_EQ(resource.allocations, 3);
        ASSERT_TRUE(collector.WaitFor(1));
        allocating.RemoveResultHandler("a", id);
    }
    EXPECT_EQ(resource.alive, 0);
}

TEST_F(ControlScanResultsTest, ListensToTheHubWhileItLives) {
    VorCore::ResultHub hub;
    Vor::LogCapture log;
    results = std::make_unique<ControlScanResults>(&hub, nullptr);
    EXPECT_EQ(log.Count(Vor::LevelInfo, "ControlScanResults constructed."), 1U);
    EXPECT_EQ(hub.ResultHandlerCount(), 1U);
    auto& collector = CollectAll("a");
    hub.Publish(Tests::MakeResultSet({"x"}).Get());
    EXPECT_TRUE(collector.WaitFor(1));
    EXPECT_TRUE(hub.Drain(Deadline));
    results.reset();
    EXPECT_EQ(hub.ResultHandlerCount(), 0U);
    EXPECT_EQ(Tests::CountThreads(Tests::ScanResultsThread), 0U);
}

TEST_F(ControlScanResultsTest, FailureOfTheHubAtTheEndIsLoggedAndSwallowed) {
    VorCore::ResultHub hub;
    results = std::make_unique<ControlScanResults>(&hub, nullptr);
    Vor::LogCapture log;
    faults.Set("ResultHub_RemoveResultHandler", -26);
    results.reset();
    EXPECT_GE(log.CountLevel(Vor::LevelError), 2U);
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown in destructor"), 1U);
}

TEST_F(ControlScanResultsTest, ServicesComeAndGoWhileTheHubPublishes) {
    VorCore::ResultHub hub;
    results = std::make_unique<ControlScanResults>(&hub, nullptr);
    std::atomic<bool> stop = false;
    std::thread producer([&] {
        const auto set = Tests::MakeResultSet({"x", "y"});
        while (!stop) {
            hub.Publish(set.Get());
            hub.Drain(Deadline);
        }
    });
    std::vector<std::thread> services;
    for (const std::string id : {"a", "b"}) {
        services.emplace_back([this, id] {
            for (int i = 0; i < 20; ++i) {
                Tests::SetCollector collector;
                auto callback = results->AddResultHandler(id, collector.Handler());
                results->UpdateOutputMap(id, {"x"});
                results->SetForwardScanResultsToProtocol(id, true);
                EXPECT_TRUE(collector.WaitFor(1));
                results->SetScanResultsFiltering(id, false);
                results->RemoveResultHandler(id, callback);
            }
        });
    }
    for (auto& service : services) {
        service.join();
    }
    stop = true;
    producer.join();
    results.reset();
}
