#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/MainLoopThread.h"
#include "Tests/Support/Signal.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/UserData/UdiCache.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using Vor::UserData::UdiCache;
using namespace VorControl::ControlProtocol;

namespace {

/// A service that records the ends of its operations and the command status in them.
class CommandService : public ProtocolBase {
public:
    explicit CommandService(const ControlProtocolEnviron& environ)
        : ProtocolBase(environ) {}
    ~CommandService() override { StopOperationEndEvents(); }

    void Start() override {}
    void Stop() override {}

    using ProtocolBase::GetCommandStatus;
    using ProtocolBase::IsDuplicateCommand;
    using ProtocolBase::OpEndEventHandler;
    using ProtocolBase::OperationCompleted;
    using ProtocolBase::OperationInProgress;
    using ProtocolBase::ProcessReceivedCommonCommands;
    using ProtocolBase::SetOperationInProgress;
    using ProtocolBase::StopOperationEndEvents;

    struct End {
        int status;
        int commandStatus;
        bool inProgress;

        bool operator==(const End&) const = default;
    };

    std::vector<End> Ends() const {
        const std::lock_guard guard(mutex);
        return ends;
    }

    Tests::Signal ended;
    std::function<void(int)> onEnd;

protected:
    void OperationEndEventImpl(int status) override {
        {
            const std::lock_guard guard(mutex);
            ends.push_back({status, GetCommandStatus(), OperationInProgress()});
        }
        ended.Set();
        if (onEnd) {
            onEnd(status);
        }
    }

private:
    mutable std::mutex mutex; ///< guards `ends`
    std::vector<End> ends;
};

using Ends = std::vector<CommandService::End>;

ControlRegisterCommandData Command(std::uint8_t id, const std::string& text = "") {
    ControlRegisterCommandData data;
    data.commandId = id;
    std::copy(text.begin(), text.end(), data.commandArgs.begin());
    return data;
}

class ProtocolCommandsTest : public testing::Test {
protected:
    ProtocolCommandsTest() { UdiCache::GetInstance().Clear(); }
    ~ProtocolCommandsTest() override { UdiCache::GetInstance().Clear(); }

    /// Passes the command in and waits for its end.
    void Run(const ControlRegisterCommandData& data) {
        service.ProcessReceivedCommonCommands(data);
        ASSERT_TRUE(service.ended.Wait());
    }

    Vor::LogCapture log;
    Tests::HostEnviron environ;
    Tests::MainLoopThread mainLoop;
    CommandService service{environ.Record("type", "Display")};
};

} // namespace

TEST_F(ProtocolCommandsTest, NoCommandHasCompletedAtFirst) {
    EXPECT_EQ(service.GetCommandStatus(), 0);
    EXPECT_EQ(service.CompletedOperationStatus(), 0);
    EXPECT_FALSE(service.OperationInProgress());
}

TEST_F(ProtocolCommandsTest, NoCommandSucceedsAtOnce) {
    service.ProcessReceivedCommonCommands(Command(0));
    EXPECT_EQ(service.Ends(), (Ends{{yOK, 2, false}}));
    EXPECT_EQ(service.GetCommandStatus(), 2);
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "NO COMMAND received. No processing done."));
    EXPECT_TRUE(environ.system.NewCalls().empty());
}

TEST_F(ProtocolCommandsTest, AStartStartsTheScan) {
    Run(Command(1));
    EXPECT_EQ(service.Ends(), (Ends{{yOK, 2, false}}));
    EXPECT_EQ(environ.system.NewCalls(), std::vector<std::string>{"Start"});
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Processing START command"));
}

TEST_F(ProtocolCommandsTest, AStopStopsTheScan) {
    Run(Command(2));
    EXPECT_EQ(service.Ends(), (Ends{{yOK, 2, false}}));
    EXPECT_EQ(environ.system.NewCalls(), std::vector<std::string>{"Stop"});
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Processing STOP command"));
}

TEST_F(ProtocolCommandsTest, AnAlignEndsWhenTheScannerSaysSo) {
    Tests::Signal aligning;
    environ.scanEngine.OnCall([&](const std::string& call) {
        if (call == "Alignment scanner 1") {
            aligning.Set();
        }
    });
    service.ProcessReceivedCommonCommands(Command(3, "scanner 1"));
    ASSERT_TRUE(aligning.Wait());
    EXPECT_EQ(service.GetCommandStatus(), 1);
    EXPECT_TRUE(service.Ends().empty());
    environ.scanEngine.completed.Raise(VorScan::AlignCompletionStatus::Succeeded);
    ASSERT_TRUE(service.ended.Wait());
    EXPECT_EQ(service.Ends(), (Ends{{yOK, 2, false}}));
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Processing ALIGN command"));
}

