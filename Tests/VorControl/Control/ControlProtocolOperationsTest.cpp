#include "VorControl/Control/ControlProtocolOperations.h"

#include "Tests/VorControl/Control/OperationsFixture.h"
#include "Vor/Exception.h"
#include "yApi/yTime.h"

#include <pthread.h>
#include <stdexcept>
#include <thread>

using Tests::Texts;
using VorControl::ControlProtocolOperations;

namespace {

class ControlProtocolOperationsTest : public Tests::OperationsFixture {};

yIpConfig Config() {
    yIpConfig config;
    config.address[15] = 1;
    config.mask[0] = 255;
    config.gateway[3] = 7;
    return config;
}

struct Row {
    unsigned id;
    std::function<void(ControlProtocolOperations&, const std::string&)> start;
    Texts systemCalls;
    Texts scanEngineCalls;
};

std::vector<Row> Rows() {
    using Operations = ControlProtocolOperations;
    using Id = const std::string&;
    return {
        {0, [](Operations& o, Id id) { o.StartScan(id); }, {"Start"}, {}},
        {1, [](Operations& o, Id id) { o.StopScan(id); }, {"Stop"}, {}},
        {3, [](Operations& o, Id id) { o.ClearAlignment(id, "s1"); }, {}, {"ClearAlignment s1"}},
        {3, [](Operations& o, Id id) { o.ClearAlignment(id, ""); }, {}, {"ClearAlignment "}},
        {4, [](Operations& o, Id id) { o.LoadJob(id, "second"); }, {"LoadJob second"}, {}},
        {5, [](Operations& o, Id id) { o.SoftwareTrigger(id, "s1"); }, {}, {"SoftwareTrigger s1"}},
        {5, [](Operations& o, Id id) { o.SoftwareTrigger(id, ""); }, {}, {"SoftwareTrigger "}},
        {6, [](Operations& o, Id id) { o.SetNextIpConfig(id, Config(), true); }, {"SetNextIpConfig true"}, {}},
        {6, [](Operations& o, Id id) { o.SetNextIpConfig(id, Config(), false); }, {"SetNextIpConfig false"}, {}},
        {7, [](Operations& o, Id id) { o.FactoryRestore(id); }, {"FactoryRestore"}, {}},
        {8, [](Operations& o, Id id) { o.Restart(id); }, {"Restart"}, {}},
        {9, [](Operations& o, Id id) { o.BlinkLed(id, true, true, true); }, {"BlinkLed"}, {}},
        {9, [](Operations& o, Id id) { o.BlinkLed(id, true, false, false); }, {"BlinkLed"}, {}},
        {9, [](Operations& o, Id id) { o.BlinkLed(id, false, true, false); }, {}, {"BlinkLed true false"}},
        {9, [](Operations& o, Id id) { o.BlinkLed(id, false, false, true); }, {}, {"BlinkLed false true"}},
        {10,
         [](Operations& o, Id id) { o.SetLocalNodeNtpHost(id, "time.host", true); },
         {"SetLocalNodeNtpHost time.host true"},
         {}},
        {10, [](Operations& o, Id id) { o.SetLocalNodeNtpHost(id, "", false); }, {"SetLocalNodeNtpHost  false"}, {}},
        {11,
         [](Operations& o, Id id) { o.SetLocalNodeDateTime(id, -7000000000000); },
         {"SetLocalNodeDateTime -7000000000000"},
         {}}};
}

TEST_F(ControlProtocolOperationsTest, KeepsWhenTheLastTriggerOfEachServiceWasAccepted) {
    operations->StartScan("a");
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_EQ(operations->BeginOfLastTrigger("a"), 0U) << "a start is no trigger";
    std::uint64_t action = 0;
    scanEngine.OnCall([&](const std::string&) { action = yTime_Monotonic(); });
    const std::uint64_t before = yTime_Monotonic();
    operations->SoftwareTrigger("a", "");
    const std::uint64_t begin = operations->BeginOfLastTrigger("a");
    EXPECT_GE(begin, before);
    EXPECT_LE(begin, yTime_Monotonic());
    EXPECT_TRUE(Tests::FailureOf([&] { operations->SoftwareTrigger("b", ""); })) << "the other one isn't finished";
    EXPECT_EQ(operations->BeginOfLastTrigger("b"), 0U) << "a refused one doesn't count";
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_LE(begin, action);
    operations->SoftwareTrigger("b", "");
    EXPECT_GE(operations->BeginOfLastTrigger("b"), action) << "after the action of the one before";
    EXPECT_EQ(operations->BeginOfLastTrigger("a"), begin);
    loop.RunReady();
}

TEST_F(ControlProtocolOperationsTest, EachOperationActsOnceOnTheMainLoopAndEndsWithSuccess) {
    for (const Row& row : Rows()) {
        SCOPED_TRACE(row.id);
        row.start(*operations, "a");
        EXPECT_TRUE(system.NewCalls().empty());
        EXPECT_TRUE(scanEngine.NewCalls().empty());
        EXPECT_EQ(RunToEnd(), Texts{"a 1"});
        EXPECT_EQ(system.NewCalls(), row.systemCalls);
        EXPECT_EQ(scanEngine.NewCalls(), row.scanEngineCalls);
    }
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlProtocolOperationsTest, EachOperationIsRejectedByItsNumberWhileAnotherIsUnderWay) {
    RunAction(203);
    loop.RunReady();
    for (const Row& row : Rows()) {
        const std::string text =
            "Protocol b operation " + std::to_string(row.id) + " rejected because another operation is in progress";
        EXPECT_FAILURE(row.start(*operations, "b"), yERROR_BUSY, text);
    }
    EXPECT_FAILURE(operations->Alignment("b", ""), yERROR_BUSY,
                   "Protocol b operation 2 rejected because another operation is in progress");
    EXPECT_EQ(loop.RunReady(), 0U);
    EXPECT_TRUE(system.NewCalls().empty());
    EXPECT_TRUE(scanEngine.NewCalls().empty());
}

TEST_F(ControlProtocolOperationsTest, TheNetworkSettingsArriveAsTheyWereGiven) {
    operations->SetNextIpConfig("a", Config(), true);
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_EQ(system.ipConfig, Config());
}

TEST_F(ControlProtocolOperationsTest, ASecondOperationIsRejectedAndTheFirstGoesOn) {
    operations->LoadJob("a", "job");
    for (const std::string protocol : {"a", "b"}) {
        EXPECT_FAILURE(operations->StartScan(protocol), yERROR_BUSY,
                       "Protocol " + protocol + " operation 0 rejected because another operation is in progress");
    }
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_EQ(system.NewCalls(), Texts{"LoadJob job"});
    EXPECT_FALSE(SlotIsUsed());
}

TEST_F(ControlProtocolOperationsTest, TheActionRunsOnTheMainLoopAndTheHandlerOnTheDispatcher) {
    std::thread::id acted;
    system.OnCall([&](const std::string&) { acted = std::this_thread::get_id(); });
    std::string handled;
    Tests::Signal done;
    operations->AddOpEndEventHandler("b", [&](int) {
        char name[16] = {};
        pthread_getname_np(pthread_self(), name, sizeof(name));
        handled = name;
        done.Set();
    });
    std::thread([&] { operations->StartScan("b"); }).join();
    loop.RunReady();
    ASSERT_TRUE(done.Wait());
    EXPECT_EQ(acted, std::this_thread::get_id());
    EXPECT_EQ(handled, Tests::DispatcherName);
}

TEST_F(ControlProtocolOperationsTest, AMissingScannerIdIsRefusedBeforeTheSlotIsClaimed) {
    EXPECT_FAILURE(operations->Alignment("a", nullptr), yERROR_PARAMETER, "Missing scanner id parameter for action 2");
    EXPECT_FAILURE(operations->ClearAlignment("a", nullptr), yERROR_PARAMETER,
                   "Missing scanner id parameter for action 3");
    EXPECT_FAILURE(operations->SoftwareTrigger("a", nullptr), yERROR_PARAMETER,
                   "Missing scanner id parameter for action 5");
    EXPECT_FALSE(SlotIsUsed());
    RunAction(203);
    EXPECT_FAILURE(operations->Alignment("a", nullptr), yERROR_PARAMETER, "Missing scanner id parameter for action 2");
}

TEST_F(ControlProtocolOperationsTest, AMissingOrEmptyJobNameIsRefusedBeforeTheSlotIsClaimed) {
    EXPECT_FAILURE(operations->LoadJob("a", nullptr), yERROR_PARAMETER, "No job name for action 4");
    EXPECT_FAILURE(operations->LoadJob("a", ""), yERROR_PARAMETER, "Empty job name for action 4");
    EXPECT_FALSE(SlotIsUsed());
    RunAction(203);
    EXPECT_FAILURE(operations->LoadJob("a", nullptr), yERROR_PARAMETER, "No job name for action 4");
    EXPECT_FAILURE(operations->LoadJob("a", ""), yERROR_PARAMETER, "Empty job name for action 4");
}

TEST_F(ControlProtocolOperationsTest, AnEndComesWithTheReasonOfTheFailure) {
    std::vector<std::string> reasons;
    operations->AddOpEndEventHandler("a", [&](int) {
        const auto failure = operations->LastFailure("a");
        reasons.push_back(std::to_string(failure.status) + " " + failure.text);
        ends.Add("read");
    });
    EXPECT_EQ(operations->LastFailure("a").status, yOK);
    RunAction(202);
    EXPECT_EQ(RunToEnd(2), (Texts{"a 0", "read"}));
    EXPECT_EQ(operations->LastFailure("a").text, "Testing action id 202");
    EXPECT_EQ(operations->LastFailure("b").status, yOK);
    operations->StartScan("a");
    EXPECT_EQ(RunToEnd(2), (Texts{"a 1", "read"}));
    EXPECT_EQ(reasons, (std::vector<std::string>{"202 Testing action id 202", "1 "}));
}

TEST_F(ControlProtocolOperationsTest, ArgumentsAreCopiedBeforeTheOperationReturns) {
    {
        std::string protocol = "a";
        std::string job = "job";
        operations->LoadJob(protocol, job.c_str());
        protocol = "b";
        job = "gone";
    }
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_EQ(system.NewCalls(), Texts{"LoadJob job"});
}

TEST_F(ControlProtocolOperationsTest, Action200EndsAtOnceAndFreesTheSlot) {
    RunAction(200);
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_FALSE(SlotIsUsed());
}

TEST_F(ControlProtocolOperationsTest, Action201SleepsTenMillisecondsAndSucceeds) {
    RunAction(201);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(10));
    EXPECT_FALSE(SlotIsUsed());
}

