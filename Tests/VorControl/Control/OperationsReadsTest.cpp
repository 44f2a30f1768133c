#include "Tests/VorControl/Control/OperationsFixture.h"
#include "VorApi/Object.h"
#include "VorControl/Control/ControlProtocolOperations.h"
#include "VorMsg/VvNullMsg.h"

#include <optional>
#include <thread>

using Tests::Texts;
using VorControl::ControlProtocolOperations;
using System = VorControl::IControlSystemInterface;
using Block = VorCommon::RuntimeCache::MainLoopBlock;

namespace {

constexpr unsigned long long Timeout = 1000000;

class OperationsReadsTest : public Tests::OperationsFixture {
protected:
    OperationsReadsTest() {
        system.dateTime = 1234567890123456;
        system.ntpHost = "time.host";
        system.syncTime = true;
        EXPECT_EQ(VvNullMsg_Construct(system.liveJob.Out()), yOK);
        source.type = VorPipe::PipeDataType::Measurement;
        source.arrayed = true;
        source.name = "profile/max";
        source.displayName = "Max";
        system.dataSources["profile/max"] = source;
        handlers.created = [this](const std::string& name) { events.push_back("created " + name); };
        handlers.deleted = [this](const std::string& name) { events.push_back("deleted " + name); };
        handlers.updated = [this](const std::string& name) { events.push_back("updated " + name); };
    }

    void TearDown() override { EXPECT_EQ(yObject_ShareCount(system.liveJob.Get()), 1); }

    static void ExpectEqual(const System::ControlDataSourceProperties& one,
                            const System::ControlDataSourceProperties& other) {
        EXPECT_EQ(one.type, other.type);
        EXPECT_EQ(one.arrayed, other.arrayed);
        EXPECT_EQ(one.name, other.name);
        EXPECT_EQ(one.displayName, other.displayName);
    }

    /// Each read returns what the system returns.
    void ReadAll() {
        EXPECT_EQ(operations->LocalNodeDateTime(Timeout), 1234567890123456);
        EXPECT_EQ(operations->LocalNodeNtpHost(Timeout), "time.host");
        EXPECT_TRUE(operations->LocalNodeSyncTime("other", Timeout));
        System::ControlDataSourceProperties out;
        out.name = "former";
        operations->DataSourceProperties("profile/max", out, Timeout);
        ExpectEqual(out, source);
        const Vor::Object job = Vor::Object::Adopt(operations->LiveJob(Timeout));
        EXPECT_EQ(job.Get(), system.liveJob.Get());
        EXPECT_EQ(yObject_ShareCount(job.Get()), 2);
        EXPECT_EQ(system.NewCalls(), (Texts{"LocalNodeDateTime", "LocalNodeNtpHost", "LocalNodeSyncTime other",
                                            "DataSourceProperties profile/max", "LiveJob"}));
    }

    /// Each read returns the value for no answer.
    void ExpectNoAnswers() {
        EXPECT_EQ(operations->LocalNodeDateTime(Timeout), 0);
        EXPECT_EQ(operations->LocalNodeNtpHost(Timeout), "");
        EXPECT_FALSE(operations->LocalNodeSyncTime("other", Timeout));
        System::ControlDataSourceProperties out = source;
        operations->DataSourceProperties("profile/max", out, Timeout);
        ExpectEqual(out, {});
        EXPECT_EQ(operations->LiveJob(Timeout), nullptr);
        operations->AddDataSourceEventHandler(handlers, ids, Timeout);
        EXPECT_FALSE(ids.created.IsSet() || ids.deleted.IsSet() || ids.updated.IsSet());
        ids.created = other;
        operations->RemoveDataSourceEventHandler(ids, Timeout);
        EXPECT_TRUE(ids.created.IsSet());
    }

    /// Runs the call on another thread, while this one is the main loop's and calls `serve` again and again.
    template <class Call, class Serve>
    void OnOtherThread(const Call& call, const Serve& serve) {
        Tests::Signal done;
        std::thread caller([&] {
            call();
            done.Set();
        });
        while (!done.IsSet()) {
            serve();
        }
        caller.join();
    }

    template <class Call>
    void OnOtherThread(const Call& call) {
        OnOtherThread(call, [this] {
            loop.RunReady();
            std::this_thread::yield();
        });
    }

