// Clients of the running service. The operations are real, the sensor behind them is a fake.

#include "Services/Ascii/AsciiProtocol.h"

#include "Tests/Services/Ascii/TextClient.h"
#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/MainLoopThread.h"
#include "Tests/Support/MarkdownTable.h"
#include "Tests/Support/Results.h"
#include "Tests/Support/ServiceProperties.h"
#include "Tests/Support/Signal.h"
#include "Tests/Support/Threads.h"
#include "Vor/AsyncRunner.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"
#include "Vor/LoopCore.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"
#include "VorControl/ControlProtocol/TextIdStandardOutputs.h"
#include "yApi/yTime.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Services::Ascii {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using Tests::Results;
using VorCommon::PersistDomain;
using VorControl::ControlProtocol::ProtocolStatus;
using Texts = std::vector<std::string>;

/// The documents of services. That of "long" is too long for an answer.
class Controls : public VorApi::DocumentResourceBase {
public:
    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx&, VorApi::VorDataTree& data) override {
        const bool isLong = *request.FindKey("protocol") == "long";
        data["name"].Set(isLong ? std::string(ResourceReader::MaxAnswerSize, 'x') : "H\u00f6he");
        data["limits"]["a/b"].Set(std::int64_t{3});
    }
};

class AsciiProtocolTest : public testing::Test {
protected:
    AsciiProtocolTest() {
        environ.application.router.Register("/controls/:protocol", controls);
        FillMap();
        service->AddControlScanResultsHandler();
        Start();
    }
    ~AsciiProtocolTest() override {
        release.Set();
        service->RemoveControlScanResultsHandler();
    }

    /// Seven blocks, and the same sources by name.
    void FillMap() {
        const auto block = [](const char* type, const char* source) {
            return json{{"type", type}, {"dataSource", source}};
        };
        VorControl::ControlProtocol::AddBlockParams blocks;
        Vor::Properties::JsonSerializer::Deserialize(
            blocks, {{"blocks",
                      {block("Measurement", "profile/max"), block("Measurement", "profile/min"),
                       block("Measurement", "profile/mean"), block("Measurement", "profile/width"),
                       block("Measurement", "profile/points"), block("Stamp", "profile/stamp"),
                       block("String", "profile/text")}}});
        service->RegisterAssembly("registerAssembly-0")->Add(blocks);
        for (const auto& [id, source] : std::map<std::string, std::string>{{"height", "profile/max"},
                                                                           {"lowest", "profile/min"},
                                                                           {"mean", "profile/mean"},
                                                                           {"points", "profile/points"},
                                                                           {"stamp", "profile/stamp"},
                                                                           {"text", "profile/text"},
                                                                           {"width", "profile/width"}}) {
            VorControl::ControlProtocol::TextIdStandardOutputItemArgs item;
            item.outputId = id;
            item.source = source;
            service->Outputs().Add(item);
        }
    }

    void Start(json values = json::object()) {
        values["port"] = 0;
        Vor::Properties::JsonSerializer::Deserialize(service->Params(), values);
        service->Start();
        port = Tests::PortOf(Properties()["address"]);
        client = std::make_unique<TextClient>(port);
    }

    json Properties() { return Tests::PropertiesOf(*service); }

    bool WaitForProperty(const char* property, std::uint64_t value) {
        return Tests::WaitUntil([&] { return Properties()[property] == value; });
    }

    bool WaitForAnswer(const std::string& request, const std::string& expected) {
        return Tests::WaitUntil([&] { return client->Ask(request) == expected; });
    }

    void Publish(const Results& results) { environ.application.hub.Publish(results.Get()); }

    /// From now on the main loop waits in each call of the sensor until `release` is set.
    void HoldMainLoop() {
        environ.system.OnCall([this](const std::string&) {
            held.Set();
            release.Wait();
        });
    }

    /// From now on the main loop runs `call` only when `release` is set, and nothing before it.
    void HoldMainLoopBefore(std::function<void()> call) {
        holder.Run([this, call = std::move(call)] {
            held.Set();
            release.Wait();
            call();
        });
        ASSERT_TRUE(held.Wait());
    }