TEST_F(ControlProtocolOperationsTest, Actions202And204FailWithTheirTexts) {
    for (const auto& [id, text] :
         {std::pair(202, "Testing action id 202"), std::pair(204, "Async test action id 204")}) {
        SCOPED_TRACE(id);
        RunAction(id);
        EXPECT_EQ(RunToEnd(), Texts{"a 0"});
        const std::string number = std::to_string(id);
        EXPECT_EQ(log.Count(Vor::LevelError, "Exception processing action id " + number), 1U);
        EXPECT_EQ(log.Count(Vor::LevelError, "Caught exception with status " + number + ": " + text), 1U);
        EXPECT_FALSE(SlotIsUsed());
    }
}

TEST_F(ControlProtocolOperationsTest, Action203LeavesTheSlotTaken) {
    RunAction(203);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_TRUE(SlotIsUsed());
    EXPECT_EQ(ends.Count(), 0U);
}

TEST_F(ControlProtocolOperationsTest, AnActionWithoutARowEndsAsABadParameter) {
    for (const int id : {12, 199, 205, 255}) {
        SCOPED_TRACE(id);
        RunAction(id);
        EXPECT_EQ(RunToEnd(), Texts{"a -997"});
        EXPECT_EQ(log.Count(Vor::LevelError, "Unexpected action id " + std::to_string(id)), 1U);
        EXPECT_FALSE(SlotIsUsed());
    }
    EXPECT_TRUE(system.NewCalls().empty());
}

