#include "VorControl/Control/ControlScanEngineInterface.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeScanner.h"
#include "Vor/Logging.h"
#include "VorApi/Params/PropertyValue.h"

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using Tests::AddEngine;
using Tests::AddScanner;
using Tests::FakeScanner;
using VorControl::ControlScanEngineInterface;
using VorScan::AlignState;
using VorScan::Internal::ScanEngineManager;

namespace {

using Info = VorControl::IControlScanEngineInterface::ScannerStateInfo;

/// The parameters of "blinkLed".
struct BlinkParams : Vor::Params::Group {
    Vor::Params::Value<bool> ledBlinkEnabled{false};
    Vor::Params::Value<bool> ledLightOn{false};

    BlinkParams() {
        Register("ledBlinkEnabled", ledBlinkEnabled);
        Register("ledLightOn", ledLightOn);
    }
};

/// The result of "scannerInfo": the members that a test adds.
struct InfoResult : Vor::Params::Group {
    Vor::Params::Value<bool> laserEnabled{true};
    Vor::Params::Value<long long> encoder{0};
    Vor::Params::Value<unsigned long long> syncTime{0};
    Vor::Params::Value<std::string> text;

    static std::shared_ptr<InfoResult> Complete(bool laser, long long encoder, unsigned long long syncTime) {
        auto result = std::make_shared<InfoResult>();
        result->Register("laserEnabled", result->laserEnabled);
        result->Register("currentEncoderValue", result->encoder);
        result->Register("currentSyncTime", result->syncTime);
        result->laserEnabled = laser;
        result->encoder = encoder;
        result->syncTime = syncTime;
        return result;
    }

    static std::shared_ptr<InfoResult> WithText(const std::string& name) {
        auto result = std::make_shared<InfoResult>();
        result->Register(name, result->text);
        result->text = "12";
        return result;
    }
};

/// A value that is null in a document.
class NullValue : public Vor::Properties::Internal::ValueBase {
public:
    void ReadValue(Vor::Properties::IValueReader&, Vor::Event<>&) override {}
    void WriteValue(Vor::Properties::IValueWriter&) const override {}
    void ValidateValue(Vor::Properties::IValueReader&) const override {}
};

struct NullResult : Vor::Params::Group {
    NullValue laserEnabled;
    NullValue encoder;
    NullValue syncTime;