    /// Starts the service anew with `allowRead`.
    void AllowRead() {
        service->Stop();
        Start({{"allowRead", true}});
    }

    /// Sends a request that waits for the main loop, which is held.
    void SendRead(TextClient& from) {
        ASSERT_TRUE(from.Send("READ /controls/x#/name\r\n"));
        ASSERT_TRUE(Vor::LoopCore::Instance().WaitReady(20s));
    }

    Tests::MainLoopThread mainLoop;
    Controls controls;
    Tests::Signal held;
    Tests::Signal release;
    Tests::HostEnviron environ;
    std::unique_ptr<AsciiProtocol> service = std::make_unique<AsciiProtocol>(environ.Record("ascii", "e-ascii"));
    std::uint16_t port = 0;
    std::unique_ptr<TextClient> client;
    Vor::AsyncRunner holder; ///< the last member: what it runs uses the others
};

TEST_F(AsciiProtocolTest, RunsCommandsAndAnswersAtTheirEnd) {
    EXPECT_EQ(service->GetProtocolStatus(), ProtocolStatus::Running);
    EXPECT_EQ(client->Ask("START"), "OK");
    EXPECT_EQ(client->Ask("STOP"), "OK");
    EXPECT_EQ(client->Ask("LOADJOB part 7"), "OK");
    EXPECT_EQ(environ.system.NewCalls(), (Texts{"Start", "Stop", "LoadJob part 7"}));
    EXPECT_EQ(client->Ask("TRIGGER"), "OK");
    EXPECT_EQ(client->Ask("CLEARALIGN"), "OK");
    EXPECT_EQ(environ.scanEngine.NewCalls(), (Texts{"SoftwareTrigger ", "ClearAlignment "}));
    EXPECT_EQ(Properties()["requests"], 5);
    EXPECT_EQ(Properties()["errors"], 0);
    EXPECT_EQ(Properties()["connected"], 1);
}

TEST_F(AsciiProtocolTest, TellsHowAnAlignmentEnds) {
    environ.scanEngine.OnCall([&](const std::string& call) {
        if (call == "Alignment ") {
            environ.scanEngine.completed.Raise(VorScan::AlignCompletionStatus::Succeeded);
        }
    });
    EXPECT_EQ(client->Ask("ALIGN"), "OK");
    environ.scanEngine.OnCall([&](const std::string& call) {
        if (call == "Alignment ") {
            environ.scanEngine.completed.Raise(VorScan::AlignCompletionStatus::Failed);
        }
    });
    EXPECT_EQ(client->Ask("ALIGN").substr(0, 6), "ERROR,");
}

TEST_F(AsciiProtocolTest, SaysWhyACommandFailed) {
    environ.system.OnCall([](const std::string&) { Vor::Throw(yERROR_NOT_FOUND, "there is no such job"); });
    EXPECT_EQ(client->Ask("LOADJOB nowhere"), "ERROR,0,\"the job couldn't be loaded; the former one goes on\"");
    EXPECT_EQ(Properties()["errors"], 1);
}

TEST_F(AsciiProtocolTest, AnswersATriggerOnceItsFrameCanBeRead) {
    environ.system.dataSources["profile/max"] = {};
    int height = 0;
    environ.scanEngine.OnCall([&](const std::string&) {
        environ.application.hub.Publish(Results(yTime_Monotonic()).Measurement("profile/max", ++height).Get());
    });
    for (int trigger = 1; trigger <= 300; ++trigger) {
        ASSERT_EQ(client->Ask("TRIGGER"), "OK");
        ASSERT_EQ(client->Ask("RESULT height"), "OK," + std::to_string(trigger) + ".000");
    }
}