TEST_F(ControlProtocolOperationsTest, AFailingActionEndsWithTheGenericFailureWhateverItsStatus) {
    system.OnCall([](const std::string&) { Vor::Throw(yERROR_NOT_FOUND, "no such job"); });
    operations->LoadJob("a", "job");
    EXPECT_EQ(RunToEnd(), Texts{"a 0"});
    const auto records = log.Records();
    ASSERT_GE(records.size(), 3U);
    EXPECT_EQ(records[0].text, "Exception processing action id 4");
    EXPECT_EQ(records[0].level, Vor::LevelError);
    EXPECT_EQ(records[1].text, "Caught exception with status -999: no such job");
    EXPECT_EQ(records[2].text.rfind("Back trace of status -999", 0), 0U) << records[2].text;
    system.OnCall({});
    EXPECT_FALSE(SlotIsUsed());
}

TEST_F(ControlProtocolOperationsTest, AnExceptionOfAnotherTypeGoesToTheMainLoopAndLeavesTheSlotTaken) {
    system.OnCall([](const std::string&) { throw std::runtime_error("broken"); });
    operations->StartScan("a");
    loop.RunReady();
    EXPECT_TRUE(log.Contains("Exception in a call of the main loop"));
    EXPECT_TRUE(SlotIsUsed());
    EXPECT_EQ(ends.Count(), 0U);
}

TEST_F(ControlProtocolOperationsTest, APostThatFailsReachesTheCallerAndLeavesTheSlotTaken) {
    faults.SetHere("AsyncRunner_Run", -31);
    EXPECT_TEXTLESS_FAILURE(operations->StartScan("a"), -31);
    EXPECT_TRUE(SlotIsUsed());
    EXPECT_EQ(loop.RunReady(), 0U);
}

TEST_F(ControlProtocolOperationsTest, AnEndThatCannotBeQueuedIsTriedAgainAsAFailure) {
    faults.SetHere("yMsgQueue_AddEx", -31);
    operations->StartScan("a");
    EXPECT_EQ(RunToEnd(), Texts{"a 0"});
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Exception processing action id 0"));
    EXPECT_FALSE(SlotIsUsed());
}

