#include "Services/Common/SensorCommands.h"

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/Results.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorApi/Handle.h"
#include "yApi/yArrayList.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Common {
namespace {

using namespace std::chrono_literals;
using Command = SensorCommands::Command;
using Statuses = std::vector<yStatus>;

Command Of(std::uint8_t id) {
    Command command;
    command.commandId = id;
    return command;
}

/// A service whose operations begin and end when a test says so. The test's thread runs the main loop step by step.
class SensorCommandsTest : public testing::Test {
protected:
    SensorCommandsTest() {
        loop.RunReady(); // what an earlier test left there
        environ.system.dataSources["profile/max"] = {};
    }

    bool Run(std::uint8_t id) {
        return commands->Run(Of(id), [this](yStatus status) { ends.push_back(status); });
    }
    /// Starts a trigger, which begins at the time 100.
    void Trigger() {
        begin = 100;
        ASSERT_TRUE(Run(Command::SoftwareTrigger));
        loop.RunReady();
    }

    /// Clients can read results that were published at these times.
    void Hold(const std::vector<std::uint64_t>& times) {
        Vor::Handle<yArrayList, yArrayList_Destroy> list;
        Vor::ThrowIfFailed(yArrayList_Construct(list.Out(), yType_ResultSet, 1, nullptr));
        for (const std::uint64_t time : times) {
            Vor::ThrowIfFailed(
                yArrayList_Add(list.Get(), yObject_Share(Tests::Results(time).Measurement("profile/max", 1).Get())));
        }
        commands->ResultsHeld(list.Get());
    }

    Statuses Ends() { return std::exchange(ends, {}); }

