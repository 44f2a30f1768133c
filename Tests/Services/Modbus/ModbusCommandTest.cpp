// Clients send commands to the service through its registers. The operations are real, the sensor behind them is a
// fake.

#include "Services/Modbus/ModbusProtocol.h"
#include "Tests/Services/Modbus/RawClient.h"
#include "Tests/Services/Modbus/Results.h"
#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/MainLoopThread.h"
#include "Tests/Support/ServiceProperties.h"
#include "Tests/Support/Signal.h"
#include "Tests/Support/Threads.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"
#include "Vor/UserData/UdiCache.h"
#include "yApi/yTime.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Services::Modbus {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

constexpr unsigned Command = 1000;
constexpr unsigned Answer = 1100;
constexpr unsigned System = 1200;
constexpr unsigned Scanner = 1300;

Bytes WriteRequest(unsigned address, const std::vector<unsigned>& words) {
    const Bytes values = Words(words);
    Bytes request(13);
    EncodeHeader(request.data(), 9, 1, 6 + values.size());
    request[7] = 16;
    PutWord(&request[8], static_cast<std::uint16_t>(address));
    PutWord(&request[10], static_cast<std::uint16_t>(words.size()));
    request[12] = static_cast<unsigned char>(values.size());
    return request + values;
}

/// A command with a name as its argument, one character a register.
std::vector<unsigned> Characters(unsigned requestWord, unsigned command, const std::string& text) {
    std::vector<unsigned> words = {requestWord, command};
    words.insert(words.end(), text.begin(), text.end());
    words.push_back(0);
    return words;
}

class ModbusCommandTest : public testing::Test {
protected:
    ModbusCommandTest() {
        AddBlocks(*service->RegisterAssembly(AssemblyId), {{"ControlInput", "", Command},
                                                           {"ControlOutput", "", Answer},
                                                           {"System", "", System},
                                                           {"Scanner", "", Scanner}});
        service->AddControlScanResultsHandler();
        Start();
    }
    ~ModbusCommandTest() override { release.Set(); }

    void Start(json values = json::object()) {
        values["port"] = 0;
        Vor::Properties::JsonSerializer::Deserialize(service->Params(), values);
        service->Start();
        port = Tests::PortOf(Properties()["address"]);
        client = std::make_unique<RawClient>(port);
    }

    json Properties() { return Tests::PropertiesOf(*service); }

    static Bytes Read(RawClient& from, unsigned address, unsigned count) {
        const Bytes reply = from.Ask(ReadRequest(1, address, count));
        return reply.size() < 9 || reply[7] != 3 ? Bytes() : Bytes(reply.begin() + 9, reply.end());
    }
    Bytes Read(unsigned address, unsigned count) { return Read(*client, address, count); }

    /// Returns the exception code, 0 for none.
    static unsigned Write(RawClient& from, unsigned address, const std::vector<unsigned>& words) {
        const Bytes reply = from.Ask(WriteRequest(address, words));
        return reply.size() == 9 ? reply[8] : reply.size() == 12 ? 0 : 255;
    }
    unsigned Write(unsigned address, const std::vector<unsigned>& words) { return Write(*client, address, words); }

    bool WaitForRegisters(unsigned address, const Bytes& expected) {
        const auto count = static_cast<unsigned>(expected.size() / 2);
        return Tests::WaitUntil([&] { return Read(address, count) == expected; });
    }

    /// Waits for the end of the last command and returns its status, 1 when it doesn't end.
    unsigned WaitForStatus() {
        unsigned status = 1;
        Tests::WaitUntil([&] { return (status = Word(Read(Answer + 1, 1).data())) != 1; });
        return status;
    }

    /// The calls of the sensor since the last call of this, in order.
    std::vector<std::string> Calls() { return environ.system.NewCalls(); }

    /// From now on the main loop waits in each call of the sensor until `release` is set.
    void HoldMainLoop() {
        environ.system.OnCall([this](const std::string&) {
            held.Set();
            release.Wait();
        });
    }

    Tests::MainLoopThread mainLoop;
    Tests::Signal held;
    Tests::Signal release;
    Tests::HostEnviron environ;
    std::unique_ptr<ModbusProtocol> service = std::make_unique<ModbusProtocol>(environ.Record("modbus", "Modbus TCP"));
    std::uint16_t port = 0;
    std::unique_ptr<RawClient> client;
};

