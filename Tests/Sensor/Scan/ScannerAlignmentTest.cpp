#include "Sensor/Scan/ScannerAlignment.h"

#include "Tests/Support/Failure.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Scan {
namespace {

using namespace std::chrono_literals;
using VorScan::AlignCompletionStatus;
using VorScan::AlignState;

class ScannerAlignmentTest : public testing::Test {
protected:
    void Make(AlignOutcome outcome, std::chrono::milliseconds time = 500ms) {
        alignment = std::make_unique<ScannerAlignment>(ScannerAlignment::Settings{.time = time, .outcome = outcome});
        alignment->SetStateUpdated([this] { events.push_back("state " + State()); });
        alignment->CompletedEvent().Add([this](AlignCompletionStatus status) {
            events.push_back((status == AlignCompletionStatus::Succeeded ? "succeeded, " : "failed, ") + State());
        });
    }

    std::string State() const { return std::to_string(static_cast<int>(alignment->State().Get())); }

    void Invoke(const std::string& id) { alignment->InvokeCommand(id, *alignment->GetCommandParams(id)); }

    /// Returns the events since the last call.
    std::vector<std::string> Events() { return std::exchange(events, {}); }

    using Lines = std::vector<std::string>;
    Vor::LogCapture log;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    std::unique_ptr<ScannerAlignment> alignment;

private:
    Lines events;
};

TEST_F(ScannerAlignmentTest, ListsItsCommands) {
    Make(AlignOutcome::Succeed);
    std::vector<std::string> ids;
    for (const auto& command : alignment->ListCommands()) {
        ids.push_back(command.Id());
        EXPECT_TRUE(alignment->IsCommandSupported(command.Id()));
    }
    EXPECT_EQ(ids, (std::vector<std::string>{"align", "clearAlign"}));
    EXPECT_FALSE(alignment->IsCommandSupported("Align"));
    EXPECT_FAILURE(alignment->GetCommandParams("trigger"), yERROR_NOT_FOUND, "The scanner has no command 'trigger'.");
    Vor::Params::Group none;
    EXPECT_FAILURE(alignment->InvokeCommand("trigger", none), yERROR_NOT_FOUND,
                   "The scanner has no command 'trigger'.");
}

TEST_F(ScannerAlignmentTest, SucceedsWhenItsTimeIsOver) {
    Make(AlignOutcome::Succeed);
    EXPECT_EQ(alignment->State().Get(), AlignState::NotAligned);
    Invoke("align");
    EXPECT_EQ(Events(), Lines{"state 2"});
    loop.Advance(499ms);
    EXPECT_EQ(Events(), Lines());
    loop.Advance(1ms);
    EXPECT_EQ(Events(), (Lines{"state 1", "succeeded, 1"}));
    loop.Advance(10s);
    EXPECT_EQ(Events(), Lines());
}

TEST_F(ScannerAlignmentTest, FailsWhenItsTimeIsOver) {
    Make(AlignOutcome::Fail);
    Invoke("align");
    loop.Advance(500ms);
    EXPECT_EQ(Events(), (Lines{"state 2", "state 0", "failed, 0"}));
    EXPECT_TRUE(
        log.Contains(Vor::UserWarning, "The alignment has failed: the sensor was started with failing alignments."));
}

TEST_F(ScannerAlignmentTest, NeverCompletesWhenAskedTo) {
    Make(AlignOutcome::Never);
    Invoke("align");
    loop.Advance(24h);
    EXPECT_EQ(Events(), Lines{"state 2"});
}

TEST_F(ScannerAlignmentTest, CompletesOnTheMainLoopAndNotInTheCommandEvenWithoutTime) {
    Make(AlignOutcome::Succeed, 0ms);
    Invoke("align");
    EXPECT_EQ(Events(), Lines{"state 2"});
    loop.RunReady();
    EXPECT_EQ(Events(), (Lines{"state 1", "succeeded, 1"}));
}

TEST_F(ScannerAlignmentTest, RefusesASecondAlignmentWhileOneRuns) {
    Make(AlignOutcome::Succeed);
    Invoke("align");
    loop.Advance(400ms);
    EXPECT_FAILURE(Invoke("align"), yERROR_BUSY, "The scanner is aligning already.");
    loop.Advance(100ms);
    EXPECT_EQ(Events(), (Lines{"state 2", "state 1", "succeeded, 1"}));
}

TEST_F(ScannerAlignmentTest, AlignsAgainOnceAligned) {
    Make(AlignOutcome::Succeed);
    Invoke("align");
    loop.Advance(500ms);
    Events();
    Invoke("align");
    loop.Advance(500ms);
    EXPECT_EQ(Events(), (Lines{"state 2", "state 1", "succeeded, 1"}));
}

TEST_F(ScannerAlignmentTest, ClearingEndsARunningAlignmentAsFailed) {
    for (const AlignOutcome outcome : {AlignOutcome::Succeed, AlignOutcome::Never}) {
        Make(outcome);
        Invoke("align");
        Events();
        Invoke("clearAlign");
        EXPECT_EQ(Events(), (Lines{"state 0", "failed, 0"}));
        EXPECT_TRUE(log.Contains(Vor::UserWarning, "The alignment has failed: it was cleared before its end."));
        log.Clear();
        loop.Advance(10s);
        EXPECT_EQ(Events(), Lines());
    }
}

TEST_F(ScannerAlignmentTest, ClearingTakesTheAlignmentBack) {
    Make(AlignOutcome::Succeed);
    Invoke("clearAlign");
    EXPECT_EQ(Events(), Lines());
    Invoke("align");
    loop.Advance(500ms);
    Events();
    Invoke("clearAlign");
    EXPECT_EQ(Events(), Lines{"state 0"});
}

TEST_F(ScannerAlignmentTest, AHandlerMayAlignAgain) {
    Make(AlignOutcome::Fail);
    bool again = true;
    alignment->CompletedEvent().Add([&](AlignCompletionStatus) {
        if (std::exchange(again, false)) {
            Invoke("align");
        }
    });
    Invoke("align");
    loop.Advance(500ms);
    EXPECT_EQ(Events(), (Lines{"state 2", "state 0", "failed, 0", "state 2"}));
    loop.Advance(500ms);
    EXPECT_EQ(Events(), (Lines{"state 0", "failed, 0"}));
}

TEST_F(ScannerAlignmentTest, NothingComesOnceItIsGone) {
    Make(AlignOutcome::Succeed);
    Invoke("align");
    Events();
    alignment.reset();
    loop.Advance(10s);
    EXPECT_EQ(Events(), Lines());
}

} // namespace
} // namespace Sensor::Scan