    NullResult() {
        Structure::Register("laserEnabled", laserEnabled);
        Structure::Register("currentEncoderValue", encoder);
        Structure::Register("currentSyncTime", syncTime);
    }
};

/// One engine of id and type "scan" with a scanner "S1".
class ControlScanEngineInterfaceTest : public testing::Test {
protected:
    ScanEngineManager manager;
    Tests::FakeScanEngine& engine = AddEngine(manager, "scan", "scan");
    FakeScanner& scanner = AddScanner(manager, "scan", "S1");
    ControlScanEngineInterface subject{&manager};
    Vor::LogCapture log;
};

bool Contains(const Vor::LogCapture& log, const std::string& part) {
    for (const auto& record : log.Records()) {
        if (record.level == Vor::LevelError && record.text.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

} // namespace

TEST_F(ControlScanEngineInterfaceTest, ATriggerIsAnActionWithTheParametersOfTheScanner) {
    scanner.target.actions = {"other", "trigger"};
    const Vor::Properties::Structure* executed = nullptr;
    scanner.target.onExecute = [&](Vor::Properties::Structure& parameters) {
        executed = &parameters;
        return nullptr;
    };

    subject.SoftwareTrigger("");

    EXPECT_THAT(scanner.target.calls, ElementsAre("ActionParameters trigger", "ExecuteAction trigger"));
    EXPECT_EQ(executed, scanner.target.lastParameters.get());
    EXPECT_EQ(log.Count(Vor::LevelInfo, "Attempting software trigger for scanner S1"), 1U);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlScanEngineInterfaceTest, AScannerWithoutTriggerIsRefused) {
    scanner.target.actions = {"Trigger", "triggers"};
    EXPECT_FAILURE(subject.SoftwareTrigger("S1"), yERROR_COMMAND,
                   "Software trigger operation is not supported by scanner S1");
    EXPECT_THAT(scanner.target.calls, IsEmpty());
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Attempting software trigger for scanner S1"));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Failed to initiate software trigger operation for scanner S1"));
    EXPECT_TRUE(Contains(log, "Software trigger operation is not supported by scanner S1"));
    EXPECT_TRUE(Contains(log, "Back trace of status -998"));
}

TEST_F(ControlScanEngineInterfaceTest, ATriggerWithoutParametersIsRefused) {
    scanner.target.actions = {"trigger"};
    scanner.target.onParameters = [] { return nullptr; };
    EXPECT_FAILURE(subject.SoftwareTrigger(""), yERROR_PARAMETER, "Action parameters returned a nullptr.");
    EXPECT_THAT(scanner.target.calls, ElementsAre("ActionParameters trigger"));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Failed to initiate software trigger operation for scanner "));
}

TEST_F(ControlScanEngineInterfaceTest, AScannerThatTakesNoActionsCantBeTriggered) {
    scanner.hasActions = false;
    EXPECT_FAILURE(subject.SoftwareTrigger(""), yERROR_UNIMPLEMENTED, "No actions supported by scanner S1");
    EXPECT_FALSE(log.Contains("Attempting software trigger for scanner S1"));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Failed to initiate software trigger operation for scanner "));
}

TEST_F(ControlScanEngineInterfaceTest, AFailedTriggerIsLoggedAndPassedOn) {
    scanner.target.actions = {"trigger"};
    scanner.target.onExecute = [](Vor::Properties::Structure&) -> Tests::FakeTarget::Result {
        Vor::Throw(yERROR_FULL, "no frame");
    };
    EXPECT_FAILURE(subject.SoftwareTrigger("S1"), yERROR_FULL, "no frame");
    EXPECT_EQ(log.Count(Vor::LevelError, "Failed to initiate software trigger operation for scanner S1"), 1U);
    EXPECT_TRUE(Contains(log, "exception with status -977: no frame"));
    EXPECT_TRUE(Contains(log, "Back trace of status -977"));
}

TEST_F(ControlScanEngineInterfaceTest, AnotherExceptionOfTheScannerPassesUnlogged) {
    scanner.target.actions = {"trigger"};
    scanner.target.commands = {"align"};
    scanner.target.onExecute = [](Vor::Properties::Structure&) -> Tests::FakeTarget::Result {
        throw std::runtime_error("other");
    };
    EXPECT_THROW(subject.SoftwareTrigger(""), std::runtime_error);
    EXPECT_THROW(subject.Alignment(""), std::runtime_error);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlScanEngineInterfaceTest, AlignmentGoesThroughTheCommandTarget) {
    scanner.hasActions = false;
    scanner.target.commands = {"clearAlign", "align"};
    subject.Alignment("S1");
    EXPECT_THAT(scanner.target.calls, ElementsAre("GetCommandParams align", "InvokeCommand align"));
    EXPECT_EQ(log.Count(Vor::LevelInfo, "Attempting alignment for scanner S1"), 1U);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlScanEngineInterfaceTest, ClearingTheAlignmentGoesThroughTheCommandTarget) {
    scanner.target.commands = {"align", "clearAlign"};
    subject.ClearAlignment("");
    EXPECT_THAT(scanner.target.calls, ElementsAre("GetCommandParams clearAlign", "InvokeCommand clearAlign"));
    EXPECT_EQ(log.Count(Vor::LevelInfo, "Attempting clear alignment for scanner S1"), 1U);
}

TEST_F(ControlScanEngineInterfaceTest, AScannerThatCantAlignIsRefused) {
    scanner.target.actions = {"align", "clearAlign"};
    EXPECT_FAILURE(subject.Alignment("S1"), yERROR_COMMAND, "No support for alignment by scanner S1");
    EXPECT_FAILURE(subject.ClearAlignment("S1"), yERROR_COMMAND, "No support for clear alignment by scanner S1");
    EXPECT_THAT(scanner.target.calls, IsEmpty());
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Attempting alignment for scanner S1"));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Failed alignment for scanner S1"));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Failed clear alignment for scanner S1"));
    EXPECT_TRUE(Contains(log, "No support for alignment by scanner S1"));
    EXPECT_TRUE(Contains(log, "Back trace of status -998"));
}