TEST_F(ControlProtocolOperationsTest, AHandlerMayStartTheNextOperation) {
    Tests::Signal rejected;
    operations->AddOpEndEventHandler("b", [&](int status) {
        ends.Add("first " + std::to_string(status));
        operations->StopScan("a");
        if (Tests::FailureOf([&] { operations->StopScan("a"); })) {
            rejected.Set();
        }
    });
    operations->StartScan("b");
    EXPECT_TRUE(loop.Step());
    EXPECT_EQ(ends.WaitFor(), Texts{"first 1"});
    ASSERT_TRUE(rejected.Wait());
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_EQ(system.NewCalls(), (Texts{"Start", "Stop"}));
}

TEST_F(ControlProtocolOperationsTest, HandlersOfTheProtocolAreCalledInOrderAndOthersNot) {
    operations->AddOpEndEventHandler("b", ends.Handler("b1"));
    operations->AddOpEndEventHandler("b", ends.Handler("b2"));
    operations->StartScan("b");
    EXPECT_EQ(RunToEnd(2), (Texts{"b1 1", "b2 1"}));
    operations->StartScan("a");
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
}

TEST_F(ControlProtocolOperationsTest, AnEmptyHandlerIsNotAdded) {
    EXPECT_FALSE(operations->AddOpEndEventHandler("a", {}).IsSet());
    operations->StartScan("a");
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlProtocolOperationsTest, AnEndThatNobodyHandlesFreesTheSlot) {
    operations->StartScan("nobody");
    loop.RunReady();
    EXPECT_TRUE(Tests::WaitUntil([&] { return !SlotIsUsed(); }));
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlProtocolOperationsTest, RemovingOneHandlerErasesAllOfItsProtocol) {
    auto first = operations->AddOpEndEventHandler("b", ends.Handler("b1"));
    operations->AddOpEndEventHandler("b", ends.Handler("b2"));
    operations->RemoveOpEndEventHandler("b", first);
    EXPECT_FALSE(first.IsSet());
    operations->StartScan("b");
    loop.RunReady();
    EXPECT_TRUE(Tests::WaitUntil([&] { return !SlotIsUsed(); }));
    EXPECT_EQ(ends.Count(), 0U);
}

TEST_F(ControlProtocolOperationsTest, RemovingWithAnIdThatIsNotSetErasesTheProtocolToo) {
    Vor::Event<int>::CallbackId unset;
    operations->RemoveOpEndEventHandler("a", unset);
    operations->StartScan("a");
    loop.RunReady();
    EXPECT_TRUE(Tests::WaitUntil([&] { return !SlotIsUsed(); }));
    EXPECT_EQ(ends.Count(), 0U);
}

TEST_F(ControlProtocolOperationsTest, RemovingForAnUnknownProtocolIsIgnored) {
    auto id = operations->AddOpEndEventHandler("b", ends.Handler("b"));
    operations->RemoveOpEndEventHandler("unknown", id);
    EXPECT_TRUE(id.IsSet());
    operations->StartScan("b");
    EXPECT_EQ(RunToEnd(), Texts{"b 1"});
}

TEST_F(ControlProtocolOperationsTest, AHandlerMayBeAddedWhileAnotherRunsAndRemovalWaitsForIt) {
    Tests::Signal entered;
    Tests::Signal leave;
    auto id = operations->AddOpEndEventHandler("b", [&](int) {
        entered.Set();
        leave.Wait();
        ends.Add("left");
    });
    operations->StartScan("b");
    loop.RunReady();
    ASSERT_TRUE(entered.Wait());
    operations->AddOpEndEventHandler("c", ends.Handler("c"));
    EXPECT_EQ(ends.Count(), 0U);
    std::thread remover([&] {
        operations->RemoveOpEndEventHandler("b", id);
        ends.Add("removed");
    });
    leave.Set();
    remover.join();
    EXPECT_EQ(ends.WaitFor(2), (Texts{"left", "removed"}));
}

TEST_F(ControlProtocolOperationsTest, AHandlerThatRemovesItsProtocolEndsTheWalkWithoutHarm) {
    Vor::Event<int>::CallbackId id;
    id = operations->AddOpEndEventHandler("b", [&](int) {
        operations->RemoveOpEndEventHandler("b", id);
        ends.Add("removed itself");
    });
    operations->StartScan("b");
    EXPECT_EQ(RunToEnd(), Texts{"removed itself"});
    EXPECT_FALSE(SlotIsUsed());
    operations->StartScan("b");
    loop.RunReady();
    EXPECT_TRUE(Tests::WaitUntil([&] { return !SlotIsUsed(); }));
    EXPECT_EQ(ends.Count(), 0U);
}

} // namespace