TEST_F(AsciiProtocolTest, SaysWhyATriggerHasNoFrame) {
    environ.system.dataSources["profile/max"] = {};
    service->Stop();
    Start({{"triggerTimeout", 1}});
    EXPECT_EQ(client->Ask("TRIGGER"), "ERROR,-993,\"the sensor didn't answer in time\"");
    service->Stop();
    Start({{"triggerTimeout", 60000}});
    EXPECT_TRUE(WaitForAnswer("STATE", "OK,READY,UNALIGNED,IDLE,\"\"")) << "the operation has ended, too";
    client->Send("TRIGGER\r\n");
    TextClient other(port);
    EXPECT_TRUE(Tests::WaitUntil([&] { return other.Ask("STATE") == "OK,READY,UNALIGNED,BUSY,\"\""; }));
    service->OnPostStopScan();
    EXPECT_EQ(client->Line(), "ERROR,-1000,\"the sensor's state doesn't allow this\"");
    EXPECT_TRUE(WaitForAnswer("STATE", "OK,READY,UNALIGNED,IDLE,\"\""));
    client->Send("TRIGGER\r\n");
    EXPECT_TRUE(Tests::WaitUntil([&] { return other.Ask("STATE") == "OK,READY,UNALIGNED,BUSY,\"\""; }));
    service->OutputsUpdate();
    EXPECT_EQ(client->Line(), "ERROR,-1000,\"the sensor's state doesn't allow this\"") << "the map is another";
    EXPECT_TRUE(WaitForAnswer("STATE", "OK,READY,UNALIGNED,IDLE,\"\""));
    client->Send("TRIGGER\r\n");
    EXPECT_TRUE(Tests::WaitUntil([&] { return other.Ask("STATE") == "OK,READY,UNALIGNED,BUSY,\"\""; }));
    service->OnLoadBegin();
    EXPECT_EQ(client->Line(), "ERROR,-1000,\"the sensor's state doesn't allow this\"") << "a job is loaded";
    EXPECT_TRUE(WaitForAnswer("STATE", "OK,READY,UNALIGNED,IDLE,\"\""));
    environ.scanEngine.OnCall([&](const std::string&) { Vor::Throw(yERROR_STATE, "there is no scan"); });
    EXPECT_EQ(client->Ask("TRIGGER"), "ERROR,0,\"the trigger wasn't taken; the sensor has to scan in triggered mode\"");
}

TEST_F(AsciiProtocolTest, AnswersBusyWhileACommandRunsAndServesTheOthers) {
    HoldMainLoop();
    EXPECT_TRUE(client->Send("START\r\n"));
    ASSERT_TRUE(held.Wait());
    TextClient other(port);
    EXPECT_EQ(other.Ask("STOP"), "ERROR,-976,\"busy: another command is in progress\"");
    EXPECT_EQ(other.Ask("RESULT 0"), "OK,INVALID,INVALID");
    EXPECT_EQ(other.Ask("VERSION").substr(0, 3), "OK,");
    release.Set();
    EXPECT_EQ(client->Line(), "OK");
    EXPECT_EQ(other.Ask("STOP"), "OK");
}

TEST_F(AsciiProtocolTest, AnswersBusyWhileAnOperationOfAnotherServiceRuns) {
    Tests::Signal ended;
    const auto id = environ.host.AddOpEndEventHandler("other", [&](int) { ended.Set(); });
    HoldMainLoop();
    environ.host.StartScan("other");
    ASSERT_TRUE(held.Wait());
    {
        const Vor::LogCapture log;
        EXPECT_EQ(client->Ask("STOP"), "ERROR,-976,\"busy: another operation of the sensor is in progress\"");
    }
    release.Set();
    EXPECT_TRUE(ended.Wait());
    EXPECT_TRUE(WaitForAnswer("STOP", "OK"));
    auto handler = id;
    environ.host.RemoveOpEndEventHandler("other", handler);
}

TEST_F(AsciiProtocolTest, AnswersAClientThatHasClosedItsSide) {
    HoldMainLoop();
    client->Send("START\r\nVERSION\r\n");
    ASSERT_TRUE(held.Wait());
    client->HalfClose();
    TextClient other(port);
    EXPECT_EQ(other.Ask("RESULT 0"), "OK,INVALID,INVALID") << "the end of the client's side is there by now";
    release.Set();
    EXPECT_EQ(client->Line(), "OK");
    EXPECT_EQ(client->Line().substr(0, 3), "OK,");
    EXPECT_EQ(client->Line(), "(closed)");
}