TEST_F(ModbusCommandTest, RunsACommandAndShowsItsEnd) {
    EXPECT_EQ(Read(Answer, 3), Words({0, 0, 0}));
    EXPECT_EQ(Write(Command, {1, 1}), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({1, 2, 0})));
    EXPECT_EQ(Calls(), (std::vector<std::string>{"Start"}));
    EXPECT_EQ(Write(Command, {2, 2}), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({2, 2, 0})));
    EXPECT_EQ(Calls(), (std::vector<std::string>{"Stop"}));
}

TEST_F(ModbusCommandTest, RunsTheSameCommandAgainForAnotherRequestWord) {
    for (const unsigned requestWord : {1u, 2u, 1u, 0xFFFFu, 0u}) {
        EXPECT_EQ(Write(Command, {requestWord, 1}), 0u);
        EXPECT_TRUE(WaitForRegisters(Answer, Words({requestWord, 2, 0})));
        EXPECT_EQ(Calls(), (std::vector<std::string>{"Start"})) << requestWord;
    }
}

TEST_F(ModbusCommandTest, TakesTheSameRequestWordFromAnotherClientForNoChange) {
    RawClient other(port);
    EXPECT_EQ(Write(Command, {1, 1}), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({1, 2, 0})));
    EXPECT_EQ(Write(other, Command, {1, 2}), 0u);
    EXPECT_EQ(Read(Command, 2), Words({1, 2})) << "the registers are common to all clients";
    EXPECT_EQ(Write(other, Command, {2, 2}), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({2, 2, 0})));
    EXPECT_EQ(Calls(), (std::vector<std::string>{"Start", "Stop"}));
}

TEST_F(ModbusCommandTest, RunsEachCommand) {
    EXPECT_EQ(Write(Command, {1, 4}), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({1, 2, 0})));
    EXPECT_EQ(environ.scanEngine.NewCalls(), (std::vector<std::string>{"ClearAlignment "}));
    EXPECT_EQ(Write(Command, Characters(2, 5, "part 7")), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({2, 2, 0})));
    EXPECT_EQ(Calls(), (std::vector<std::string>{"LoadJob part 7.vrjob"}));
    EXPECT_EQ(Write(Command, {3, 6}), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({3, 2, 0})));
    EXPECT_EQ(environ.scanEngine.NewCalls(), (std::vector<std::string>{"SoftwareTrigger "}));
    EXPECT_EQ(Write(Command, {4, 0}), 0u);
    EXPECT_EQ(Read(Answer, 3), Words({4, 2, 0})) << "no command is done at once";
    Vor::LogCapture log;
    for (const unsigned command : {7u, 8u, 10u, 255u}) {
        EXPECT_EQ(Write(Command, {5 + command, command}), 0u);
        EXPECT_EQ(Read(Answer, 3), Words({5 + command, 3, 0})) << "an invalid command has failed at once";
    }
    EXPECT_EQ(Calls(), std::vector<std::string>());
}

TEST_F(ModbusCommandTest, ShowsHowAnAlignmentEnds) {
    Tests::Signal started;
    environ.scanEngine.OnCall([&](const std::string& call) {
        if (call == "Alignment ") {
            started.Set();
        }
    });
    EXPECT_EQ(Write(Command, {1, 3}), 0u);
    ASSERT_TRUE(started.Wait());
    EXPECT_EQ(Read(Answer, 3), Words({1, 1, 0}));
    EXPECT_EQ(Word(Read(System + 38, 1).data()), 1) << "an operation is in progress";
    environ.scanEngine.completed.Raise(VorScan::AlignCompletionStatus::Succeeded);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({1, 2, 0})));
    EXPECT_EQ(Word(Read(System + 38, 1).data()), 0);
    environ.scanEngine.OnCall([&](const std::string& call) {
        if (call == "Alignment ") {
            environ.scanEngine.completed.Raise(VorScan::AlignCompletionStatus::Failed);
        }
    });
    EXPECT_EQ(Write(Command, {2, 3}), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({2, 3, 0})));
}

