#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeScanner.h"
#include "Tests/VorControl/Control/ControlDataCacheFixture.h"

#include <memory>

using Tests::Elsewhere;
using Tests::FakeSystem;
using Tests::LongWait;
using Tests::ScannerFlagText;
using Tests::ShortWait;
using VorControl::ControlDataCache;

namespace {

using Info = VorControl::IControlScanEngineInterface::ScannerStateInfo;

class ControlDataCacheScannerTest : public Tests::ControlDataCacheFixture {};

/// A cache of a real scanner.
class ControlDataCacheOfScannerTest : public testing::Test {
protected:
    ControlDataCacheOfScannerTest() { loop.RunReady(); } // what an earlier test left there

    struct TextResult : Vor::Params::Group {
        Vor::Params::Value<std::string> laserEnabled;
        TextResult() { Register("laserEnabled", laserEnabled); }
    };

    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    VorScan::Internal::ScanEngineManager manager;
    FakeSystem system;
    VorControl::ControlScanEngineInterface engines{&manager};
    ControlDataCache cache{system, engines};

    Info PollScanner(const std::string& id) {
        return Elsewhere([&] { return cache.ScannerInfo(id, 0); });
    }
};

} // namespace

TEST_F(ControlDataCacheOfScannerTest, WithoutAScannerTheInitialRecordStays) {
    PollScanner("");
    const Vor::LogCapture log;
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_TRUE(log.Records().empty());
    EXPECT_EQ(PollScanner("").id, "");
    EXPECT_TRUE(PollScanner("").laserEnabled);
}

TEST_F(ControlDataCacheOfScannerTest, AScannerThatTellsNothingGivesAnEmptyRecord) {
    Tests::AddEngine(manager, "scan", "scan");
    Tests::AddScanner(manager, "scan", "A");
    PollScanner("");
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(PollScanner("").id, "");
    EXPECT_FAILURE(PollScanner("A"), yERROR_NOT_FOUND, "No data found for scanner A");
}

TEST_F(ControlDataCacheOfScannerTest, AResultOfAnotherKindDoesntFreezeTheCache) {
    Tests::AddEngine(manager, "scan", "scan");
    auto& scanner = Tests::AddScanner(manager, "scan", "A");
    scanner.target.actions = {"scannerInfo"};
    scanner.target.onExecute = [](Vor::Properties::Structure&) { return std::make_shared<TextResult>(); };
    PollScanner("");
    EXPECT_EQ(loop.RunReady(), 1U);
    scanner.target.onExecute = nullptr;
    EXPECT_EQ(PollScanner("").id, "");
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(PollScanner("A").id, "A");
}

TEST_F(ControlDataCacheScannerTest, AnEmptyScannerIdTakesWhatIsThere) {
    const Info initial = PollScanner("");
    EXPECT_EQ(initial.id, "");
    EXPECT_EQ(initial.currentEncoderValue, 0);
    EXPECT_EQ(initial.currentSyncTime, 0U);
    EXPECT_EQ(initial.alignmentState, 0);
    EXPECT_TRUE(initial.laserEnabled);
    EXPECT_EQ(loop.RunReady(), 1U);
    const Info first = PollScanner("");
    EXPECT_EQ(first.id, "default");
    EXPECT_EQ(first.currentEncoderValue, 1);
    EXPECT_EQ(first.currentSyncTime, 1U);
    EXPECT_EQ(first.alignmentState, 2);
    EXPECT_FALSE(first.laserEnabled);
}

TEST_F(ControlDataCacheScannerTest, TheCopyOfAnotherScannerIsNotGiven) {
    EXPECT_FAILURE(PollScanner("B", ShortWait), yERROR_NOT_FOUND, "No data found for scanner B");
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_FAILURE(PollScanner("A", ShortWait), yERROR_NOT_FOUND, "No data found for scanner A");
    EXPECT_EQ(PollScanner("").id, "B");
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(PollScanner("A", ShortWait).id, "A");
    EXPECT_EQ(engines.queries, 2);
}

TEST_F(ControlDataCacheScannerTest, ACallerThatWaitsGetsTheScannerItAskedFor) {
    auto answer = std::async(std::launch::async, [&] { return cache->ScannerInfo("A", LongWait).id; });
    ASSERT_TRUE(loop.WaitReady());
    EXPECT_TRUE(loop.Step());
    EXPECT_EQ(answer.get(), "A");
}

TEST_F(ControlDataCacheScannerTest, AFailedScannerQueryIsSilent) {
    engines.onInfo = [] { Vor::Throw(yERROR_NOT_FOUND, "No scan engines found"); };
    PollScanner("");
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_TRUE(log.Records().empty());
    EXPECT_EQ(PollScanner("").id, "");
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_FAILURE(PollScanner("A"), yERROR_NOT_FOUND, "No data found for scanner A");
    engines.onInfo = nullptr;
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(PollScanner("A").id, "A");
}

TEST_F(ControlDataCacheScannerTest, AScannerQueueThatFailsInTheQueryEndsItSilently) {
    PollScanner("");
    faults.SetHere("yMsgQueue_Remove", yERROR_STATE);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_TRUE(log.Records().empty());
    PollScanner("");
    faults.SetHere("yMsgQueue_AddEx", yERROR_FULL);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(log.Records().size(), 1U);
    EXPECT_TRUE(log.Contains(Vor::LevelError, ScannerFlagText));
    PollScanner("");
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(PollScanner("").currentSyncTime, 3U);
}

TEST_F(ControlDataCacheScannerTest, AScannerAnswerThatNobodyTookIsRenewed) {
    PollScanner("");
    loop.RunReady();
    Elsewhere([&] {
        faults.SetHere("yMsgQueue_Remove", yERROR_TIMEOUT, 0, 2);
        EXPECT_EQ(cache->ScannerInfo("", 0).id, "");
    });
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(PollScanner("").currentSyncTime, 2U);
}