TEST_F(AsciiProtocolTest, TellsTheStateAsItIsNow) {
    VorControl::IControlSystemInterface::SystemStats stats;
    stats.runState = 1;
    stats.loadedJob = "demo.vrjob";
    environ.dataCache.SetStats(stats);
    VorControl::IControlScanEngineInterface::ScannerStateInfo info;
    info.alignmentState = 2;
    environ.dataCache.SetInfo(info);
    EXPECT_EQ(client->Ask("STATE"), "OK,SCANNING,ALIGNING,IDLE,\"demo.vrjob\"");
    stats.runState = 0;
    environ.dataCache.SetStats(stats);
    EXPECT_EQ(client->Ask("STATE"), "OK,READY,ALIGNING,IDLE,\"demo.vrjob\"");
    EXPECT_EQ(client->Ask("JOB"), "OK,\"demo.vrjob\"");
    EXPECT_EQ(environ.dataCache.NewCalls().front(), "SystemStats 0") << "it waits for nothing";
}

TEST_F(AsciiProtocolTest, ListsItsOutputsAndTheirValues) {
    EXPECT_EQ(client->Ask("OUTPUTS"),
              "OK,0,\"profile/max\",1,\"profile/min\",2,\"profile/mean\",3,\"profile/width\",4,\"profile/points\",5,"
              "\"profile/stamp\",6,\"profile/text\",\"height\",\"profile/max\",\"lowest\",\"profile/min\",\"mean\","
              "\"profile/mean\",\"points\",\"profile/points\",\"stamp\",\"profile/stamp\",\"text\",\"profile/text\","
              "\"width\",\"profile/width\"");
    Publish(Results().Measurement("profile/max", 10.0014).Text("profile/text", "frame 1: max 10.001 mm"));
    EXPECT_TRUE(WaitForAnswer("RESULT height", "OK,10.001"));
    EXPECT_EQ(client->Ask("RESULT 0 6"), "OK,10.001,1,\"frame 1: max 10.001 mm\"");
    EXPECT_EQ(client->Ask("RESULT width text"), "OK,INVALID,\"frame 1: max 10.001 mm\"");
}

TEST_F(AsciiProtocolTest, TakesResultsOfTheAssemblyAndOfTheMap) {
    EXPECT_EQ(service->DataSourceList(), (Texts{"profile/max", "profile/min", "profile/mean", "profile/width",
                                                "profile/points", "profile/stamp", "profile/text"}));
    VorControl::ControlProtocol::TextIdStandardOutputItemArgs item;
    item.outputId = "extra";
    item.source = "values/extra";
    service->Outputs().Add(item);
    service->OutputsUpdate();
    EXPECT_EQ(service->DataSourceList().back(), "values/extra") << "what only the map has comes behind";
    EXPECT_EQ(service->DataSourceList(PersistDomain::Job), service->DataSourceList());
    EXPECT_EQ(service->DataSourceList(PersistDomain::Workspace), Texts());
    ASSERT_TRUE(WaitForAnswer("RESULT extra", "OK,INVALID"));
    Publish(Results().Measurement("values/extra", 4));
    EXPECT_TRUE(WaitForAnswer("RESULT extra", "OK,4.000")) << "its results pass the filter";
}

TEST_F(AsciiProtocolTest, FollowsAnEditedAssembly) {
    Publish(Results().Measurement("profile/max", 3));
    EXPECT_TRUE(WaitForAnswer("RESULT 0", "OK,3.000,1"));
    service->RegisterAssembly("registerAssembly-0")->ResetRegisterAssembly();
    service->EndUpdateRegisterAssembly(PersistDomain::Job, "registerAssembly-0", "1");
    EXPECT_TRUE(WaitForAnswer("RESULT 0", "ERROR,-999,\"there is no output 0\""));
    EXPECT_EQ(client->Ask("RESULT height"), "OK,3.000");
}