TEST_F(ProtocolCommandsTest, AClearAlignClearsTheAlignmentOfTheScanner) {
    Run(Command(4, "scanner 1"));
    EXPECT_EQ(environ.scanEngine.NewCalls(), std::vector<std::string>{"ClearAlignment scanner 1"});
    EXPECT_EQ(service.GetCommandStatus(), 2);
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Processing CLEAR ALIGN command"));
}

TEST_F(ProtocolCommandsTest, ALoadJobLoadsTheJob) {
    Run(Command(5, "shelf"));
    EXPECT_EQ(environ.system.NewCalls(), std::vector<std::string>{"LoadJob shelf"});
    EXPECT_EQ(service.GetCommandStatus(), 2);
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Processing LOAD JOB command"));
}

TEST_F(ProtocolCommandsTest, ASoftwareTriggerTriggersTheScanner) {
    Run(Command(6, ""));
    EXPECT_EQ(environ.scanEngine.NewCalls(), std::vector<std::string>{"SoftwareTrigger "});
    EXPECT_EQ(service.GetCommandStatus(), 2);
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Processing SOFTWARE TRIGGER command"));
}

TEST_F(ProtocolCommandsTest, UserDataAreWrittenAtOnce) {
    ControlRegisterCommandData data = Command(9, "abc");
    data.commandArgs[4] = 'e';
    data.SetCommandArgsSize(5);
    service.ProcessReceivedCommonCommands(data);
    EXPECT_EQ(service.Ends(), (Ends{{yOK, 2, false}}));
    EXPECT_EQ(UdiCache::GetInstance().Read(0, 6), (std::vector<unsigned char>{'a', 'b', 'c', 0, 'e', 0}));
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Processing SET USER DATA command"));
}

TEST_F(ProtocolCommandsTest, ShorterUserDataLeaveTheRestOfTheFormerOnes) {
    auto data = Command(9, "abcd");
    data.SetCommandArgsSize(4);
    service.ProcessReceivedCommonCommands(data);
    data = Command(9, "xyz");
    data.SetCommandArgsSize(2);
    service.ProcessReceivedCommonCommands(data);
    EXPECT_EQ(UdiCache::GetInstance().Read(0, 5), (std::vector<unsigned char>{'x', 'y', 'c', 'd', 0}));
    data.SetCommandArgsSize(0);
    service.ProcessReceivedCommonCommands(data);
    EXPECT_EQ(service.GetCommandStatus(), 2);
}

TEST_F(ProtocolCommandsTest, UserDataOfMoreBytesThanTheRecordHasFailAndChangeNothing) {
    auto data = Command(9, "abcd");
    data.commandArgsSize = 493;
    service.ProcessReceivedCommonCommands(data);
    EXPECT_EQ(service.Ends(), (Ends{{0, 3, false}}));
    EXPECT_EQ(UdiCache::GetInstance().Read(0, 4), std::vector<unsigned char>(4, 0));
    data.SetCommandArgsSize(492);
    service.ProcessReceivedCommonCommands(data);
    EXPECT_EQ(service.GetCommandStatus(), 2);
}

TEST_F(ProtocolCommandsTest, WhatIsNoCommandFailsAtOnce) {
    int told = 0;
    for (const int id : {7, 8, 10, 255}) {
        service.ProcessReceivedCommonCommands(Command(static_cast<std::uint8_t>(id)));
        ++told;
        EXPECT_EQ(service.Ends(), Ends(static_cast<std::size_t>(told), {-998, 3, false}));
        EXPECT_EQ(log.Count(Vor::LevelError, "Command Id " + std::to_string(id) + " is an invalid command"), 1U);
    }
    EXPECT_EQ(service.GetCommandStatus(), 3);
    EXPECT_TRUE(environ.system.NewCalls().empty());
}

TEST_F(ProtocolCommandsTest, AnOperationThatFailsOnTheMainLoopEndsInCommandStatus3) {
    environ.system.OnCall([](const std::string&) { Vor::Throw(-42, "no laser"); });
    Run(Command(1));
    EXPECT_EQ(service.Ends(), (Ends{{0, 3, false}}));
    EXPECT_EQ(service.GetCommandStatus(), 3);
}

