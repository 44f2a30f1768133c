#include "Sensor/Resources/OperationRunner.h"
#include "Tests/Sensor/Resources/SensorFixture.h"
#include "VorControl/Control/ControlModule.h"
#include "VorControl/Control/ControlProtocolOperations.h"

#include <atomic>
#include <future>
#include <map>
#include <set>
#include <thread>

namespace Sensor::Resources {
namespace {

using Json = nlohmann::json;
using Tests::StatusOf;
using VorRest::Answer;
using VorRest::Verb;

class SensorCommandsTest : public SensorFixture {
protected:
    static std::string PathOf(const std::string& command) { return "/sensor/commands/" + command; }

    std::vector<std::string> EmbedsOf(const std::string& path) {
        std::vector<std::string> paths;
        for (const auto& relation : Ask({Verb::Read, path}).relations) {
            EXPECT_EQ(relation.name, "item");
            paths.push_back(relation.path);
        }
        return paths;
    }
    /// Posts to a command, for a client that doesn't wait.
    Answer Start(const std::string& command) {
        return Ask({.verb = Verb::Invoke, .path = PathOf(command), .prefersAsync = true});
    }
};

TEST_F(SensorCommandsTest, EachCommandHasADocumentWithItsParameters) {
    const std::vector<std::string> paths = EmbedsOf("/sensor/commands");
    std::set<std::string> ids;
    for (const std::string& path : paths) {
        const Json document = Read(path, true).ToJson();
        EXPECT_EQ(PathOf(document["id"]), path);
        EXPECT_TRUE(document["_schema"]["properties"].contains("parameters")) << document;
        ids.insert(document["id"]);
    }
    EXPECT_EQ(ids, (std::set<std::string>{"start", "stop", "trigger", "align", "clearAlign", "blinkLed",
                                          "factoryRestore", "restart"}));
    EXPECT_EQ(Read(PathOf("trigger")).ToJson()["parameters"], (Json{{"scanner", ""}}));
}

TEST_F(SensorCommandsTest, TheAnswerComesAtTheEndOfTheOperation) {
    const Answer answer = Invoke(PathOf("start"));
    EXPECT_EQ(StatusIn(answer), yOK);
    EXPECT_EQ(sensor.Core().GetRunState(), 1);
    EXPECT_EQ(answer.document.ToJson(), (Json{{"id", "1"},
                                              {"command", "start"},
                                              {"argument", ""},
                                              {"state", "succeeded"},
                                              {"code", yOK},
                                              {"text", ""},
                                              {"notes", Json::array()}}));
    ASSERT_EQ(answer.relations.size(), 1U);
    EXPECT_EQ(answer.relations[0].name, "vor:operation");
    EXPECT_EQ(answer.relations[0].path, "/sensor/operations/1");
    EXPECT_EQ(Read("/sensor/operations/1").ToJson(), answer.document.ToJson());
    EXPECT_EQ(StatusIn(Invoke(PathOf("stop"), Json::object())), yOK);
    EXPECT_EQ(sensor.Core().GetRunState(), 0);
    EXPECT_EQ(EmbedsOf("/sensor/operations"),
              (std::vector<std::string>{"/sensor/operations/1", "/sensor/operations/2"}));
}

TEST_F(SensorCommandsTest, AFailureIsAnsweredWithItsReason) {
    const Answer answer = Invoke(PathOf("trigger"));
    EXPECT_EQ(StatusIn(answer), yERROR_STATE);
    EXPECT_EQ(TextIn(answer), "The sensor isn't scanning.");
    const Json operation = Read("/sensor/operations/1").ToJson();
    EXPECT_EQ(operation["state"], "failed");
    EXPECT_EQ(operation["code"], yERROR_STATE);
    EXPECT_EQ(operation["text"], "The sensor isn't scanning.");
    EXPECT_NE(StatusIn(Invoke(PathOf("clearAlign"), {{"scanner", "none"}})), yOK);
    EXPECT_EQ(Read("/sensor/operations/2").ToJson()["argument"], "none");
}

TEST_F(SensorCommandsTest, RefusedArgumentsAreNamedWhereTheyAreInTheBody) {
    const Json arguments{{"system", 1}, {"blinks", true}, {"on", "x"}};
    EXPECT_EQ(PlacesIn(Invoke(PathOf("blinkLed"), arguments)), (std::vector<std::string>{"/system", "/on"}));
    const Answer answer = Invoke(PathOf("blinkLed"), {{"parameters", arguments}});
    EXPECT_EQ(PlacesIn(answer), (std::vector<std::string>{"/parameters/system", "/parameters/on"}));
    EXPECT_EQ(StatusIn(answer), yERROR_PARAMETER);
    EXPECT_EQ(TextIn(answer), "system: expected a boolean but got the integer 1.");
    EXPECT_TRUE(EmbedsOf("/sensor/operations").empty());
}

TEST_F(SensorCommandsTest, ATriggerEndsWhenItsFrameIsPublished) {
    Invoke(PathOf("start"));
    std::atomic<int> frames = 0;
    auto handler = sensor.Hub().AddResultHandler([&](void*) { ++frames; });
    EXPECT_EQ(StatusIn(Invoke(PathOf("trigger"))), yOK);
    EXPECT_EQ(sensor.ScanState().frames, 1U);
    EXPECT_EQ(StatusIn(Invoke(PathOf("trigger"), {{"parameters", {{"scanner", "scanner-0"}}}})), yOK);
    EXPECT_EQ(sensor.ScanState().frames, 2U);
    EXPECT_TRUE(sensor.Hub().Drain(10'000'000));
    EXPECT_EQ(frames, 2);
    sensor.Hub().RemoveResultHandler(handler);
}

TEST_F(SensorCommandsTest, ATriggerWhoseFrameDoesntComeFails) {
    Invoke(PathOf("start"));
    std::promise<void> released;
    auto handler = sensor.Hub().AddResultHandler([wait = released.get_future().share()](void*) { wait.wait(); });
    EXPECT_EQ(StatusIn(Invoke(PathOf("trigger"))), yOK); // from here on the hub stands
    std::atomic<int> ends = 0;
    VorControl::ControlProtocolOperations& operations = host.Module().Operations();
    auto endHandler = operations.AddOpEndEventHandler(OperationRunner::ClientId, [&](int) {
        ++ends;
        loop.Post([] {});
    });
    const Pending pending = Begin({.verb = Verb::Invoke, .path = PathOf("trigger")});
    WaitFor([&] { return ends == 1; });
    loop.RunReady();
    EXPECT_FALSE(pending->has_value());
    loop.Advance(OperationRunner::FrameTimeout);
    EXPECT_EQ(StatusIn(AnswerTo(pending)), yERROR_TIMEOUT);
    EXPECT_EQ(Read("/sensor/operations/3").ToJson()["text"], "The frame of the trigger didn't come within a second.");
    released.set_value();
    sensor.Hub().RemoveResultHandler(handler);
    EXPECT_EQ(StatusIn(Invoke(PathOf("trigger"))), yOK);
    WaitFor([&] { return ends == 2; });
    operations.RemoveOpEndEventHandler(OperationRunner::ClientId, endHandler);
}

TEST_F(SensorCommandsTest, OneOperationRunsInTheWholeSensor) {
    using ActionId = VorControl::ControlProtocolOperations::ActionId;
    host.Module().Operations().RunSynchronousOp("a", ActionId::NeverEnd, {});
    EXPECT_EQ(StatusIn(Invoke(PathOf("start"))), yERROR_BUSY);
    EXPECT_EQ(StatusIn(Start("start")), yERROR_BUSY);
    EXPECT_TRUE(EmbedsOf("/sensor/operations").empty()) << "it hasn't begun";
}

TEST_F(SensorCommandsTest, EachCommandOfSeveralClientsEndsOnce) {
    VorControl::ControlProtocolOperations& operations = host.Module().Operations();
    std::atomic<int> accepted = 0;
    std::atomic<int> ended = 0;
    auto handler = operations.AddOpEndEventHandler("other", [&](int) {
        ++ended;
        loop.Post([] {});
    });
    std::jthread other([&] {
        for (int i = 0; i < 1000; ++i) {
            accepted += StatusOf([&] { operations.StartScan("other"); }) == yOK ? 1 : 0;
        }
    });
    std::map<yStatus, int> statuses;
    for (int i = 0; i < 300; ++i) {
        ++statuses[StatusIn(Invoke(PathOf("start")))];
    }
    other.join();
    WaitFor([&] { return ended == accepted; });
    EXPECT_EQ(statuses[yOK] + statuses[yERROR_BUSY], 300);
    EXPECT_EQ(StatusIn(Invoke(PathOf("stop"))), yOK);
    const std::string last = "/sensor/operations/" + std::to_string(statuses[yOK] + 1);
    EXPECT_EQ(EmbedsOf("/sensor/operations").back(), last) << "one for each that wasn't refused";
    EXPECT_EQ(ended, accepted);
    operations.RemoveOpEndEventHandler("other", handler);
}

TEST_F(SensorCommandsTest, WhoDoesntWaitReadsTheOperation) {
    const Answer answer = Start("align");
    EXPECT_TRUE(answer.isAccepted);
    EXPECT_EQ(answer.path, "/sensor/operations/1");
    EXPECT_EQ(answer.document.ToJson()["state"], "running");
    EXPECT_EQ(Read(answer.path).ToJson()["state"], "running");
    EXPECT_EQ(StatusIn(Invoke(PathOf("stop"))), yERROR_BUSY);
    loop.Advance(std::chrono::seconds(1));
    EXPECT_EQ(WaitForEnd(answer.path)["state"], "succeeded");
}

TEST_F(SensorCommandsTest, WhatEndsTheProgramIsAnsweredBefore) {
    for (const auto& [command, act] : {std::pair("factoryRestore", "restored"), std::pair("restart", "restarted")}) {
        acts.clear();
        std::optional<Answer> answer;
        host.Requests().Process({.verb = Verb::Invoke, .path = PathOf(command)}, [&](const Answer& given) {
            answer = given;
            acts.emplace_back("answered");
        });
        loop.RunReady();
        ASSERT_TRUE(answer.has_value());
        EXPECT_TRUE(answer->isAccepted);
        EXPECT_EQ(acts, (std::vector<std::string>{"answered", act}));
        EXPECT_EQ(WaitForEnd(answer->path)["state"], "succeeded");
    }
}

TEST_F(SensorCommandsTest, TheLedsBlinkAsTheArgumentsSay) {
    EXPECT_EQ(StatusIn(Invoke(PathOf("blinkLed"))), yOK);
    EXPECT_EQ(StatusIn(Invoke(PathOf("blinkLed"), {{"system", false}, {"blinks", true}})), yOK);
    EXPECT_EQ(StatusIn(Invoke(PathOf("blinkLed"), {{"system", false}, {"on", true}})), yOK);
    EXPECT_EQ(acts, (std::vector<std::string>{"System LED blinks.", "LED blinks.", "LED on."}));
}

TEST_F(SensorCommandsTest, WhatIsntACommandIsRefused) {
    EXPECT_EQ(StatusIn(Invoke(PathOf("fly"))), yERROR_NOT_FOUND);
    EXPECT_EQ(StatusOf([&] { Read(PathOf("fly")); }), yERROR_NOT_FOUND);
    EXPECT_EQ(StatusIn(Invoke("/sensor/commands")), yERROR_PARAMETER);
    EXPECT_EQ(StatusIn(Invoke(PathOf("trigger"), {{"scanner", 5}})), yERROR_PARAMETER);
    EXPECT_EQ(StatusIn(Invoke(PathOf("trigger"), {{"parameters", 5}})), yERROR_PARAMETER);
    EXPECT_EQ(TextIn(Invoke(PathOf("start"), Json::array())), "The arguments of the command 'start' aren't an object.");
    const std::string refused = "The id of a scanner has at most 255 bytes, none of which is zero.";
    EXPECT_EQ(TextIn(Invoke(PathOf("align"), {{"scanner", std::string(256, 's')}})), refused);
    EXPECT_EQ(TextIn(Invoke(PathOf("align"), {{"scanner", std::string("scanner-0\0", 10)}})), refused);
    EXPECT_TRUE(EmbedsOf("/sensor/operations").empty());
}

TEST_F(SensorCommandsTest, TheLastOperationsAreKept) {
    for (int i = 0; i < 34; ++i) {
        Invoke(PathOf("start"));
    }
    const std::vector<std::string> kept = EmbedsOf("/sensor/operations");
    ASSERT_EQ(kept.size(), OperationRunner::MaxKept);
    EXPECT_EQ(kept.front(), "/sensor/operations/3");
    EXPECT_EQ(kept.back(), "/sensor/operations/34");
    EXPECT_EQ(StatusOf([&] { Read("/sensor/operations/2"); }), yERROR_NOT_FOUND);
}

TEST_F(SensorCommandsTest, AnOperationThatIsRefusedReplacesNone) {
    for (std::size_t i = 0; i < OperationRunner::MaxKept; ++i) {
        Invoke(PathOf("start"));
    }
    const std::vector<std::string> kept = EmbedsOf("/sensor/operations");
    ASSERT_EQ(kept.size(), OperationRunner::MaxKept);
    host.Module().Operations().RunSynchronousOp("a", VorControl::ControlProtocolOperations::ActionId::NeverEnd, {});
    EXPECT_EQ(StatusIn(Invoke(PathOf("start"))), yERROR_BUSY);
    EXPECT_EQ(EmbedsOf("/sensor/operations"), kept);
}

TEST_F(SensorCommandsTest, AnOperationMayEndWhenItsClientAndTheResourcesHaveGone) {
    const Pending pending = Begin({.verb = Verb::Invoke, .path = PathOf("align")});
    directory.reset();
    loop.Advance(std::chrono::seconds(1));
    EXPECT_FALSE(pending->has_value());
    directory = std::make_unique<SensorDir>(host.Router(), Environ(), *streams);
    EXPECT_TRUE(EmbedsOf("/sensor/operations").empty());
}

} // namespace
} // namespace Sensor::Resources