TEST_F(AsciiProtocolTest, SendsALineAFrame) {
    EXPECT_EQ(client->Ask("PUSH ON height"), "OK");
    for (int frame = 1; frame <= 100; ++frame) {
        Publish(Results().Measurement("profile/max", frame));
    }
    for (int frame = 1; frame <= 100; ++frame) {
        ASSERT_EQ(client->Line(), "DATA," + std::to_string(frame) + "," + std::to_string(frame) + ".000");
    }
    EXPECT_EQ(client->Ask("PUSH OFF"), "OK");
    Publish(Results().Measurement("profile/max", 0));
    EXPECT_TRUE(WaitForAnswer("RESULT height", "OK,0.000"));
}

TEST_F(AsciiProtocolTest, CountsWhatItsClientsDoAndWhatTheScanBrings) {
    service->Stop();
    Start({{"maxConnections", 1}});
    std::size_t sent = 0;
    std::size_t received = 0;
    for (const std::string request : {"VERSION", "OUTPUTS", "RESULT 0", "NOTHING", "RESULT nothing"}) {
        sent += request.size() + 2;
        received += client->Ask(request).size() + 2;
    }
    TextClient refused(port);
    EXPECT_TRUE(refused.WaitForClose());
    for (int i = 1; i <= 4; ++i) {
        Publish(Results().Measurement("profile/max", i));
    }

    const json expected = {{"dropCount", 0},      {"connected", 1},     {"refused", 1},         {"requests", 5},
                           {"errors", 2},         {"bytesIn", sent},    {"bytesOut", received}, {"resultsReceived", 4},
                           {"resultsApplied", 4}, {"resultsDropped", 0}};
    EXPECT_TRUE(Tests::WaitUntil([&] { return Tests::CountsOf(*service) == expected; })) << Tests::CountsOf(*service);
    const json properties = Properties();
    for (const auto& [name, value] : expected.items()) {
        EXPECT_EQ(properties.at(name == "dropCount" ? "dropped" : name), value) << name;
    }
}

TEST_F(AsciiProtocolTest, LetsASlowReaderOfFramesCostOnlyItself) {
    TextClient slow(port, 1024);
    TextClient quick(port);
    EXPECT_EQ(slow.Ask("PUSH ON"), "OK");
    EXPECT_EQ(quick.Ask("PUSH ON height"), "OK");
    int frames = 0;
    const std::string text(900, 'x');
    while (Properties()["dropped"] == 0 && frames < 20000) {
        ++frames;
        Publish(Results().Measurement("profile/max", frames).Text("profile/text", text));
        ASSERT_EQ(quick.Line(), "DATA," + std::to_string(frames) + "," + std::to_string(frames) + ".000");
    }
    EXPECT_LT(frames, 20000) << "the slow one loses frames";
    EXPECT_EQ(Tests::MetricsOf(*service)["dropCount"], Properties()["dropped"]);
    EXPECT_EQ(Properties()["resultsDropped"], 0) << "other clients could read each frame";
    EXPECT_EQ(client->Ask("RESULT height"), "OK," + std::to_string(frames) + ".000") << "others are served";
    std::string last;
    int received = 0;
    int number = 0;
    while (number < frames && received < frames) {
        last = slow.Line();
        ASSERT_EQ(last.substr(0, 5), "DATA,");
        number = std::stoi(last.substr(5));
        ++received;
        if (received == 50) { // the client reads again; the frame numbers have gaps
            Publish(Results().Measurement("profile/max", frames));
            quick.Line();
            ++frames;
        }
    }
    EXPECT_LT(received, frames) << "a line was dropped";
    EXPECT_EQ(quick.Ask("PUSH"), "OK,ON,0");
}

