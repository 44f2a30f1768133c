#include "Sensor/Io/OutputPort.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Io {
namespace {

using namespace std::chrono_literals;
using Answer = OutputPort::Answer;

/// A port that is driven, and the moment, which the test moves. The clock begins with the scan.
class OutputPortTest : public ::testing::Test {
protected:
    OutputPortTest() { port.Enable(true, moment); }

    void Configure(const std::function<void(PortSettings&)>& change) {
        PortSettings settings = port.Settings();
        change(settings);
        port.Configure(settings, moment);
    }
    Answer Ask(bool on, long long target = 0) { return port.Ask({.on = on, .target = target}, moment); }
    /// Moves the time on without running what is due.
    void Elapse(std::chrono::microseconds time) {
        moment.now += time;
        if (moment.scanning) {
            moment.time += static_cast<std::uint64_t>(time.count());
        }
    }
    /// Runs each thing that is due at its time, as a timer does.
    void Advance(std::chrono::microseconds time) {
        const auto end = moment.now + time;
        for (auto due = port.NextDue(); due && *due <= end; due = port.NextDue()) {
            Elapse(std::chrono::duration_cast<std::chrono::microseconds>(*due - moment.now));
            port.RunDue(moment);
        }
        Elapse(std::chrono::duration_cast<std::chrono::microseconds>(end - moment.now));
    }
    void StartScan() {
        moment = {.now = moment.now, .scanning = true};
        port.OnScanChanged(moment);
    }
    void StopScan() {
        moment.scanning = false;
        port.OnScanChanged(moment);
    }
    void MakeFrame() {
        moment.frame = moment.frame ? *moment.frame + 1 : 0;
        moment.encoder = static_cast<std::int64_t>(*moment.frame) * 1000;
        port.OnFrame(moment);
    }
    /// Each edge as "+TIME" or "-TIME".
    std::vector<std::string> Edges() const {
        std::vector<std::string> texts;
        for (const OutputPort::Edge& edge : port.Edges(OutputPort::MaxEdges)) {
            texts.push_back((edge.high ? "+" : "-") + std::to_string(edge.time));
        }
        return texts;
    }
    void ExpectCounts(std::uint64_t done, std::uint64_t refused, std::uint64_t lost, std::uint64_t waiting) {
        const OutputPort::Counts counts = port.ReadCounts();
        EXPECT_EQ(counts.done, done);
        EXPECT_EQ(counts.refused, refused);
        EXPECT_EQ(counts.lost, lost);
        EXPECT_EQ(counts.waiting, waiting);
        EXPECT_EQ(counts.requests, done + refused + lost + waiting);
    }

    using Texts = std::vector<std::string>;