TEST_F(ProtocolCommandsTest, ACommandThatTheHostRefusesFailsAndThrowsNothing) {
    environ.fakes.operations.RunSynchronousOp("other", VorControl::ControlProtocolOperations::ActionId::NeverEnd, {});
    for (const std::uint8_t id : {1, 2, 3, 4, 5, 6}) {
        log.Clear();
        service.ProcessReceivedCommonCommands(Command(id, "text"));
        const auto records = log.Records();
        ASSERT_GE(records.size(), 4U);
        EXPECT_EQ(records[1].level, Vor::LevelError);
        EXPECT_EQ(records[1].text,
                  "Failed to process the received command from Display client with command id " + std::to_string(id));
        EXPECT_NE(records[2].text.find("rejected because another operation is in progress"), std::string::npos);
        EXPECT_NE(records[3].text.find("Back trace"), std::string::npos);
        EXPECT_EQ(service.GetCommandStatus(), 3);
    }
    EXPECT_EQ(service.Ends(), Ends(6, {0, 3, false}));
}

TEST_F(ProtocolCommandsTest, AJobLoadWithoutANameFailsAtOnce) {
    service.ProcessReceivedCommonCommands(Command(5));
    EXPECT_EQ(service.Ends(), (Ends{{0, 3, false}}));
}

TEST_F(ProtocolCommandsTest, WhileACommandRunsItIsInProgressWhateverTheLastResult) {
    service.OperationCompleted(yOK);
    service.SetOperationInProgress(true);
    EXPECT_EQ(service.GetCommandStatus(), 1);
    EXPECT_EQ(service.CompletedOperationStatus(), 2);
    service.OperationCompleted(-1000);
    EXPECT_EQ(service.GetCommandStatus(), 3);
    service.SetOperationInProgress(true);
    EXPECT_EQ(service.GetCommandStatus(), 1);
    EXPECT_EQ(service.CompletedOperationStatus(), 3);
}

TEST_F(ProtocolCommandsTest, OnlyOkIsASuccess) {
    for (const auto& [status, commandStatus] : {std::pair{1, 2}, {0, 3}, {-1, 3}, {-1000, 3}, {2, 3}}) {
        service.OpEndEventHandler(status);
        EXPECT_EQ(service.Ends().back(), (CommandService::End{status, commandStatus, false}));
    }
}

TEST_F(ProtocolCommandsTest, ASecondCommandOfTheServiceFailsAndHidesTheFirstUntilItEnds) {
    Tests::Signal started;
    Tests::Signal release;
    environ.system.OnCall([&](const std::string&) {
        started.Set();
        release.Wait();
    });
    service.ProcessReceivedCommonCommands(Command(1));
    ASSERT_TRUE(started.Wait());
    EXPECT_TRUE(service.OperationInProgress());
    service.ProcessReceivedCommonCommands(Command(2));
    EXPECT_EQ(service.Ends(), (Ends{{0, 3, false}}));
    EXPECT_FALSE(service.OperationInProgress());
    Tests::Signal firstEnded;
    service.onEnd = [&](int) { firstEnded.Set(); };
    release.Set();
    ASSERT_TRUE(firstEnded.Wait());
    EXPECT_EQ(service.Ends(), (Ends{{0, 3, false}, {yOK, 2, false}}));
    EXPECT_EQ(environ.system.NewCalls(), std::vector<std::string>{"Start"});
}

TEST_F(ProtocolCommandsTest, TheNextCommandMayBeGivenAtTheEndOfTheFormer) {
    Tests::Signal secondEnded;
    service.onEnd = [&, first = true](int) mutable {
        if (std::exchange(first, false)) {
            service.ProcessReceivedCommonCommands(Command(2));
        } else {
            secondEnded.Set();
        }
    };
    service.ProcessReceivedCommonCommands(Command(1));
    ASSERT_TRUE(secondEnded.Wait());
    EXPECT_EQ(service.Ends(), (Ends{{yOK, 2, false}, {yOK, 2, false}}));
    EXPECT_EQ(environ.system.NewCalls(), (std::vector<std::string>{"Start", "Stop"}));
}