    Tests::Faults faults;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    Tests::HostEnviron environ;
    std::vector<unsigned> processed; ///< the ids of the commands that the service has got
    std::function<void()> onProcess;
    std::uint64_t begin = 0;
    std::vector<std::string> sources = {"profile/min", "profile/max"};
    Statuses ends;
    std::unique_ptr<SensorCommands> commands =
        std::make_unique<SensorCommands>(SensorCommands::Service{.host = environ.host,
                                                                 .process =
                                                                     [this](const Command& command) {
                                                                         processed.push_back(command.commandId);
                                                                         if (onProcess) {
                                                                             onProcess();
                                                                         }
                                                                     },
                                                                 .beginOfTrigger = [this] { return begin; },
                                                                 .sources = [this] { return sources; }});
};

TEST_F(SensorCommandsTest, ACommandEndsWithItsOperation) {
    for (const std::uint8_t id : {1, 2, 3, 4, 5, 9, 77}) {
        for (const yStatus status : {yOK, yERROR, yERROR_COMMAND}) {
            ASSERT_TRUE(Run(id));
            EXPECT_TRUE(commands->IsBusy());
            EXPECT_EQ(Ends(), Statuses());
            std::thread([&] { commands->OperationEnded(status); }).join();
            EXPECT_EQ(Ends(), Statuses{status});
            EXPECT_FALSE(commands->IsBusy());
        }
        EXPECT_EQ(std::exchange(processed, {}), std::vector<unsigned>(3, id));
    }
}

TEST_F(SensorCommandsTest, OneCommandRunsAtATime) {
    ASSERT_TRUE(Run(Command::Start));
    EXPECT_FALSE(Run(Command::Stop));
    commands->OperationEnded(yOK);
    EXPECT_EQ(Ends(), Statuses{yOK});
    EXPECT_TRUE(Run(Command::Stop));
    EXPECT_EQ(processed, (std::vector<unsigned>{Command::Start, Command::Stop}));
}

TEST_F(SensorCommandsTest, TheNextCommandMayRunFromTheEndOfTheLastOne) {
    bool accepted = false;
    commands->Run(Of(Command::Start), [&](yStatus) { accepted = Run(Command::Stop); });
    commands->OperationEnded(yOK);
    EXPECT_TRUE(accepted);
    EXPECT_TRUE(commands->IsBusy());
}

TEST_F(SensorCommandsTest, AnOperationThatFailsBeforeItBeginsWasRefusedForAnother) {
    onProcess = [this] { commands->OperationEnded(yERROR); };
    for (const std::uint8_t id : {1, 2, 3, 4, 5, 6}) {
        EXPECT_TRUE(Run(id));
        EXPECT_EQ(Ends(), Statuses{yERROR_BUSY}) << unsigned{id};
        EXPECT_FALSE(commands->IsBusy());
    }
    EXPECT_TRUE(Run(Command::SetUserData));
    EXPECT_EQ(Ends(), Statuses{yERROR}) << "which is no operation";
    onProcess = [this] { std::thread([this] { commands->OperationEnded(yERROR); }).join(); };
    EXPECT_TRUE(Run(Command::Start));
    EXPECT_EQ(Ends(), Statuses{yERROR}) << "it had begun";
    onProcess = nullptr;
    EXPECT_TRUE(Run(Command::Start));
    commands->OperationEnded(yERROR);
    EXPECT_EQ(Ends(), Statuses{yERROR}) << "it had begun, and ends on the thread that started it";
    onProcess = [this] { commands->OperationEnded(yERROR_COMMAND); };
    EXPECT_TRUE(Run(77));
    EXPECT_EQ(Ends(), Statuses{yERROR_COMMAND});
}

TEST_F(SensorCommandsTest, AnEndWithoutACommandIsIgnored) {
    commands->OperationEnded(yOK);
    commands->Interrupt();
    Hold({1});
    EXPECT_EQ(Ends(), Statuses());
}

TEST_F(SensorCommandsTest, ATriggerIsDoneWhenItsFrameFollowsItsOperation) {
    Trigger();
    commands->OperationEnded(yOK);
    EXPECT_EQ(Ends(), Statuses()) << "the frame isn't there";
    EXPECT_TRUE(commands->IsBusy());
    EXPECT_FALSE(Run(Command::Stop));
    Hold({98, 99});
    EXPECT_EQ(Ends(), Statuses()) << "these are earlier ones";
    Hold({99, 100});
    EXPECT_EQ(Ends(), Statuses{yOK});
    EXPECT_FALSE(commands->IsBusy());
    Hold({101});
    loop.Advance(10s);
    EXPECT_EQ(Ends(), Statuses()) << "it ends once";
}

TEST_F(SensorCommandsTest, ATriggerIsDoneWhenItsOperationFollowsItsFrame) {
    Trigger();
    Hold({100});
    Hold({99});
    EXPECT_EQ(Ends(), Statuses()) << "the operation hasn't ended";
    commands->OperationEnded(yOK);
    EXPECT_EQ(Ends(), Statuses{yOK});
    begin = 200;
    ASSERT_TRUE(Run(Command::SoftwareTrigger));
    loop.RunReady();
    commands->OperationEnded(yOK);
    EXPECT_EQ(Ends(), Statuses()) << "the former trigger's frame isn't that of this one";
    Hold({200});
    EXPECT_EQ(Ends(), Statuses{yOK});
}

TEST_F(SensorCommandsTest, AnotherServicesFrameThatComesLateIsNoFrameOfThisTrigger) {
    Trigger();
    Hold({99}); // published before this service's operation began
    commands->OperationEnded(yOK);
    EXPECT_EQ(Ends(), Statuses());
    Hold({105});
    EXPECT_EQ(Ends(), Statuses{yOK});
}

TEST_F(SensorCommandsTest, ATriggerHasFailedAtOnceWhenItsOperationFails) {
    Trigger();
    std::thread([&] { commands->OperationEnded(yERROR); }).join();
    EXPECT_EQ(Ends(), Statuses{yERROR});
    EXPECT_FALSE(commands->IsBusy());
    Trigger();
    Hold({100});
    std::thread([&] { commands->OperationEnded(yERROR); }).join();
    EXPECT_EQ(Ends(), Statuses{yERROR}) << "with a frame, too";
}

TEST_F(SensorCommandsTest, ATriggerHasFailedWhenItsFrameDoesNotComeInTime) {
    commands->SetTriggerTimeout(250ms);
    Trigger();
    commands->OperationEnded(yOK);
    loop.Advance(249ms);
    EXPECT_EQ(Ends(), Statuses());
    loop.Advance(1ms);
    EXPECT_EQ(Ends(), Statuses{yERROR_TIMEOUT});
    EXPECT_FALSE(commands->IsBusy());
    Trigger();
    commands->OperationEnded(yOK);
    EXPECT_EQ(Ends(), Statuses()) << "the next one has its own time";
    Hold({100});
    EXPECT_EQ(Ends(), Statuses{yOK});
}

TEST_F(SensorCommandsTest, ATriggerHasASecondByDefault) {
    Trigger();
    commands->OperationEnded(yOK);
    loop.Advance(999ms);
    EXPECT_EQ(Ends(), Statuses());
    loop.Advance(1ms);
    EXPECT_EQ(Ends(), Statuses{yERROR_TIMEOUT});
}

TEST_F(SensorCommandsTest, TheTimeOfATriggerEndsAlsoWhileItsOperationRuns) {
    Trigger();
    loop.Advance(1s);
    EXPECT_EQ(Ends(), Statuses{yERROR_TIMEOUT});
    EXPECT_TRUE(commands->IsBusy()) << "with the operation";
    EXPECT_FALSE(Run(Command::Stop));
    Hold({100});
    commands->OperationEnded(yOK);
    EXPECT_EQ(Ends(), Statuses()) << "its client has had its answer";
    EXPECT_FALSE(commands->IsBusy());
}

TEST_F(SensorCommandsTest, ATriggerWithoutATimeOutDoesNotWait) {
    commands->SetTriggerTimeout(0ms);
    Trigger();
    commands->Interrupt();
    EXPECT_EQ(Ends(), Statuses());
    commands->OperationEnded(yOK);
    EXPECT_EQ(Ends(), Statuses{yOK});
    EXPECT_EQ(environ.system.NewCalls(), std::vector<std::string>()) << "nor does it ask for sources";
}

TEST_F(SensorCommandsTest, ATriggerOfAServiceWithoutASourceOfTheInputDoesNotWait) {
    for (const auto& none : {std::vector<std::string>(), std::vector<std::string>{"profile/min", "values/a"}}) {
        sources = none;
        Trigger();
        commands->OperationEnded(yOK);
        EXPECT_EQ(Ends(), Statuses{yOK});
    }
    sources = {"values/a", "profile/max"};
    Trigger();
    commands->OperationEnded(yOK);
    EXPECT_EQ(Ends(), Statuses()) << "one is enough";
}

TEST_F(SensorCommandsTest, TheSourcesAreKnownBeforeTheOperationRuns) {
    sources = {};
    Vor::AsyncRunner operation;
    onProcess = [&] { operation.Run([this] { commands->OperationEnded(yOK); }); };
    begin = 100;
    ASSERT_TRUE(Run(Command::SoftwareTrigger));
    loop.RunReady();
    EXPECT_EQ(Ends(), Statuses{yOK});
}

TEST_F(SensorCommandsTest, ATriggerHasFailedAtOnceWhenItsFrameCannotComeAnyMore) {
    Trigger();
    commands->OperationEnded(yOK);
    commands->Interrupt();
    EXPECT_EQ(Ends(), Statuses{yERROR_STATE});
    EXPECT_FALSE(commands->IsBusy());
    Trigger();
    commands->Interrupt();
    EXPECT_EQ(Ends(), Statuses{yERROR_STATE}) << "also while the operation runs";
    EXPECT_TRUE(commands->IsBusy());
    commands->OperationEnded(yOK);
    EXPECT_EQ(Ends(), Statuses());
    EXPECT_FALSE(commands->IsBusy());
}

TEST_F(SensorCommandsTest, OtherCommandsAreNotInterrupted) {
    ASSERT_TRUE(Run(Command::LoadJob));
    commands->Interrupt();
    loop.Advance(70s);
    EXPECT_EQ(Ends(), Statuses()) << "a job's load interrupts triggers, not itself";
    commands->OperationEnded(yOK);
    EXPECT_EQ(Ends(), Statuses{yOK}) << "and waits for no frame";
}

TEST_F(SensorCommandsTest, ATriggerThatCannotWaitFailsAndTheNextCommandRuns) {
    const Vor::LogCapture log;
    faults.Set("AsyncRunner_Run", yERROR);
    EXPECT_TRUE(Run(Command::SoftwareTrigger));
    EXPECT_EQ(Ends().size(), 1u);
    EXPECT_EQ(processed, std::vector<unsigned>());
    EXPECT_TRUE(Run(Command::Start));
}

TEST_F(SensorCommandsTest, MayGoWhileATriggerWaits) {
    Trigger();
    commands->OperationEnded(yOK);
    commands = nullptr;
    loop.Advance(10s);
    EXPECT_EQ(Ends(), Statuses());
}

TEST_F(SensorCommandsTest, ReadsTheStateOnTheMainLoop) {
    VorControl::IControlSystemInterface::SystemStats stats;
    stats.runState = 1;
    stats.loadedJob = "demo.vrjob";
    environ.dataCache.SetStats(stats);
    VorControl::IControlScanEngineInterface::ScannerStateInfo info;
    info.alignmentState = 2;
    environ.dataCache.SetInfo(info);
    std::vector<SensorState> states;
    commands->ReadState([&](const SensorState& state) { states.push_back(state); });
    EXPECT_TRUE(states.empty());
    loop.RunReady();
    ASSERT_EQ(states.size(), 1u);
    EXPECT_EQ(states[0].status, yOK);
    EXPECT_EQ(states[0].system.value().loadedJob, "demo.vrjob");
    EXPECT_EQ(states[0].scanner.value().alignmentState, 2);
    EXPECT_EQ(environ.dataCache.NewCalls(), (std::vector<std::string>{"SystemStats 0", "ScannerInfo  0"}));
}

TEST_F(SensorCommandsTest, AStateThatCannotBeReadIsEmpty) {
    environ.dataCache.FailScannerInfo(yERROR_NOT_FOUND);
    const SensorState state = commands->LastState();
    EXPECT_TRUE(state.system);
    EXPECT_FALSE(state.scanner);
    EXPECT_EQ(state.status, yERROR_NOT_FOUND);
}

} // namespace
} // namespace Services::Common