TEST_F(ControlScanEngineInterfaceTest, AScannerThatTakesNoCommandsCantAlign) {
    scanner.hasCommands = false;
    EXPECT_FAILURE(subject.Alignment(""), yERROR_UNIMPLEMENTED, "No commands supported by scanner S1");
    EXPECT_FALSE(log.Contains("Attempting alignment for scanner S1"));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Failed alignment for scanner "));
}

TEST_F(ControlScanEngineInterfaceTest, AnAlignmentWithoutParametersIsRefused) {
    scanner.target.commands = {"align"};
    scanner.target.hasCommandParams = false;
    EXPECT_TEXTLESS_FAILURE(subject.Alignment("S1"), yERROR_PARAMETER);
    EXPECT_THAT(scanner.target.calls, ElementsAre("GetCommandParams align"));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Failed alignment for scanner S1"));
}

TEST_F(ControlScanEngineInterfaceTest, AFailedAlignmentIsLoggedWithTheIdThatWasAskedFor) {
    scanner.target.commands = {"align"};
    scanner.target.onExecute = [](Vor::Properties::Structure&) -> Tests::FakeTarget::Result {
        Vor::Throw(yERROR_BUSY, "aligning already");
    };
    EXPECT_FAILURE(subject.Alignment(""), yERROR_BUSY, "aligning already");
    EXPECT_EQ(log.Count(Vor::LevelError, "Failed alignment for scanner "), 1U);
    EXPECT_FAILURE(subject.Alignment("gone"), yERROR_NOT_FOUND,
                   Tests::FailureOf([&] { manager.GetInstance("scan").FindScanner("gone"); })->text);
    EXPECT_EQ(log.Count(Vor::LevelError, "Failed alignment for scanner gone"), 1U);
}

TEST_F(ControlScanEngineInterfaceTest, BlinkingSetsBothParameters) {
    scanner.target.actions = {"blinkLed"};
    scanner.target.onParameters = [] { return std::make_shared<BlinkParams>(); };
    std::vector<std::pair<bool, bool>> executed;
    scanner.target.onExecute = [&](Vor::Properties::Structure& parameters) {
        const auto& params = dynamic_cast<BlinkParams&>(parameters);
        executed.emplace_back(params.ledBlinkEnabled.Get(), params.ledLightOn.Get());
        return nullptr;
    };

    subject.BlinkLed(true, false);
    subject.BlinkLed(false, true);

    EXPECT_THAT(executed, ElementsAre(std::pair(true, false), std::pair(false, true)));
    EXPECT_THAT(scanner.target.calls, ElementsAre("ActionParameters blinkLed", "ExecuteAction blinkLed",
                                                  "ActionParameters blinkLed", "ExecuteAction blinkLed"));
}

TEST_F(ControlScanEngineInterfaceTest, BlinkingIsForTheDefaultScanner) {
    FakeScanner& second = AddScanner(manager, "scan", "S2");
    second.target.actions = {"blinkLed"};
    subject.BlinkLed(true, true);
    EXPECT_THAT(scanner.target.calls, IsEmpty());
    EXPECT_THAT(second.target.calls, IsEmpty());
    EXPECT_THAT(log.Records(), IsEmpty());
}