TEST_F(ProtocolCommandsTest, AnEndThatThrowsAStandardExceptionIsToldAgainAsAFailure) {
    service.onEnd = [first = true](int) mutable {
        if (std::exchange(first, false)) {
            throw std::runtime_error("client gone");
        }
    };
    service.ProcessReceivedCommonCommands(Command(0));
    EXPECT_EQ(service.Ends(), (Ends{{yOK, 2, false}, {0, 3, false}}));
    EXPECT_TRUE(
        log.Contains(Vor::LevelError, "Failed to process the received command from Display client with command id 0"));
}

TEST_F(ProtocolCommandsTest, AnExceptionOfAnotherTypePassesOn) {
    service.onEnd = [](int) { throw 42; };
    EXPECT_THROW(service.ProcessReceivedCommonCommands(Command(7)), int);
    EXPECT_EQ(service.Ends(), (Ends{{-998, 3, false}}));
}

TEST_F(ProtocolCommandsTest, ATextThatFillsTheArgumentsWithoutAnEndIsTakenWhole) {
    const std::string name(492, 'n');
    Run(Command(5, name));
    EXPECT_EQ(environ.system.NewCalls(), std::vector<std::string>{"LoadJob " + name});
    EXPECT_TRUE(CommandService::IsDuplicateCommand(Command(5, name), Command(5, name)));
    EXPECT_FALSE(CommandService::IsDuplicateCommand(Command(5, name), Command(5, name.substr(1))));
    EXPECT_FALSE(CommandService::IsDuplicateCommand(Command(5, name.substr(1)), Command(5, name)));
}

TEST_F(ProtocolCommandsTest, DuplicatesHaveTheSameIdAndWhereItHasOneTheSameText) {
    for (const std::uint8_t id : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 255}) {
        SCOPED_TRACE(static_cast<int>(id));
        const bool hasText = id >= 3 && id <= 6;
        EXPECT_TRUE(CommandService::IsDuplicateCommand(Command(id, "a"), Command(id, "a")));
        EXPECT_EQ(CommandService::IsDuplicateCommand(Command(id, "a"), Command(id, "b")), !hasText);
        EXPECT_FALSE(CommandService::IsDuplicateCommand(Command(id, "a"), Command(id == 0 ? 1 : id - 1, "a")));
    }
    auto last = Command(5, "a");
    auto current = Command(5, "a");
    last.requestWord = 1;
    current.requestWord = 2;
    EXPECT_TRUE(CommandService::IsDuplicateCommand(last, current));
    current.commandArgs[2] = 'x';
    EXPECT_TRUE(CommandService::IsDuplicateCommand(last, current));
}

TEST_F(ProtocolCommandsTest, AnEndComesOnlyToTheServiceThatStartedTheOperation) {
    CommandService other(environ.Record("other", "Other"));
    Run(Command(1));
    EXPECT_TRUE(other.Ends().empty());
    EXPECT_EQ(other.GetCommandStatus(), 0);
}

TEST_F(ProtocolCommandsTest, AServiceThatIsGoneHearsOfNoEnd) {
    Tests::Signal started;
    Tests::Signal release;
    environ.system.OnCall([&](const std::string& call) {
        if (call == "Start") {
            started.Set();
            release.Wait();
        }
    });
    {
        CommandService going(environ.Record("going", "Going"));
        going.ProcessReceivedCommonCommands(Command(1));
        ASSERT_TRUE(started.Wait());
    }
    CommandService second(environ.Record("going", "Going"));
    release.Set();
    ASSERT_TRUE(second.ended.Wait());
    EXPECT_EQ(second.Ends(), (Ends{{yOK, 2, false}}));
}

TEST_F(ProtocolCommandsTest, WithTheEventsStoppedNoEndComes) {
    service.StopOperationEndEvents();
    service.StopOperationEndEvents();
    Tests::Signal ended;
    auto callback = environ.host.AddOpEndEventHandler("type", [&](int) { ended.Set(); });
    service.ProcessReceivedCommonCommands(Command(1));
    ASSERT_TRUE(ended.Wait());
    EXPECT_TRUE(service.Ends().empty());
    EXPECT_EQ(service.GetCommandStatus(), 1);
    environ.host.RemoveOpEndEventHandler("type", callback);
}

TEST_F(ProtocolCommandsTest, ServicesMayGoAtAnyTimeOfTheirCommands) {
    for (int i = 0; i < 50; ++i) {
        CommandService going(environ.Record("going " + std::to_string(i), "Going"));
        going.ProcessReceivedCommonCommands(Command(1));
    }
    EXPECT_FALSE(environ.system.NewCalls().empty());
}