TEST_F(ModbusCommandTest, HandsUserDataOnAsTheyStoodOnTheWire) {
    for (const int byteOrder : {0, 1}) {
        service->Stop();
        Start({{"byteOrder", byteOrder}});
        Vor::UserData::UdiCache::GetInstance().Clear();
        std::vector<unsigned> words = {byteOrder + 1u, 9};
        Bytes expected;
        for (unsigned i = 0; i < 63; ++i) {
            words.push_back(0xFF00 - 0x0100 * i + i);
            expected.push_back(static_cast<unsigned char>(0xFF - i));
            expected.push_back(static_cast<unsigned char>(i));
        }
        EXPECT_EQ(Write(Command, words), 0u);
        EXPECT_EQ(Read(Answer, 3), Words({byteOrder + 1u, 2, 0}));
        EXPECT_EQ(Vor::UserData::UdiCache::GetInstance().Read(0, 126), expected);
        EXPECT_EQ(Vor::UserData::UdiCache::GetInstance().Read(126, 10), Bytes(10, 0));
    }
}

TEST_F(ModbusCommandTest, FailsACommandWhoseActionFails) {
    environ.system.OnCall([](const std::string&) { Vor::Throw(yERROR_NOT_FOUND, "there is no such job"); });
    EXPECT_EQ(Write(Command, Characters(1, 5, "nowhere")), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({1, 3, 0})));
}

TEST_F(ModbusCommandTest, FailsALoadWithoutAJobName) {
    Vor::LogCapture log;
    EXPECT_EQ(Write(Command, {7, 5, 0}), 0u);
    EXPECT_EQ(Read(Answer, 3), Words({7, 3, 0}));
    EXPECT_EQ(Calls(), std::vector<std::string>());
    EXPECT_EQ(Write(Command, {8, 1}), 0u) << "and goes on";
    EXPECT_TRUE(WaitForRegisters(Answer, Words({8, 2, 0})));
}

TEST_F(ModbusCommandTest, RunsNothingWhenOnlyArgumentsAreWritten) {
    EXPECT_EQ(Write(Command + 1, {1, 2, 3}), 0u);
    EXPECT_EQ(Read(Answer, 3), Words({0, 0, 0}));
    EXPECT_EQ(Write(Command + 1, {2}), 0u);
    EXPECT_EQ(client->Ask({0, 9, 0, 0, 0, 6, 1, 6, 0x03, 0xE8, 0, 1}).size(), 12u) << "the request word alone runs it";
    EXPECT_TRUE(WaitForRegisters(Answer, Words({1, 2, 0})));
    EXPECT_EQ(Calls(), (std::vector<std::string>{"Stop"}));
}

TEST_F(ModbusCommandTest, RefusesANewCommandWhileOneIsUnderWay) {
    HoldMainLoop();
    RawClient other(port);
    EXPECT_EQ(Write(Command, {1, 1, 77}), 0u);
    ASSERT_TRUE(held.Wait());
    EXPECT_EQ(Read(Answer, 3), Words({1, 1, 0}));
    const Bytes before = Read(Command, 65);
    EXPECT_EQ(Write(other, Command, {2, 2, 2}), 6u);
    EXPECT_EQ(other.Ask({0, 9, 0, 0, 0, 6, 1, 6, 0x03, 0xE8, 0, 2}), (Bytes{0, 9, 0, 0, 0, 3, 1, 0x86, 6}));
    EXPECT_EQ(other.Ask({0, 9, 0, 0, 0, 8, 1, 22, 0x03, 0xE8, 0xFF, 0xFF, 0, 0}).size(), 14u) << "changes no bit";
    EXPECT_EQ(other.Ask({0, 9, 0, 0, 0, 8, 1, 22, 0x03, 0xE8, 0, 0, 0, 2}), (Bytes{0, 9, 0, 0, 0, 3, 1, 0x96, 6}));
    EXPECT_EQ(other.Ask({0, 9, 0, 0, 0, 13, 1, 23, 0x03, 0xE8, 0, 1, 0x03, 0xE8, 0, 1, 2, 0, 2}),
              (Bytes{0, 9, 0, 0, 0, 3, 1, 0x97, 6}));
    EXPECT_EQ(Read(Command, 65), before) << "nothing is changed";
    EXPECT_EQ(Write(other, Command + 2, {78}), 0u) << "arguments may be written";
    EXPECT_EQ(Read(Answer, 3), Words({1, 1, 0}));
    release.Set();
    EXPECT_TRUE(WaitForRegisters(Answer, Words({1, 2, 0})));
    EXPECT_EQ(Write(other, Command, {2, 2}), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({2, 2, 0})));
    EXPECT_EQ(Calls(), (std::vector<std::string>{"Start", "Stop"}));
}