TEST_F(ControlScanEngineInterfaceTest, BlinkingWithoutItsParametersFails) {
    scanner.target.actions = {"blinkLed"};
    scanner.target.onParameters = [] { return nullptr; };
    EXPECT_FAILURE(subject.BlinkLed(true, true), yERROR_PARAMETER, "Action parameters returned a nullptr.");
    scanner.target.onParameters = [] { return std::make_shared<Vor::Params::Group>(); };
    EXPECT_EQ(Tests::FailureOf([&] { subject.BlinkLed(true, true); })->status, yERROR_NOT_FOUND);
    scanner.target.onParameters = [] { return InfoResult::WithText("ledBlinkEnabled"); };
    EXPECT_THROW(subject.BlinkLed(true, true), std::bad_cast);
    scanner.hasActions = false;
    EXPECT_FAILURE(subject.BlinkLed(true, true), yERROR_UNIMPLEMENTED, "No actions supported by scanner S1");
    EXPECT_THAT(scanner.target.calls, testing::Not(testing::Contains("ExecuteAction blinkLed")));
}

TEST_F(ControlScanEngineInterfaceTest, TheCompletionEventIsTheScanners) {
    FakeScanner& second = AddScanner(manager, "scan", "S2");
    EXPECT_EQ(&subject.AlignmentCompletedEvent(""), &scanner.alignmentCompleted);
    EXPECT_EQ(&subject.AlignmentCompletedEvent("S2"), &second.alignmentCompleted);
}