TEST_F(AsciiProtocolTest, ClosesAReaderOfFramesThatTakesNothingForTheIdleTime) {
    service->Stop();
    Start({{"idleTimeout", 1}});
    TextClient slow(port, 1024);
    TextClient quiet(port);
    EXPECT_EQ(slow.Ask("PUSH ON"), "OK");
    EXPECT_EQ(quiet.Ask("PUSH ON height"), "OK");
    const std::string text(900, 'x');
    for (int frame = 0; frame < 500; ++frame) {
        Publish(Results().Measurement("profile/max", frame).Text("profile/text", text));
        ASSERT_NE(quiet.Line(), "(closed)");
    }
    EXPECT_TRUE(client->WaitForClose()) << "silent without frames";
    EXPECT_TRUE(WaitForProperty("connected", 1)) << "the slow one is closed, too";
    EXPECT_EQ(quiet.Ask("PUSH"), "OK,ON,0") << "one that takes its lines stays, though there are none now";
}

TEST_F(AsciiProtocolTest, ServesNoMoreClientsThanItMay) {
    service->Stop();
    Start({{"maxConnections", 2}});
    EXPECT_EQ(client->Ask("VERSION").substr(0, 3), "OK,");
    TextClient second(port);
    EXPECT_EQ(second.Ask("VERSION").substr(0, 3), "OK,");
    TextClient third(port);
    EXPECT_TRUE(third.WaitForClose());
    EXPECT_EQ(Properties()["refused"], 1);
    EXPECT_EQ(second.Ask("QUIT"), "OK");
    EXPECT_TRUE(second.WaitForClose());
    TextClient fourth(port);
    EXPECT_EQ(fourth.Ask("VERSION").substr(0, 3), "OK,");
}

TEST_F(AsciiProtocolTest, FollowsItsNetworks) {
    const auto change = [&](const json& values) {
        Vor::Properties::JsonSerializer::Deserialize(service->Params(), values);
        service->ParamsUpdate();
    };
    change({{"writeNetworks", {"10.0.0.0/8"}}});
    EXPECT_EQ(client->Ask("START"), "ERROR,-983,\"clients of your network may not command the sensor\"");
    change({{"writeNetworks", {"127.0.0.1"}}});
    EXPECT_EQ(client->Ask("START"), "OK");
    change({{"readNetworks", {"10.0.0.0/8"}}});
    EXPECT_TRUE(client->WaitForClose());
    TextClient stranger(port);
    EXPECT_TRUE(stranger.WaitForClose());
}

TEST_F(AsciiProtocolTest, TakesAnotherFormatWhileItRuns) {
    Publish(Results().Measurement("profile/max", 1.5));
    EXPECT_TRUE(WaitForAnswer("RESULT 0", "OK,1.500,1"));
    EXPECT_EQ(client->Ask("PUSH ON 0 width"), "OK");
    Vor::Properties::JsonSerializer::Deserialize(
        service->Params(), {{"delimiter", ";"}, {"decimalSeparator", 1}, {"terminator", "\x03"}, {"invalidText", "-"}});
    service->ParamsUpdate();
    client->Send("RESULT;0\x03");
    EXPECT_EQ(client->Line("\x03"), "OK;1,500;1");
    Publish(Results().Measurement("profile/max", 2.5));
    EXPECT_EQ(client->Line("\x03"), "DATA;2;2,500;1;-");
}

TEST_F(AsciiProtocolTest, GoesOnAsItWasWithParametersThatDoNotGoTogether) {
    Vor::Properties::JsonSerializer::Deserialize(service->Params(), {{"decimalSeparator", 1}});
    EXPECT_THROW(service->ParamsUpdate(), Vor::Exception);
    EXPECT_EQ(client->Ask("RESULT 0"), "OK,INVALID,INVALID");
    service->Stop();
    const Vor::LogCapture log;
    EXPECT_THROW(service->Start(), Vor::Exception);
    EXPECT_EQ(service->GetProtocolStatus(), ProtocolStatus::FailedToStart);
    EXPECT_EQ(Properties()["failure"], "the delimiter \",\" has the decimal separator in it");
}