TEST_F(ModbusCommandTest, FailsACommandWhileAnotherServiceActsOnTheSensor) {
    HoldMainLoop();
    environ.host.StartScan("another");
    ASSERT_TRUE(held.Wait());
    EXPECT_EQ(Write(Command, {1, 2}), 0u);
    EXPECT_EQ(Read(Answer, 3), Words({1, 3, 0}));
    release.Set();
    unsigned requestWord = 1;
    do { // until the other service's operation has ended
        EXPECT_EQ(Write(Command, {++requestWord, 2}), 0u);
    } while (WaitForStatus() == 3 && requestWord < 10000);
    EXPECT_EQ(Read(Answer, 3), Words({requestWord, 2, 0}));
}

TEST_F(ModbusCommandTest, NeverShowsAnEndBeforeTheCommandHasEnded) {
    constexpr unsigned Count = 300;
    std::atomic<unsigned> ended = 0;
    environ.system.OnCall([&](const std::string&) { ++ended; });
    RawClient watcher(port);
    std::atomic<bool> stop = false;
    std::thread watching([&] {
        unsigned last = 0;
        while (!stop) {
            const Bytes answer = Read(watcher, Answer, 3);
            ASSERT_EQ(answer.size(), 6u);
            const unsigned echo = Word(answer.data());
            const unsigned status = Word(&answer[2]);
            ASSERT_GE(echo, last);
            ASSERT_EQ(status == 0, echo == 0);
            ASSERT_TRUE(status != 2 || ended >= echo) << "done is shown of a command that has not ended";
            ASSERT_NE(status, 3u);
            last = echo;
        }
    });
    for (unsigned requestWord = 1; requestWord <= Count; ++requestWord) {
        ASSERT_EQ(Write(Command, {requestWord, 1 + requestWord % 2}), 0u);
        ASSERT_TRUE(WaitForRegisters(Answer, Words({requestWord, 2, 0})));
    }
    stop = true;
    watching.join();
    EXPECT_EQ(ended, Count);
}

TEST_F(ModbusCommandTest, TakesTheFirstRequestWordAsABaseOnceInTheProgramsLife) {
    service->Stop();
    Start({{"firstRequest", "base"}});
    EXPECT_EQ(Write(Command, {5, 1}), 0u);
    EXPECT_EQ(Read(Answer, 3), Words({5, 0, 0}));
    EXPECT_EQ(Write(Command, {6, 1}), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({6, 2, 0})));
    EXPECT_EQ(Calls(), (std::vector<std::string>{"Start"}));
    service->Stop();
    Start({{"firstRequest", "base"}});
    service->EndUpdateRegisterAssembly(VorCommon::PersistDomain::Job, AssemblyId, "1");
    EXPECT_EQ(Write(Command, {7, 2}), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({7, 2, 0}))) << "it was disabled and enabled, and has a new map";
    EXPECT_EQ(Calls(), (std::vector<std::string>{"Stop"}));
}

/// The service also has a measurement, at 0, of a source that the sensor has.
class ModbusTriggerTest : public ModbusCommandTest {
protected:
    ModbusTriggerTest() {
        environ.system.dataSources["profile/max"] = {};
        environ.host.AddOpEndEventHandler("modbus", [this](int) { ++operationEnds; });
        Restart();
    }
    // The handler is called until the service has gone.
    ~ModbusTriggerTest() override { service.reset(); }

    void Restart(const json& values = json::object()) {
        service->Stop();
        service->RegisterAssembly(AssemblyId)->ResetRegisterAssembly();
        AddBlocks(*service->RegisterAssembly(AssemblyId),
                  {{"Measurement", "profile/max", 0}, {"ControlInput", "", Command}, {"ControlOutput", "", Answer}});
        Start(values);
    }

    /// Publishes a frame with this height.
    void Publish(double height) {
        environ.application.hub.Publish(Results(yTime_Monotonic()).Measurement("profile/max", height).Get());
    }
    unsigned Height() {
        const Bytes height = Read(0, 2);
        return (unsigned{Word(height.data())} << 16 | Word(&height[2])) / 1000;
    }

    /// Waits until the scanner was triggered, and returns once the operation has ended, with the frame missing.
    void TriggerWithoutFrame() {
        EXPECT_EQ(Write(Command, {++requestWord, 6}), 0u);
        ASSERT_TRUE(WaitForOperations(requestWord));
        EXPECT_EQ(Read(Answer, 3), Words({requestWord, 1, 0}));
    }