    std::shared_ptr<OutputPort::ChangeCount> changes = std::make_shared<OutputPort::ChangeCount>();
    OutputPort port{changes};
    OutputPort::Moment moment = {.now = OutputPort::Time(1h), .scanning = true};
};

TEST_F(OutputPortTest, ALevelStaysUntilItIsTurnedOff) {
    EXPECT_FALSE(port.LastRequest());
    EXPECT_EQ(Ask(true, 7), Answer::Taken);
    EXPECT_TRUE(port.IsOn());
    EXPECT_TRUE(port.IsHigh());
    EXPECT_EQ(port.LastRequest()->target, 7);
    EXPECT_TRUE(port.LastRequest()->on);
    Advance(1s);
    EXPECT_EQ(Ask(true), Answer::Taken) << "no edge";
    EXPECT_EQ(Ask(false), Answer::Taken);
    EXPECT_FALSE(port.IsOn());
    EXPECT_EQ(Edges(), (Texts{"+0", "-1000000"}));
    EXPECT_EQ(port.ReadCounts().rises, 1U);
    EXPECT_EQ(port.ReadCounts().falls, 1U);
    ExpectCounts(3, 0, 0, 0);
}

TEST_F(OutputPortTest, APulseEndsByItself) {
    Configure([](PortSettings& settings) {
        settings.mode = PortMode::Pulse;
        settings.pulseWidth = 300us;
    });
    Ask(true);
    Advance(299us);
    EXPECT_TRUE(port.IsOn());
    Advance(1us);
    EXPECT_FALSE(port.IsOn());
    EXPECT_FALSE(port.NextDue());
    EXPECT_EQ(Edges(), (Texts{"+0", "-300"}));
}

TEST_F(OutputPortTest, APulseIsMadeLongerByAnotherAndEndedByAnOff) {
    Configure([](PortSettings& settings) {
        settings.mode = PortMode::Pulse;
        settings.pulseWidth = 300us;
    });
    Ask(true);
    Advance(200us);
    Ask(true);
    Advance(1ms);
    EXPECT_EQ(Edges(), (Texts{"+0", "-500"}));
    Ask(true);
    Advance(100us);
    Ask(false);
    Advance(1ms);
    EXPECT_EQ(Edges(), (Texts{"+0", "-500", "+1200", "-1300"}));
    ExpectCounts(4, 0, 0, 0);
}

TEST_F(OutputPortTest, ALateTimerDoesntShortenAPulse) {
    Configure([](PortSettings& settings) {
        settings.mode = PortMode::Pulse;
        settings.pulseWidth = 300us;
        settings.delay = 100us;
    });
    Ask(true);
    Elapse(1ms);
    port.RunDue(moment);
    Advance(1ms);
    EXPECT_EQ(Edges(), (Texts{"+1000", "-1300"}));
}

TEST_F(OutputPortTest, ADelayKeepsTheOrderAndTheDistanceOfRequests) {
    Configure([](PortSettings& settings) { settings.delay = 500us; });
    Ask(true);
    Advance(100us);
    Ask(false);
    ExpectCounts(0, 0, 0, 2);
    EXPECT_FALSE(port.IsOn());
    Advance(1ms);
    EXPECT_EQ(Edges(), (Texts{"+500", "-600"}));
    ExpectCounts(2, 0, 0, 0);
}

TEST_F(OutputPortTest, AnActiveLowOutputIsOnWhileItsLineIsLow) {
    Configure([](PortSettings& settings) { settings.activeLow = true; });
    EXPECT_FALSE(port.IsOn());
    EXPECT_TRUE(port.IsHigh());
    Ask(true);
    EXPECT_TRUE(port.IsOn());
    EXPECT_FALSE(port.IsHigh());
    Configure([](PortSettings& settings) { settings.activeLow = false; });
    EXPECT_TRUE(port.IsOn());
    EXPECT_TRUE(port.IsHigh());
    EXPECT_EQ(port.ReadCounts().rises, 2U);
    EXPECT_EQ(port.ReadCounts().falls, 1U);
}

TEST_F(OutputPortTest, AnEncoderTargetIsReachedWithItsFrame) {
    Configure([](PortSettings& settings) { settings.schedule = PortSchedule::Encoder; });
    MakeFrame();
    EXPECT_EQ(Ask(true, 2000), Answer::Taken);
    EXPECT_EQ(Ask(false, 2001), Answer::Taken);
    Advance(1s);
    MakeFrame();
    EXPECT_FALSE(port.IsOn());
    ExpectCounts(0, 0, 0, 2);
    MakeFrame();
    EXPECT_TRUE(port.IsOn());
    MakeFrame();
    EXPECT_FALSE(port.IsOn());
    const auto edges = port.Edges(9);
    ASSERT_EQ(edges.size(), 2U);
    EXPECT_EQ(edges[0].frame, 2U);
    EXPECT_EQ(edges[1].frame, 3U);
    EXPECT_EQ(Ask(true, 3000), Answer::Taken) << "reached already";
    EXPECT_TRUE(port.IsOn());
    EXPECT_EQ(Ask(false, -1), Answer::Taken);
    EXPECT_FALSE(port.IsOn());
}

TEST_F(OutputPortTest, ATimeTargetIsReachedAtItsTimeWhateverTheOrderOfTheRequests) {
    Configure([](PortSettings& settings) { settings.schedule = PortSchedule::Time; });
    Advance(1ms);
    Ask(false, 3000);
    Ask(true, 2000);
    Ask(true, 500);
    EXPECT_TRUE(port.IsOn()) << "a target of the past";
    Ask(false, 1000);
    Advance(5ms);
    EXPECT_EQ(Edges(), (Texts{"+1000", "-1000", "+2000", "-3000"}));
    EXPECT_EQ(Ask(true, std::numeric_limits<long long>::max()), Answer::Taken);
    EXPECT_EQ(Ask(true, std::numeric_limits<long long>::min()), Answer::Taken);
    EXPECT_TRUE(port.IsOn());
    ExpectCounts(5, 0, 0, 1);
}

TEST_F(OutputPortTest, TheDelayBeginsAtTheTarget) {
    Configure([](PortSettings& settings) {
        settings.schedule = PortSchedule::Time;
        settings.delay = 250us;
    });
    Ask(true, 1000);
    Advance(2ms);
    Configure([](PortSettings& settings) { settings.schedule = PortSchedule::Encoder; });
    Ask(false, 1000);
    MakeFrame();
    Advance(1ms);
    MakeFrame();
    EXPECT_TRUE(port.IsOn());
    Advance(1ms);
    EXPECT_EQ(Edges(), (Texts{"+1250", "-3250"}));
}

TEST_F(OutputPortTest, TheEndOfAScanLosesItsTargetsButNoDelays) {
    Configure([](PortSettings& settings) { settings.delay = 300us; });
    Ask(true);
    Configure([](PortSettings& settings) { settings.schedule = PortSchedule::Time; });
    Ask(false, 500);
    Configure([](PortSettings& settings) { settings.schedule = PortSchedule::Encoder; });
    Ask(false, 5000);
    ExpectCounts(0, 0, 0, 3);
    Advance(100us);
    StopScan();
    ExpectCounts(0, 0, 2, 1);
    EXPECT_EQ(Ask(true, 1), Answer::NotScanning);
    Advance(1ms);
    EXPECT_TRUE(port.IsOn());
    EXPECT_EQ(Edges(), Texts{"+100"}) << "the time of the scan stands still";
    Configure([](PortSettings& settings) { settings.delay = 0us; });
    EXPECT_EQ(Ask(false, 0), Answer::Taken);
    EXPECT_FALSE(port.IsOn());
    ExpectCounts(2, 1, 2, 0);
    StartScan();
    EXPECT_EQ(Ask(true, 1000), Answer::Taken);
    MakeFrame();
    MakeFrame();
    EXPECT_TRUE(port.IsOn());
}

TEST_F(OutputPortTest, NoMoreThanTheLimitWait) {
    Configure([](PortSettings& settings) { settings.schedule = PortSchedule::Encoder; });
    for (std::size_t i = 0; i < OutputPort::MaxWaiting; ++i) {
        ASSERT_EQ(Ask(true, 1000), Answer::Taken);
    }
    EXPECT_EQ(Ask(true, 1000), Answer::Full);
    EXPECT_EQ(Ask(true, 0), Answer::Taken) << "it needn't wait";
    Configure([](PortSettings& settings) { settings.delay = 1us; });
    EXPECT_EQ(Ask(true, 0), Answer::Full);
    ExpectCounts(1, 2, 0, OutputPort::MaxWaiting);
    MakeFrame();
    MakeFrame();
    Advance(1ms);
    ExpectCounts(1 + OutputPort::MaxWaiting, 2, 0, 0);
}

TEST_F(OutputPortTest, TheLatestEdgesAreKept) {
    for (int i = 0; i < 300; ++i) {
        Ask(i % 2 == 0);
    }
    const auto edges = port.Edges(1000);
    ASSERT_EQ(edges.size(), OutputPort::MaxEdges);
    EXPECT_EQ(edges.back().number, 300U);
    EXPECT_EQ(edges.front().number, 45U);
    EXPECT_FALSE(edges.back().frame);
    ASSERT_EQ(port.Edges(2).size(), 2U);
    EXPECT_EQ(port.Edges(2).front().number, 299U);
    EXPECT_TRUE(port.Edges(0).empty());
}

TEST_F(OutputPortTest, WhileNobodyDrivesItIsIdle) {
    for (const auto& [idle, isOn] : {std::pair(PortIdle::Off, false), std::pair(PortIdle::On, true)}) {
        Configure([idle = idle](PortSettings& settings) { settings.idle = idle; });
        port.Enable(true, moment);
        Ask(!isOn);
        EXPECT_EQ(port.IsOn(), !isOn);
        port.Enable(false, moment);
        EXPECT_EQ(port.IsOn(), isOn);
        EXPECT_EQ(Ask(!isOn), Answer::NotDriven);
        EXPECT_EQ(Ask(isOn), Answer::Taken) << "it is already";
        EXPECT_EQ(port.IsOn(), isOn);
    }
    Configure([](PortSettings& settings) { settings.idle = PortIdle::Off; });
    EXPECT_FALSE(port.IsOn()) << "at once, since nobody drives it";
}

TEST_F(OutputPortTest, WhatWaitsIsLostWhenNobodyDrivesItAnyMore) {
    Configure([](PortSettings& settings) { settings.delay = 1ms; });
    Ask(true);
    port.Enable(false, moment);
    Advance(1s);
    EXPECT_EQ(Edges(), Texts{});
    ExpectCounts(0, 0, 1, 0);
}

TEST_F(OutputPortTest, AnOutputThatIsKeptStaysAsItWasAndEndsItsPulse) {
    Configure([](PortSettings& settings) { settings.idle = PortIdle::Keep; });
    Ask(true);
    port.Enable(false, moment);
    EXPECT_TRUE(port.IsOn());
    port.Enable(true, moment);
    Configure([](PortSettings& settings) { settings.mode = PortMode::Pulse; });
    Ask(true);
    port.Enable(false, moment);
    EXPECT_TRUE(port.IsOn());
    Advance(1s);
    EXPECT_FALSE(port.IsOn());
}

TEST_F(OutputPortTest, APortThatSwitchesByItselfRefusesRequests) {
    Configure([](PortSettings& settings) { settings.delay = 1ms; });
    Ask(true);
    Configure([](PortSettings& settings) { settings.behaviour = PortBehaviour::Unused; });
    EXPECT_EQ(Ask(true), Answer::SwitchesByItself);
    Advance(1s);
    EXPECT_EQ(Edges(), Texts{});
    ExpectCounts(0, 1, 1, 0);
    Configure([](PortSettings& settings) { settings.idle = PortIdle::On; });
    EXPECT_TRUE(port.IsOn());
}

TEST_F(OutputPortTest, AnOutputIsOnWhileTheSensorScans) {
    StopScan();
    Configure([](PortSettings& settings) { settings.behaviour = PortBehaviour::Scanning; });
    EXPECT_FALSE(port.IsOn());
    StartScan();
    EXPECT_TRUE(port.IsOn());
    port.Enable(false, moment);
    EXPECT_FALSE(port.IsOn());
    port.Enable(true, moment);
    EXPECT_TRUE(port.IsOn());
    StopScan();
    EXPECT_FALSE(port.IsOn());
}

TEST_F(OutputPortTest, AnOutputHasAPulseWithEachFrame) {
    Configure([](PortSettings& settings) {
        settings.behaviour = PortBehaviour::Frames;
        settings.pulseWidth = 200us;
    });
    MakeFrame();
    Advance(1ms);
    MakeFrame();
    Advance(1ms);
    port.Enable(false, moment);
    MakeFrame();
    EXPECT_EQ(Edges(), (Texts{"+0", "-200", "+1000", "-1200"}));
}

TEST_F(OutputPortTest, CountsItsChanges) {
    const auto changesBy = [&](const std::function<void()>& call) {
        const std::uint64_t before = *changes;
        call();
        return *changes - before;
    };
    EXPECT_GT(changesBy([&] { Ask(true); }), 0U);
    EXPECT_EQ(changesBy([&] { MakeFrame(); }), 0U);
    EXPECT_EQ(changesBy([&] { port.Enable(true, moment); }), 0U);
    EXPECT_GT(changesBy([&] { port.Enable(false, moment); }), 0U);
    EXPECT_GT(changesBy([&] { Configure([](PortSettings& settings) { settings.name = "x"; }); }), 0U);
    EXPECT_GT(changesBy([&] { Ask(true); }), 0U) << "refused";
}

} // namespace
} // namespace Sensor::Io