TEST_F(AsciiProtocolTest, ReadsResourcesOfTheSensor) {
    EXPECT_EQ(client->Ask("READ /controls/x").substr(0, 10), "ERROR,-996");
    AllowRead();
    EXPECT_EQ(client->Ask("READ /controls/x"), "OK,{\"name\":\"H\\u00f6he\",\"limits\":{\"a/b\":3}}");
    EXPECT_EQ(client->Ask("READ /controls/x#/limits/a~1b"), "OK,3");
    EXPECT_EQ(client->Ask("READ /controls/x#/limits/c"), "ERROR,-999,\"the document has no member /limits/c\"");
    const Vor::LogCapture log;
    EXPECT_EQ(client->Ask("READ /controls/x/outputs"),
              "ERROR,-999,\"there is nothing to read at /controls/x/outputs\"");
    EXPECT_EQ(client->Ask("READ /controls/%2e%2e/sensor").substr(0, 10), "ERROR,-997");
    EXPECT_EQ(client->Ask("READ /controls/long#/name"),
              "ERROR,-992,\"the answer would be longer than 65536 bytes; read a member of it: READ PATH#/MEMBER\"");
    Vor::Properties::JsonSerializer::Deserialize(service->Params(), {{"writeNetworks", {"10.0.0.0/8"}}});
    service->ParamsUpdate();
    EXPECT_EQ(client->Ask("READ /controls/x"), "ERROR,-983,\"clients of your network may not read resources\"");
    Vor::Properties::JsonSerializer::Deserialize(service->Params(),
                                                 {{"writeNetworks", {"127.0.0.1"}}, {"allowRead", false}});
    service->ParamsUpdate();
    EXPECT_EQ(client->Ask("READ /controls/x"), "ERROR,-996,\"READ is off; the parameter allowRead turns it on\"");
}

TEST_F(AsciiProtocolTest, AnswersAReadInTheOrderOfItsSession) {
    AllowRead();
    HoldMainLoopBefore([] {});
    SendRead(*client);
    client->Send("VERSION\r\n");
    TextClient other(port);
    EXPECT_EQ(other.Ask("RESULT 0"), "OK,INVALID,INVALID") << "another client is answered meanwhile";
    release.Set();
    EXPECT_EQ(client->Line(), "OK,\"H\\u00f6he\"");
    EXPECT_EQ(client->Line().substr(0, 4), "OK,\"");
}

TEST_F(AsciiProtocolTest, RefusesAReadWhileAnotherServiceReads) {
    AllowRead();
    HoldMainLoopBefore([] {});
    SendRead(*client);
    const Vor::LogCapture log;
    std::string text;
    EXPECT_THROW(environ.host.ReadResource("/controls/x", text, 0), Vor::Exception) << "the main loop is held";
    release.Set();
    EXPECT_EQ(client->Line(), "ERROR,-976,\"busy: another service reads a resource\"");
}

TEST_F(AsciiProtocolTest, ServesOthersWhenTheClientOfAReadHasGone) {
    AllowRead();
    HoldMainLoopBefore([] {});
    SendRead(*client);
    TextClient other(port);
    EXPECT_EQ(other.Ask("VERSION").substr(0, 3), "OK,");
    client.reset();
    EXPECT_TRUE(WaitForProperty("connected", 1));
    release.Set();
    EXPECT_EQ(other.Ask("READ /controls/x#/name"), "OK,\"H\\u00f6he\"");
}

TEST_F(AsciiProtocolTest, StopsOnTheMainLoopWhileReadsWaitForIt) {
    AllowRead();
    TextClient second(port);
    EXPECT_EQ(second.Ask("VERSION").substr(0, 3), "OK,");
    Tests::Signal stopped;
    HoldMainLoopBefore([&] {
        service->Stop();
        stopped.Set();
    });
    SendRead(*client);
    second.Send("READ /controls/x\r\n");
    release.Set();
    EXPECT_TRUE(stopped.Wait());
    EXPECT_TRUE(client->WaitForClose());
    EXPECT_TRUE(second.WaitForClose());
    EXPECT_EQ(Tests::CountThreads("AsciiRead"), 0u);
    AllowRead();
    EXPECT_EQ(client->Ask("READ /controls/x#/name"), "OK,\"H\\u00f6he\"");
}