    /// Waits until that many operations have ended and the service was notified.
    bool WaitForOperations(unsigned count) {
        return Tests::WaitUntil([&] { return operationEnds >= count; });
    }

    unsigned requestWord = 0;
    std::atomic<unsigned> operationEnds = 0;
};

TEST_F(ModbusTriggerTest, IsDoneOnceItsFrameCanBeRead) {
    unsigned height = 0;
    environ.scanEngine.OnCall([&](const std::string&) { Publish(++height); });
    for (unsigned trigger = 1; trigger <= 300; ++trigger) {
        ASSERT_EQ(Write(Command, {trigger, 6}), 0u);
        ASSERT_EQ(WaitForStatus(), 2u);
        ASSERT_EQ(Height(), trigger);
    }
}

TEST_F(ModbusTriggerTest, WaitsForItsFrameAndIsBusyUntilThen) {
    TriggerWithoutFrame();
    EXPECT_EQ(Write(Command, {9, 1}), 6u);
    Publish(7);
    EXPECT_EQ(WaitForStatus(), 2u);
    EXPECT_EQ(Height(), 7u);
}

TEST_F(ModbusTriggerTest, FailsAtOnceWhenTheScanOrTheMapEnds) {
    TriggerWithoutFrame();
    service->OnPreStartScan();
    EXPECT_EQ(Read(Answer, 3), Words({1, 1, 0}));
    service->OnPostStopScan();
    EXPECT_EQ(Read(Answer, 3), Words({1, 3, 0}));
    TriggerWithoutFrame();
    service->EndUpdateRegisterAssembly(VorCommon::PersistDomain::Job, AssemblyId, "1");
    EXPECT_EQ(Read(Answer, 3), Words({2, 3, 0}));
    TriggerWithoutFrame();
    Restart();
    EXPECT_EQ(Read(Answer, 3), Words({3, 3, 0}));
}

TEST_F(ModbusTriggerTest, FailsAtOnceWhenAJobIsLoaded) {
    TriggerWithoutFrame();
    service->OnLoadBegin();
    EXPECT_EQ(Read(Answer, 3), Words({1, 3, 0}));
}

TEST_F(ModbusTriggerTest, WaitsOnWhenAParameterIsChanged) {
    TriggerWithoutFrame();
    Vor::Properties::JsonSerializer::Deserialize(service->Params(), {{"idleTimeout", 7}, {"byteOrder", 1}});
    service->ParamsUpdate();
    EXPECT_EQ(Read(Answer, 3), Words({1, 1, 0}));
    EXPECT_EQ(Read(0, 2), Words({0, 0x8000})) << "in the other byte order at once";
    Publish(7);
    EXPECT_EQ(WaitForStatus(), 2u);
    EXPECT_EQ(Read(0, 2), Words({7000, 0}));
}

TEST_F(ModbusTriggerTest, FailsWhenItsFrameDoesNotComeInTime) {
    Restart({{"triggerTimeout", 1}});
    EXPECT_EQ(Write(Command, {1, 6}), 0u);
    EXPECT_EQ(WaitForStatus(), 3u);
    ASSERT_TRUE(WaitForOperations(1)) << "until then the service is busy";
    Restart({{"triggerTimeout", 0}});
    EXPECT_EQ(Write(Command, {2, 6}), 0u);
    EXPECT_EQ(WaitForStatus(), 2u) << "it doesn't wait";
}

TEST_F(ModbusCommandTest, StopsWithin200MillisecondsWhileTheMainLoopStandsStill) {
    HoldMainLoop();
    EXPECT_EQ(Write(Command, {1, 1}), 0u);
    ASSERT_TRUE(held.Wait());
    const auto begin = std::chrono::steady_clock::now();
    service->Stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 200ms);
    Start();
    EXPECT_EQ(Read(Answer, 3), Words({1, 1, 0})) << "the command is still under way";
    EXPECT_EQ(Write(Command, {2, 1}), 6u);
    service->Stop();
    release.Set();
    Start();
    EXPECT_TRUE(WaitForRegisters(Answer, Words({1, 2, 0})));
    EXPECT_EQ(Read(Command, 2), Words({1, 1}));
}