TEST_F(ControlScanEngineInterfaceTest, TheCompletionEventOfAMissingScannerIsLogged) {
    const auto failure = Tests::FailureOf([&] { subject.AlignmentCompletedEvent("gone"); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_NOT_FOUND);
    EXPECT_EQ(log.Count(Vor::LevelError, "Failed to get alignment complete event for scanner gone"), 1U);
    EXPECT_TRUE(Contains(log, "exception with status -999"));
    EXPECT_FALSE(Contains(log, "Back trace"));
}

TEST_F(ControlScanEngineInterfaceTest, TheStateOfAScannerIsReadByAnAction) {
    scanner.target.actions = {"scannerInfo"};
    scanner.alignmentState = AlignState::Aligning;
    scanner.target.onExecute = [](Vor::Properties::Structure&) { return InfoResult::Complete(false, -7, 1024); };
    Info info;

    subject.ScannerInfo("", info);

    EXPECT_THAT(scanner.target.calls, ElementsAre("ActionParameters scannerInfo", "ExecuteAction scannerInfo"));
    EXPECT_EQ(info.id, "S1");
    EXPECT_FALSE(info.laserEnabled);
    EXPECT_EQ(info.currentEncoderValue, -7);
    EXPECT_EQ(info.currentSyncTime, 1000U);
    EXPECT_EQ(info.alignmentState, 2);
}

TEST_F(ControlScanEngineInterfaceTest, TheStateOfAScannerKeepsTheLimitsOfItsTypes) {
    scanner.target.actions = {"scannerInfo"};
    const auto read = [&](long long encoder, unsigned long long syncTime) {
        scanner.target.onExecute = [=](Vor::Properties::Structure&) {
            return InfoResult::Complete(true, encoder, syncTime);
        };
        Info info;
        subject.ScannerInfo("S1", info);
        return info;
    };
    constexpr long long Least = std::numeric_limits<long long>::min();
    constexpr long long Most = std::numeric_limits<long long>::max();
    EXPECT_EQ(read(Least, 0).currentEncoderValue, Least);
    EXPECT_EQ(read(Most, 0).currentEncoderValue, Most);
    EXPECT_EQ(read(0, 0).currentSyncTime, 0U);
    EXPECT_EQ(read(0, 1).currentSyncTime, 0U);
    EXPECT_EQ(read(0, 2).currentSyncTime, 1U);
    EXPECT_EQ(read(0, 1025).currentSyncTime, 1000U);
    // The top bits of the product are lost: 2^63 * 1000 is a multiple of 2^64, and all ones count as -1.
    EXPECT_EQ(read(0, 0x8000000000000000ULL).currentSyncTime, 0U);
    EXPECT_EQ(read(0, 0xFFFFFFFFFFFFFFFFULL).currentSyncTime, 0xFFFFFFFFFFFFFC18ULL >> 10);
}

TEST_F(ControlScanEngineInterfaceTest, WhatTheScannerDoesntReportHasItsNullValue) {
    scanner.target.actions = {"scannerInfo"};
    for (const auto& result : {std::make_shared<Vor::Params::Group>(),
                               std::shared_ptr<Vor::Params::Group>(std::make_shared<NullResult>())}) {
        scanner.target.onExecute = [&](Vor::Properties::Structure&) { return result; };
        Info info;
        info.laserEnabled = false;
        subject.ScannerInfo("", info);
        EXPECT_EQ(info.id, "S1");
        EXPECT_TRUE(info.laserEnabled);
        EXPECT_EQ(info.currentEncoderValue, std::numeric_limits<std::int64_t>::min());
        EXPECT_EQ(info.currentSyncTime, 0xFFFFFFFFFFFFFFFFULL);
        EXPECT_EQ(info.alignmentState, 0);
    }
}

TEST_F(ControlScanEngineInterfaceTest, AScannerThatTellsNothingLeavesTheRecord) {
    scanner.alignmentState = AlignState::Aligned;
    Info info{.id = "old", .currentEncoderValue = 5, .currentSyncTime = 6, .alignmentState = 2, .laserEnabled = false};
    subject.ScannerInfo("S1", info);
    EXPECT_EQ(info.id, "old");
    EXPECT_EQ(info.currentEncoderValue, 5);
    EXPECT_EQ(info.currentSyncTime, 6U);
    EXPECT_EQ(info.alignmentState, 2);
    EXPECT_FALSE(info.laserEnabled);
    EXPECT_THAT(scanner.target.calls, IsEmpty());
}

TEST_F(ControlScanEngineInterfaceTest, TheStateOfAScannerWithoutParametersOrTargetFails) {
    scanner.target.actions = {"scannerInfo"};
    scanner.target.onParameters = [] { return nullptr; };
    Info info;
    EXPECT_FAILURE(subject.ScannerInfo("", info), yERROR_PARAMETER, "Action parameters returned a nullptr.");
    scanner.hasActions = false;
    EXPECT_FAILURE(subject.ScannerInfo("", info), yERROR_UNIMPLEMENTED, "No actions supported by scanner S1");
    EXPECT_EQ(info.id, "");
}

TEST_F(ControlScanEngineInterfaceTest, AMissingResultFailsAsAFormatErrorAndLeavesTheRecord) {
    scanner.target.actions = {"scannerInfo"};
    scanner.target.onExecute = [](Vor::Properties::Structure&) { return nullptr; };
    Info info;
    EXPECT_TEXTLESS_FAILURE(subject.ScannerInfo("", info), yERROR_FORMAT);
    EXPECT_EQ(info.id, "");
}

TEST_F(ControlScanEngineInterfaceTest, AResultOfAnotherKindFailsAsAFormatError) {
    scanner.target.actions = {"scannerInfo"};
    for (const char* const key : {"laserEnabled", "currentEncoderValue", "currentSyncTime"}) {
        scanner.target.onExecute = [&](Vor::Properties::Structure&) { return InfoResult::WithText(key); };
        Info info;
        EXPECT_TEXTLESS_FAILURE(subject.ScannerInfo("", info), yERROR_FORMAT);
    }
}

TEST_F(ControlScanEngineInterfaceTest, AnAlignmentStateThatIsNoneIsLoggedAndReadAsZero) {
    scanner.target.actions = {"scannerInfo"};
    const auto read = [&](std::int32_t state) {
        scanner.alignmentState = static_cast<AlignState>(state);
        Info info;
        subject.ScannerInfo("", info);
        return info.alignmentState;
    };
    EXPECT_EQ(read(0), 0);
    EXPECT_EQ(read(1), 1);
    EXPECT_EQ(read(2), 2);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
    EXPECT_EQ(read(3), 0);
    EXPECT_EQ(log.Count(Vor::LevelError, "The scan align state 3 read from scanner is invalid"), 1U);
    EXPECT_EQ(read(-1), 0);
    EXPECT_EQ(log.Count(Vor::LevelError, "The scan align state 4294967295 read from scanner is invalid"), 1U);
}