TEST_F(AsciiProtocolTest, StopsOnAnotherThreadWhileAReadWaitsForTheMainLoop) {
    AllowRead();
    HoldMainLoopBefore([] {});
    SendRead(*client);
    service->Stop(); // as a load does, for which the main loop waits
    EXPECT_TRUE(client->WaitForClose());
    EXPECT_EQ(Tests::CountThreads("AsciiRead"), 0u);
    release.Set();
}

TEST_F(AsciiProtocolTest, TakesOtherParametersWhileAReadWaitsForTheMainLoop) {
    AllowRead();
    HoldMainLoopBefore([] {});
    SendRead(*client);
    Vor::Properties::JsonSerializer::Deserialize(service->Params(), {{"delimiter", ";"}, {"allowRead", false}});
    service->ParamsUpdate(); // as a load does, for which the main loop waits
    release.Set();
    EXPECT_EQ(client->Line(), "OK;\"H\\u00f6he\"");
}

TEST_F(AsciiProtocolTest, EndsWhileAReadWaitsForTheMainLoop) {
    AllowRead();
    HoldMainLoopBefore([] {});
    SendRead(*client);
    service->RemoveControlScanResultsHandler();
    service.reset();
    EXPECT_TRUE(client->WaitForClose());
    release.Set();
    service = std::make_unique<AsciiProtocol>(environ.Record("ascii", "e-ascii"));
}

TEST_F(AsciiProtocolTest, StopsAtOnceWhateverItsClientsDo) {
    HoldMainLoop();
    TextClient half(port);
    half.Send("RESU");
    client->Send("START\r\n");
    ASSERT_TRUE(held.Wait());
    const auto begin = std::chrono::steady_clock::now();
    service->Stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 200ms);
    EXPECT_EQ(service->GetProtocolStatus(), ProtocolStatus::Stopped);
    EXPECT_EQ(Properties()["address"], "");
    EXPECT_EQ(Properties()["connected"], 0);
    EXPECT_TRUE(client->WaitForClose());
    Start();
    EXPECT_EQ(client->Ask("STOP"), "ERROR,-976,\"busy: another command is in progress\"")
        << "the former one still runs";
    release.Set();
    EXPECT_TRUE(WaitForAnswer("STOP", "OK"));
}

TEST_F(AsciiProtocolTest, EndsWhileACommandRuns) {
    HoldMainLoop();
    client->Send("START\r\n");
    ASSERT_TRUE(held.Wait());
    service->RemoveControlScanResultsHandler();
    release.Set();
    service.reset();
    EXPECT_TRUE(client->WaitForClose());
    service = std::make_unique<AsciiProtocol>(environ.Record("ascii", "e-ascii"));
}

TEST_F(AsciiProtocolTest, ForgetsValuesAndCountsWhenItStartsAnew) {
    Publish(Results().Measurement("profile/max", 1.5));
    EXPECT_TRUE(WaitForAnswer("RESULT 0", "OK,1.500,1"));
    service->Stop();
    Start();
    EXPECT_EQ(client->Ask("RESULT 0"), "OK,INVALID,INVALID");
    EXPECT_EQ(Properties()["requests"], 1);
}

TEST_F(AsciiProtocolTest, ThePageListsTheCommands) {
    std::set<std::string> documented;
    for (const auto& row : Tests::MarkdownTable("Docs/ascii.md", {"Command", "`OK` comes"})) {
        std::istringstream forms(row.first);
        for (std::string form; std::getline(forms, form, ',');) {
            std::istringstream words(form);
            std::string word;
            words >> word;
            documented.insert(word);
        }
    }
    std::set<std::string> known;
    std::istringstream answer(client->Ask("HELP").substr(3));
    for (std::string word; std::getline(answer, word, ',');) {
        known.insert(word);
    }
    EXPECT_EQ(documented, known);
}

} // namespace
} // namespace Services::Ascii