TEST_F(ModbusCommandTest, MayGoWhileItsCommandIsUnderWay) {
    HoldMainLoop();
    EXPECT_EQ(Write(Command, {1, 1}), 0u);
    ASSERT_TRUE(held.Wait());
    service.reset();
    EXPECT_TRUE(client->WaitForClose());
    release.Set();
}

TEST_F(ModbusCommandTest, AnswersReadersWhileTheMainLoopStandsStill) {
    HoldMainLoop();
    EXPECT_EQ(Write(Command, {1, 1}), 0u);
    ASSERT_TRUE(held.Wait());
    for (unsigned i = 0; i < 100; ++i) {
        EXPECT_EQ(Read(Answer, 3), Words({1, 1, 0}));
    }
}

TEST_F(ModbusCommandTest, ShowsTheStates) {
    VorControl::IControlSystemInterface::SystemStats stats;
    stats.coreMetric0 = 0x0102030405060708;
    stats.coreMetric1 = 55;
    stats.runState = 1;
    stats.loadedJob = "demo.vrjob";
    environ.dataCache.SetStats(stats);
    VorControl::IControlScanEngineInterface::ScannerStateInfo info;
    info.id = "scanner-0";
    info.currentEncoderValue = -1000;
    info.currentSyncTime = 0x0A0B0C0D;
    info.alignmentState = 1;
    info.laserEnabled = true;
    environ.dataCache.SetInfo(info);
    const Bytes scanner = Words({0xFFFF, 0xFFFF, 0xFFFF, 0xFC18, 0, 0, 0x0A0B, 0x0C0D, 1, 1});
    EXPECT_TRUE(WaitForRegisters(Scanner, scanner));
    EXPECT_TRUE(WaitForRegisters(System, Words({0x0102, 0x0304, 0x0506, 0x0708, 1, 10}) +
                                             Bytes{'d', 'e', 'm', 'o', '.', 'v'} + Bytes{'r', 'j', 'o', 'b'} +
                                             Bytes(54, 0) + Words({0, 55})));
    const auto calls = environ.dataCache.NewCalls();
    ASSERT_GE(calls.size(), 2u);
    EXPECT_EQ(calls[0], "SystemStats 0");
    EXPECT_EQ(calls[1], "ScannerInfo  0");
    service->Stop();
    Start({{"byteOrder", 1}});
    EXPECT_TRUE(WaitForRegisters(Scanner, Words({0xFC18, 0xFFFF, 0xFFFF, 0xFFFF, 0x0C0D, 0x0A0B, 0, 0, 1, 1})));
    EXPECT_TRUE(WaitForRegisters(System, Words({0x0708, 0x0506, 0x0304, 0x0102, 1, 10}) + Bytes{'d', 'e', 'm', 'o'}));
}

TEST_F(ModbusCommandTest, ShowsZerosUntilTheScannerHasAnsweredAndThenItsLastState) {
    VorControl::IControlSystemInterface::SystemStats stats;
    stats.coreMetric0 = 1;
    environ.dataCache.SetStats(stats);
    EXPECT_TRUE(WaitForRegisters(System, Words({0, 0, 0, 1})));
    stats.coreMetric0 = 2;
    environ.dataCache.SetStats(stats);
    EXPECT_TRUE(WaitForRegisters(System, Words({0, 0, 0, 2}))) << "so the scanner has been asked, too";
    EXPECT_EQ(Read(Scanner, 10), Bytes(20, 0)) << "also the laser, which a fresh record says to be on";
    VorControl::IControlScanEngineInterface::ScannerStateInfo info;
    info.id = "scanner-0";
    info.currentSyncTime = 7;
    environ.dataCache.SetInfo(info);
    const Bytes known = Words({0, 0, 0, 0, 0, 0, 0, 7, 0, 1});
    EXPECT_TRUE(WaitForRegisters(Scanner, known));
    environ.dataCache.SetInfo({});
    for (unsigned time = 3; time < 5; ++time) {
        stats.coreMetric0 = time;
        environ.dataCache.SetStats(stats);
        EXPECT_TRUE(WaitForRegisters(System, Words({0, 0, 0, time})));
    }
    EXPECT_EQ(Read(Scanner, 10), known);
}

