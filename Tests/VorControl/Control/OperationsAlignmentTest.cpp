#include "Tests/VorControl/Control/OperationsFixture.h"
#include "VorControl/Control/ControlProtocolOperations.h"
#include "VorScan/AlignCompletionStatus.h"

#include <atomic>
#include <thread>

using Tests::Texts;
using VorScan::AlignCompletionStatus;

namespace {

class OperationsAlignmentTest : public Tests::OperationsFixture {
protected:
    /// An alignment of the service "a" that the scanner has begun.
    void Begin(const char* scannerId) {
        operations->Alignment("a", scannerId);
        loop.RunReady();
        scanEngine.NewCalls();
    }

    Texts Complete(AlignCompletionStatus status = AlignCompletionStatus::Succeeded) {
        scanEngine.completed.Raise(status);
        return ends.WaitFor();
    }

    /// From now on the calls with this text fail.
    void Fail(const std::string& failing) {
        scanEngine.OnCall([failing](const std::string& call) {
            if (call == failing) {
                Vor::Throw(yERROR_NOT_FOUND, "no scanner");
            }
        });
    }
};

TEST_F(OperationsAlignmentTest, SubscribesBeforeItAlignsAndEndsWhenTheScannerSaysSo) {
    std::size_t subscribed = 0;
    scanEngine.OnCall([&](const std::string& call) {
        if (call == "Alignment s1") {
            subscribed = scanEngine.completed.Count();
        }
    });
    operations->Alignment("a", "s1");
    EXPECT_TRUE(scanEngine.NewCalls().empty());
    loop.RunReady();
    EXPECT_EQ(scanEngine.NewCalls(), (Texts{"AlignmentCompletedEvent s1", "Alignment s1"}));
    EXPECT_EQ(subscribed, 1U);
    EXPECT_TRUE(SlotIsUsed());
    EXPECT_EQ(ends.Count(), 0U);
    EXPECT_EQ(Complete(), Texts{"a 1"});
    EXPECT_FALSE(SlotIsUsed());
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(OperationsAlignmentTest, AFailedAlignmentEndsWithTheGenericFailure) {
    Begin("s1");
    EXPECT_EQ(Complete(AlignCompletionStatus::Failed), Texts{"a 0"});
    Begin("s1");
    EXPECT_EQ(Complete(static_cast<AlignCompletionStatus>(7)), Texts{"a 0"});
    EXPECT_FALSE(SlotIsUsed());
}

TEST_F(OperationsAlignmentTest, TheSubscriptionEndsBeforeTheSlotIsFreedAndTheHandlersRun) {
    std::atomic<std::size_t> subscribed = 1;
    std::atomic<bool> takenAtCleanUp = false;
    operations->AddOpEndEventHandler("a", [&](int) { subscribed = scanEngine.completed.Count(); });
    operations->AddOpEndEventHandler("a", ends.Handler("last"));
    Begin("s1");
    scanEngine.OnCall([&](const std::string&) {
        takenAtCleanUp = Tests::FailureOf([&] { operations->StartScan("b"); }).has_value();
    });
    scanEngine.completed.Raise(AlignCompletionStatus::Succeeded);
    EXPECT_EQ(ends.WaitFor(2), (Texts{"a 1", "last 1"}));
    EXPECT_EQ(scanEngine.NewCalls(), Texts{"AlignmentCompletedEvent s1"});
    EXPECT_TRUE(takenAtCleanUp);
    EXPECT_EQ(subscribed, 0U);
}

TEST_F(OperationsAlignmentTest, AScannerThatIsNotThereEndsWithFailureAndFreesTheSlot) {
    Fail("AlignmentCompletedEvent s1");
    operations->Alignment("a", "s1");
    EXPECT_EQ(RunToEnd(), Texts{"a 0"});
    EXPECT_EQ(scanEngine.NewCalls(), Texts{"AlignmentCompletedEvent s1"});
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception processing action id 2"), 1U);
    EXPECT_FALSE(SlotIsUsed());
}

TEST_F(OperationsAlignmentTest, AnAlignmentThatCannotBeginEndsWithFailureAndItsSubscription) {
    for (const std::string scanner : {"s1", ""}) {
        Fail("Alignment " + scanner);
        operations->Alignment("a", scanner.c_str());
        EXPECT_EQ(RunToEnd(), Texts{"a 0"});
        EXPECT_EQ(scanEngine.completed.Count(), 0U);
        EXPECT_FALSE(SlotIsUsed());
    }
}

TEST_F(OperationsAlignmentTest, AFailureWhileCleaningUpAfterAFailureStillFreesTheSlot) {
    bool aligned = false;
    scanEngine.OnCall([&](const std::string& call) {
        aligned = aligned || call == "Alignment s1";
        if (aligned) {
            Vor::Throw(yERROR_NOT_FOUND, "gone at " + call);
        }
    });
    operations->Alignment("a", "s1");
    EXPECT_EQ(RunToEnd(), Texts{"a 0"});
    EXPECT_TRUE(log.Contains("Caught exception with status -999: gone at Alignment s1"));
    EXPECT_TRUE(log.Contains("Caught exception with status -999: gone at AlignmentCompletedEvent s1"));
    EXPECT_FALSE(SlotIsUsed());
    // The registration couldn't be removed, but its event is ignored.
    operations->StopScan("b");
    scanEngine.completed.Raise(AlignCompletionStatus::Succeeded);
    EXPECT_TRUE(SlotIsUsed());
}

TEST_F(OperationsAlignmentTest, AnAlignmentThatNeverCompletesHoldsTheSlotUntilTheObjectGoes) {
    Begin("s1");
    loop.Advance(std::chrono::hours(24));
    EXPECT_TRUE(SlotIsUsed());
    operations.reset();
    Make();
    EXPECT_FALSE(SlotIsUsed());
}

TEST_F(OperationsAlignmentTest, TwoAlignmentsOfTheDefaultScannerEndOnceEach) {
    for (int i = 0; i < 2; ++i) {
        Begin("");
        EXPECT_EQ(scanEngine.completed.Count(), 1U);
        EXPECT_EQ(Complete(), Texts{"a 1"});
        EXPECT_FALSE(SlotIsUsed());
        EXPECT_EQ(ends.Count(), 0U);
    }
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(OperationsAlignmentTest, AnAlignmentThatSomeoneElseStartedEndsNobodysOperation) {
    Begin("");
    EXPECT_EQ(Complete(), Texts{"a 1"});
    operations->StopScan("b");
    scanEngine.completed.Raise(AlignCompletionStatus::Succeeded);
    EXPECT_TRUE(SlotIsUsed());
    EXPECT_EQ(ends.Count(), 0U);
}

TEST_F(OperationsAlignmentTest, ASecondCompletionIsIgnored) {
    for (const char* scanner : {"s1", ""}) {
        Begin(scanner);
        scanEngine.completed.Raise(AlignCompletionStatus::Failed);
        scanEngine.completed.Raise(AlignCompletionStatus::Succeeded);
        EXPECT_EQ(ends.WaitFor(), Texts{"a 0"});
        EXPECT_FALSE(SlotIsUsed());
        EXPECT_EQ(ends.Count(), 0U);
    }
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(OperationsAlignmentTest, ACompletionAfterTheAlignmentFailedIsIgnored) {
    Fail("Alignment ");
    operations->Alignment("a", "");
    EXPECT_EQ(RunToEnd(), Texts{"a 0"});
    operations->StopScan("b");
    scanEngine.completed.Raise(AlignCompletionStatus::Succeeded);
    EXPECT_TRUE(SlotIsUsed());
    EXPECT_EQ(ends.Count(), 0U);
}

TEST_F(OperationsAlignmentTest, AScannerThatIsGoneAtTheEndStillFreesTheSlot) {
    Begin("s1");
    Fail("AlignmentCompletedEvent s1");
    EXPECT_EQ(Complete(), Texts{"a 1"});
    EXPECT_EQ(log.Count(Vor::LevelError, "EXCEPTION THROWN: "), 1U);
    EXPECT_EQ(log.Count(Vor::LevelError, "Caught exception with status -999: no scanner"), 1U);
    EXPECT_FALSE(SlotIsUsed());
}

TEST_F(OperationsAlignmentTest, TheEndOfAnotherOperationLeavesARegistrationAlone) {
    Begin("");
    EXPECT_EQ(Complete(), Texts{"a 1"});
    operations->StartScan("a");
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_FALSE(SlotIsUsed());
    EXPECT_EQ(scanEngine.completed.Count(), 1U);
    EXPECT_TRUE(scanEngine.NewCalls().empty());
}

TEST_F(OperationsAlignmentTest, AFormerScannerThatIsGoneDoesNotKeepTheNextAlignmentFromBeginning) {
    Begin("");
    EXPECT_EQ(Complete(), Texts{"a 1"});
    Fail("AlignmentCompletedEvent ");
    operations->Alignment("a", "s2");
    loop.RunReady();
    EXPECT_EQ(scanEngine.NewCalls(), (Texts{"AlignmentCompletedEvent s2", "AlignmentCompletedEvent ", "Alignment s2"}));
    EXPECT_EQ(Complete(), Texts{"a 1"});
    EXPECT_FALSE(SlotIsUsed());
}

TEST_F(OperationsAlignmentTest, AnAlignmentMayCompleteBeforeItsCallReturns) {
    scanEngine.OnCall([&](const std::string& call) {
        if (call.rfind("Alignment ", 0) == 0) {
            scanEngine.completed.Raise(AlignCompletionStatus::Succeeded);
        }
    });
    for (const char* scanner : {"s1", ""}) {
        operations->Alignment("a", scanner);
        EXPECT_EQ(RunToEnd(), Texts{"a 1"});
        EXPECT_FALSE(SlotIsUsed());
    }
}

TEST_F(OperationsAlignmentTest, AScannerThatFailsAfterItReportedTheEndEndsItOnce) {
    scanEngine.OnCall([&](const std::string& call) {
        if (call.rfind("Alignment ", 0) == 0) {
            scanEngine.completed.Raise(AlignCompletionStatus::Succeeded);
            EXPECT_EQ(ends.WaitFor(), Texts{"a 1"});
            operations->StopScan("b"); // the slot is free again, and now used by another
            Vor::Throw(yERROR_NOT_FOUND, "no scanner");
        }
    });
    for (const char* scanner : {"s1", ""}) {
        auto id = operations->AddOpEndEventHandler("b", ends.Handler("b"));
        operations->Alignment("a", scanner);
        EXPECT_EQ(RunToEnd(), Texts{"b 1"});
        EXPECT_FALSE(SlotIsUsed());
        operations->RemoveOpEndEventHandler("b", id);
    }
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception processing action id 2"), 2U);
    EXPECT_EQ(log.Count(Vor::LevelError, "EXCEPTION THROWN: "), 0U);
}

TEST_F(OperationsAlignmentTest, AHandlerMayAlignAgain) {
    int left = 3;
    operations->AddOpEndEventHandler("b", [&](int status) {
        if (--left > 0) {
            operations->Alignment("b", "s1");
        }
        ends.Add("b " + std::to_string(status));
    });
    operations->Alignment("b", "s1");
    for (int i = 0; i < 3; ++i) {
        loop.RunReady();
        EXPECT_EQ(Complete(), Texts{"b 1"});
    }
    EXPECT_FALSE(SlotIsUsed());
    EXPECT_EQ(scanEngine.completed.Count(), 0U);
}

TEST_F(OperationsAlignmentTest, ACompletionAfterTheObjectIsGoneReachesNobody) {
    for (const char* scanner : {"s1", ""}) {
        Begin(scanner);
        operations.reset();
        EXPECT_EQ(scanEngine.completed.Count(), 0U);
        scanEngine.completed.Raise(AlignCompletionStatus::Succeeded);
        EXPECT_EQ(ends.Count(), 0U);
        Make();
    }
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(OperationsAlignmentTest, AScannerThatIsGoneWhenTheObjectGoesIsLoggedAndReachesNobody) {
    Begin("s1");
    Fail("AlignmentCompletedEvent s1");
    operations.reset();
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown in destructor"), 1U);
    scanEngine.completed.Raise(AlignCompletionStatus::Succeeded);
    EXPECT_EQ(ends.Count(), 0U);
}

TEST_F(OperationsAlignmentTest, CompletionsOnAnotherThreadMayRaceWithTheEndAndWithTheObjectsEnd) {
    std::atomic<bool> stop = false;
    std::thread scanner([&] {
        while (!stop) {
            scanEngine.completed.Raise(AlignCompletionStatus::Succeeded);
        }
    });
    for (int i = 0; i < 50; ++i) {
        operations->Alignment("a", i % 2 == 0 ? "s1" : "");
        EXPECT_EQ(RunToEnd(), Texts{"a 1"});
        if (i % 10 == 0) {
            operations->Alignment("a", "s1");
            loop.RunReady();
            operations.reset();
            ends.WaitFor(0);
            Make();
        }
    }
    stop = true;
    scanner.join();
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

} // namespace