    System::ControlDataSourceProperties source;
    System::DataSourceEventHandlerContainer handlers;
    System::DataSourceEventCallbackIdContainer ids;
    Vor::Event<std::string> otherEvent;
    Vor::Event<std::string>::CallbackId other = otherEvent.Add([](const std::string&) {});
    Texts events;
};

TEST_F(OperationsReadsTest, OnTheMainLoopAReadRunsInPlaceAndDoesNotWait) {
    ReadAll();
    EXPECT_EQ(loop.RunReady(), 0U);
}

TEST_F(OperationsReadsTest, WhileTheMainLoopIsBlockedAReadRunsInPlaceOnTheCallersThread) {
    const Block block(runtimeCache);
    std::vector<std::thread::id> where;
    system.OnCall([&](const std::string&) { where.push_back(std::this_thread::get_id()); });
    std::thread::id caller;
    std::thread([&] {
        caller = std::this_thread::get_id();
        ReadAll();
        operations->RemoveDataSourceEventHandler(ids, Timeout);
    }).join();
    EXPECT_EQ(where, std::vector<std::thread::id>(6, caller));
    EXPECT_EQ(loop.RunReady(), 0U);
}

TEST_F(OperationsReadsTest, FromAnotherThreadAReadRunsOnTheMainLoop) {
    std::vector<std::thread::id> where;
    system.OnCall([&](const std::string&) { where.push_back(std::this_thread::get_id()); });
    OnOtherThread([&] { ReadAll(); });
    EXPECT_EQ(where, std::vector<std::thread::id>(5, std::this_thread::get_id()));
}

TEST_F(OperationsReadsTest, ASubscriptionIsMadeAndEndedOnTheMainLoopFromAnyThread) {
    const auto subscribe = [&] { operations->AddDataSourceEventHandler(handlers, ids, Timeout); };
    const auto unsubscribe = [&] { operations->RemoveDataSourceEventHandler(ids, Timeout); };
    for (const bool onMainLoop : {true, false}) {
        SCOPED_TRACE(onMainLoop);
        onMainLoop ? subscribe() : OnOtherThread(subscribe);
        EXPECT_TRUE(ids.created.IsSet() && ids.deleted.IsSet() && ids.updated.IsSet());
        system.created.Raise("a");
        system.deleted.Raise("b");
        system.updated.Raise("c");
        EXPECT_EQ(std::exchange(events, {}), (Texts{"created a", "deleted b", "updated c"}));
        onMainLoop ? unsubscribe() : OnOtherThread(unsubscribe);
        EXPECT_FALSE(ids.created.IsSet() || ids.deleted.IsSet() || ids.updated.IsSet());
        EXPECT_EQ(system.created.Count() + system.deleted.Count() + system.updated.Count(), 0U);
    }
}

TEST_F(OperationsReadsTest, WhileTheMainLoopIsBlockedNoSubscriptionIsMade) {
    const Block block(runtimeCache);
    operations->AddDataSourceEventHandler(handlers, ids, Timeout);
    std::thread([&] { operations->AddDataSourceEventHandler(handlers, ids, Timeout); }).join();
    EXPECT_FALSE(ids.created.IsSet() || ids.deleted.IsSet() || ids.updated.IsSet());
    EXPECT_EQ(loop.RunReady(), 0U);
    EXPECT_TRUE(system.NewCalls().empty());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(OperationsReadsTest, WithoutAnAnswerInTimeAReadGivesItsDefaultAndNeverRuns) {
    OnOtherThread([&] { ExpectNoAnswers(); },
                  [&] {
                      // The loop is busy for longer than any of them waits.
                      loop.Elapse(std::chrono::microseconds(Timeout));
                      std::this_thread::yield();
                  });
    loop.RunReady();
    EXPECT_TRUE(system.NewCalls().empty());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(OperationsReadsTest, ATimeOutOfZeroDoesNotWait) {
    std::thread([&] {
        EXPECT_EQ(operations->LocalNodeDateTime(0), 0);
        EXPECT_EQ(operations->LiveJob(0), nullptr);
    }).join();
    loop.RunReady();
    EXPECT_TRUE(system.NewCalls().empty());
}

TEST_F(OperationsReadsTest, ATimeOutDoesNotEndBeforeItsTime) {
    Tests::Signal done;
    std::thread caller([&] {
        EXPECT_EQ(operations->LocalNodeDateTime(Timeout), 1234567890123456);
        done.Set();
    });
    ASSERT_TRUE(loop.WaitReady());
    loop.Elapse(std::chrono::microseconds(Timeout - 1));
    EXPECT_FALSE(done.IsSet());
    loop.RunReady();
    caller.join();
}

TEST_F(OperationsReadsTest, WhatARunningReadFindsTooLateIsNotLost) {
    // The time-out passes while the read runs, so its caller may or may not get the result; the result must be kept.
    system.OnCall([&](const std::string&) {
        loop.Elapse(std::chrono::microseconds(Timeout));
        std::this_thread::yield();
    });
    OnOtherThread([&] {
        Vor::Object::Adopt(operations->LiveJob(Timeout));
        EXPECT_EQ(yObject_ShareCount(system.liveJob.Get()), 1);
    });
    OnOtherThread([&] { operations->AddDataSourceEventHandler(handlers, ids, Timeout); });
    EXPECT_TRUE(ids.created.IsSet());
    EXPECT_EQ(system.created.Count(), 1U);
    OnOtherThread([&] { operations->RemoveDataSourceEventHandler(ids, Timeout); });
    EXPECT_FALSE(ids.created.IsSet());
    EXPECT_EQ(system.created.Count(), 0U);
}

TEST_F(OperationsReadsTest, WhatAReadThrowsIsThrown) {
    System::ControlDataSourceProperties out = source;
    EXPECT_FAILURE(operations->DataSourceProperties("unknown", out, Timeout), yERROR_NOT_FOUND,
                   "no data source unknown");
    ExpectEqual(out, {});
    OnOtherThread([&] {
        out = source;
        EXPECT_FAILURE(operations->DataSourceProperties("unknown", out, Timeout), yERROR_NOT_FOUND,
                       "no data source unknown");
        ExpectEqual(out, {});
    });
}

TEST_F(OperationsReadsTest, AReadThatHasBegunEndsWithItsTimeOutAsWell) {
    // The read doesn't return before its caller has.
    const auto runLate = [&](const auto& read) {
        Tests::Signal returned;
        system.OnCall([&](const std::string&) {
            loop.Elapse(std::chrono::microseconds(Timeout));
            EXPECT_TRUE(returned.Wait(std::chrono::seconds(3)));
        });
        OnOtherThread([&] {
            read();
            returned.Set();
        });
        system.OnCall({});
    };
    runLate([&] { EXPECT_EQ(operations->LocalNodeDateTime(Timeout), 0); });
    runLate([&] { EXPECT_EQ(operations->LocalNodeNtpHost(Timeout), ""); });
    runLate([&] { EXPECT_FALSE(operations->LocalNodeSyncTime("other", Timeout)); });
    runLate([&] {
        System::ControlDataSourceProperties out = source;
        operations->DataSourceProperties("profile/max", out, Timeout);
        ExpectEqual(out, {});
    });
    runLate([&] { EXPECT_EQ(operations->LiveJob(Timeout), nullptr); });
    EXPECT_EQ(system.NewCalls().size(), 5U);
}

TEST_F(OperationsReadsTest, WhatAReadThrowsAfterItsTimeOutIsLogged) {
    Tests::Signal returned;
    system.OnCall([&](const std::string&) {
        loop.Elapse(std::chrono::microseconds(Timeout));
        returned.Wait(std::chrono::seconds(3));
        Vor::Throw(yERROR_STATE, "no core");
    });
    OnOtherThread([&] {
        EXPECT_EQ(operations->LocalNodeDateTime(Timeout), 0);
        returned.Set();
    });
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Exception in a call of the main loop"));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Caught exception with status -1000: no core"));
}

TEST_F(OperationsReadsTest, TheStatusOfATimeOutThatTheReadItselfThrowsIsThrown) {
    system.OnCall([](const std::string&) { Vor::Throw(yERROR_TIMEOUT, "no answer of the core"); });
    OnOtherThread([&] {
        EXPECT_FAILURE(operations->LocalNodeDateTime(Timeout), yERROR_TIMEOUT, "no answer of the core");
        EXPECT_FAILURE(operations->AddDataSourceEventHandler(handlers, ids, Timeout), yERROR_TIMEOUT,
                       "no answer of the core");
    });
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(OperationsReadsTest, AWaitThatFailsOtherwiseThanByItsTimeIsThrown) {
    faults.Set("AsyncRunner_RunAndWait", -31);
    std::thread([&] { EXPECT_TEXTLESS_FAILURE(operations->LocalNodeDateTime(Timeout), -31); }).join();
    EXPECT_TRUE(system.NewCalls().empty());
}

TEST_F(OperationsReadsTest, TheNameMayBeThatOfTheRecordToBeFilled) {
    System::ControlDataSourceProperties out;
    out.name = "profile/max";
    operations->DataSourceProperties(out.name, out, Timeout);
    ExpectEqual(out, source);
}

TEST_F(OperationsReadsTest, AReadNeedsNoFreeSlot) {
    RunAction(203);
    loop.RunReady();
    ReadAll();
}

} // namespace