TEST_F(ModbusCommandTest, AsksForNoStateThatItsMapDoesNotShow) {
    service->Stop();
    service->RegisterAssembly(AssemblyId)->ResetRegisterAssembly();
    AddBlocks(*service->RegisterAssembly(AssemblyId), {{"ControlInput", "", Command}, {"Diagnostics", "", 1400}});
    environ.dataCache.NewCalls();
    Start();
    EXPECT_EQ(Read(Command, 1), Words({0}));
    EXPECT_EQ(environ.dataCache.NewCalls(), std::vector<std::string>());
}

TEST_F(ModbusCommandTest, ShowsWhatItsClientsDo) {
    json properties = Properties();
    EXPECT_EQ(Read(Command, 1), Words({0}));
    EXPECT_EQ(Write(0, {1}), 2u);
    properties = Properties();
    EXPECT_EQ(properties["connected"], 1);
    EXPECT_EQ(properties["refused"], 0);
    EXPECT_EQ(properties["requests"], 2);
    EXPECT_EQ(properties["exceptions"], 1);
    service->Stop();
    properties = Properties();
    EXPECT_EQ(properties["connected"], 0);
    EXPECT_EQ(properties["requests"], 2);
    Start({{"readNetworks", json::array()}});
    EXPECT_TRUE(client->WaitForClose());
    properties = Properties();
    EXPECT_EQ(properties["connected"], 0);
    EXPECT_EQ(properties["refused"], 1);
    EXPECT_EQ(properties["requests"], 0) << "since the service was started";
    EXPECT_EQ(properties["exceptions"], 0);
}

TEST_F(ModbusCommandTest, WritesItsDiagnosticsIntoTheMap) {
    constexpr unsigned DiagnosticsAddress = 1400;
    service->Stop();
    AddBlocks(*service->RegisterAssembly(AssemblyId),
              {{"Measurement", "a", 0}, {"Diagnostics", "", DiagnosticsAddress}});
    Start();
    Vor::LogCapture log;
    environ.application.hub.Publish(Results().Text("a", "no number").Get());
    EXPECT_TRUE(log.WaitFor("Register block at 0 can't write the value of a: "));
    RawClient other(port);
    EXPECT_EQ(Write(other, 0, {1}), 2u);
    const auto value = [&](unsigned index) {
        const Bytes read = Read(DiagnosticsAddress + 2 * index, 2);
        return unsigned{Word(read.data())} << 16 | Word(&read[2]);
    };
    EXPECT_TRUE(Tests::WaitUntil([&] { return value(0) == 2; })) << "clients";
    EXPECT_TRUE(Tests::WaitUntil([&] { return value(3) == 1; })) << "exceptions";
    EXPECT_EQ(value(1), 0u) << "refused";
    EXPECT_GE(value(2), 3u) << "requests";
    EXPECT_EQ(value(4), 0u) << "no frame was lost";
    EXPECT_LT(value(5), 60u) << "seconds";
}

TEST_F(ModbusCommandTest, FollowsItsNetworksWhileItRuns) {
    const auto change = [this](const json& values) {
        Vor::Properties::JsonSerializer::Deserialize(service->Params(), values);
        service->ParamsUpdate();
    };
    change({{"writeNetworks", {"10.0.0.0/8"}}});
    EXPECT_EQ(Write(Command, {1, 1}), 1u);
    EXPECT_EQ(Read(Answer, 3), Words({0, 0, 0}));
    EXPECT_THROW(change({{"writeNetworks", {"127.0.0.1", "127.0.0.1/33"}}}), Vor::Exception);
    EXPECT_EQ(Write(Command, {1, 1}), 1u) << "stays as it was";
    change({{"writeNetworks", {"127.0.0.1"}}});
    EXPECT_EQ(Write(Command, {1, 1}), 0u);
    EXPECT_TRUE(WaitForRegisters(Answer, Words({1, 2, 0})));
    change({{"readNetworks", {"::/0"}}});
    EXPECT_TRUE(client->WaitForClose());
}

TEST_F(ModbusCommandTest, NamesTheNetworkThatIsNoneWhenItCannotStart) {
    service->Stop();
    Vor::LogCapture log;
    EXPECT_THROW(Start({{"readNetworks", {"0.0.0.0/0", "office"}}}), Vor::Exception);
    EXPECT_EQ(Properties()["failure"],
              "\"office\" is not a network such as 192.168.1.0/24 or fd00::/8, nor an IP address");
    EXPECT_EQ(Properties()["status"], 4);
}

} // namespace
} // namespace Services::Modbus
