#include "VorRest/RequestProcessor.h"

#include "Tests/Support/Failure.h"
#include "Vor/AsyncLoop.h"
#include "Vor/MainLoop.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorApi/ICallableResource.h"
#include "VorApi/IParentResource.h"
#include "VorApi/ResourceRouter.h"
#include "VorApi/StreamResourceBase.h"

#include <optional>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace std::chrono_literals;
using VorApi::RequestInfo;
using VorApi::RequestInfoEx;
using VorApi::ResponseInfoEx;
using VorApi::VorDataTree;
using VorRest::Answer;
using VorRest::RequestProcessor;
using VorRest::Verb;

namespace {

/// A resource with all verbs, at "/things/:thing".
class Things : public VorApi::StreamResourceBase,
               public VorApi::DocumentResourceBase,
               public VorApi::IParentResource,
               public VorApi::ICallableResource {
public:
    void Document(const RequestInfoEx& request, ResponseInfoEx& response, VorDataTree& data) override {
        onMainLoop = Vor::AsyncLoop::OnMainLoop();
        if (request.FindKey("thing") == nullptr) {
            response.Embed("item", "/things/a", true, VorDataTree());
            response.Link("next", "/other", false, VorDataTree());
            return;
        }
        data["schema"].Set(request.WantsSchema());
        if (const std::string* const color = request.FindQuery("color")) {
            data["color"].Set(*color);
        }
        if (onDocument) {
            onDocument(response, data);
        }
    }
    void UpdateDocument(const RequestInfo& request, const nlohmann::json& json) override {
        call = "update " + *request.FindKey("thing") + json.dump();
    }
    Created Create(const RequestInfo&, const nlohmann::json& json) override {
        call = "create " + json.dump();
        return {"b", "/things/b"};
    }
    using IParentResource::Delete;
    void Delete(const RequestInfo& request) override { call = "delete " + *request.FindKey("thing"); }
    using ICallableResource::Invoke;
    VorDataTree Invoke(const RequestInfoEx& request, const VorDataTree& data) override {
        call = "invoke " + *request.FindKey("thing") + data.Dump(false);
        VorDataTree result;
        result["done"].Set(true);
        return result;
    }
    VorDataTree Invoke(const RequestInfoEx& request, ResponseInfoEx& response, const VorDataTree& data) override {
        if (request.PrefersAsync()) {
            response.Accept("/things/going");
        }
        return Invoke(request, data);
    }
    unsigned int StartStream(const RequestInfoEx& request, VorApi::IStreamReceiver& receiver) override {
        receiver.Send(VorDataTree::FromJson(*request.FindKey("thing")));
        for (const auto& [name, value] : request.GetQuery()) {
            receiver.Send(VorDataTree::FromJson(name + "=" + value));
        }
        return ++lastStream;
    }
    void StopStream(unsigned int id) override { call = "stop " + std::to_string(id); }
    StreamResourceBase* StreamableProvider() override { return streams ? this : nullptr; }

    std::function<void(ResponseInfoEx&, VorDataTree&)> onDocument;
    bool onMainLoop = false;
    bool streams = true;
    unsigned int lastStream = 0;
    std::string call;
};

class Receiver : public VorApi::IStreamReceiver {
public:
    void Send(const VorDataTree& message) override { messages += message.Dump(false); }
    std::string Description() const override { return "test"; }
    void Abort() override {}

    std::string messages;
};

class RequestProcessorTest : public testing::Test {
protected:
    RequestProcessorTest() {
        router.Register("/things/:thing", things);
        router.Register("/plain", plain);
    }

    /// Posts a request, whose answer is kept.
    void Post(Verb verb, const std::string& path, const char* body = "null", bool wantsSchema = false) {
        answer.reset();
        processor->Process({verb, path, VorDataTree::FromJson(nlohmann::json::parse(body)), wantsSchema},
                           [this](const Answer& given) {
                               answer = given;
                               ++answers;
                           });
    }

    Answer Ask(Verb verb, const std::string& path, const char* body = "null", bool wantsSchema = false) {
        Post(verb, path, body, wantsSchema);
        EXPECT_FALSE(answer.has_value()) << "answered inside the call";
        loop.RunReady();
        return answer.value_or(Answer());
    }

    static std::optional<Tests::Failure> FailureIn(const Answer& given) {
        return Tests::FailureOf([&] {
            if (given.failure != nullptr) {
                std::rethrow_exception(given.failure);
            }
        });
    }
    static yStatus StatusIn(const Answer& given) {
        const auto failure = FailureIn(given);
        return failure ? failure->status : yOK;
    }

    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    VorApi::ResourceRouter router;
    Things things;
    VorApi::ResourceBase plain;
    std::unique_ptr<RequestProcessor> processor = std::make_unique<RequestProcessor>(router, 5000000);
    std::optional<Answer> answer;
    int answers = 0;
};

TEST_F(RequestProcessorTest, ReadReturnsTheDocument) {
    EXPECT_EQ(processor->Read("/things/a", VorDataTree(), "").Dump(false), R"({"schema":false})");
    VorDataTree arguments;
    arguments["schema"].Set(true);
    EXPECT_EQ(processor->Read("/things/a", arguments, "").Dump(false), R"({"schema":true})");
    EXPECT_EQ(processor->Read("/things", VorDataTree(), "").Dump(false), "{}");
}

TEST_F(RequestProcessorTest, AResourceGetsTheQuery) {
    std::optional<Answer> given;
    processor->Run({.path = "/things/a", .query = {{"size", "1"}, {"color", "red"}, {"color", "blue"}}},
                   [&](Answer document) { given = std::move(document); });
    EXPECT_EQ(given.value().document.Dump(false), R"({"schema":false,"color":"red"})") << "the first one of a name";
    Receiver receiver;
    processor->OpenStream("/things/a", receiver, {{"rate", "2"}, {"points", "3"}});
    EXPECT_EQ(receiver.messages, R"("a""rate=2""points=3")");
}

TEST_F(RequestProcessorTest, ReadThrowsWhatIsWrong) {
    EXPECT_FAILURE(processor->Read("/nothing", VorDataTree(), ""), yERROR_NOT_FOUND,
                   "There is no resource at /nothing.");
    EXPECT_TEXTLESS_FAILURE(processor->Read("/plain", VorDataTree(), ""), yERROR_UNIMPLEMENTED);
    EXPECT_FAILURE(processor->Read("/plain", VorDataTree(), "x"), yERROR_PARAMETER,
                   "A read of /plain has a body, and none was expected.");
    things.onDocument = [](ResponseInfoEx& response, VorDataTree&) { response.Defer(); };
    EXPECT_FAILURE(processor->Read("/things/a", VorDataTree(), ""), yERROR_STATE,
                   "This request has to be answered at once.");
}

TEST_F(RequestProcessorTest, ARequestOfAnyThreadRunsOnTheMainLoop) {
    std::thread([this] { Post(Verb::Read, "/things"); }).join();
    EXPECT_FALSE(answer.has_value());
    loop.RunReady();
    ASSERT_TRUE(answer.has_value());
    EXPECT_TRUE(things.onMainLoop);
    ASSERT_EQ(answer->relations.size(), 2U);
    EXPECT_EQ(answer->relations[0].name, "item");
    EXPECT_EQ(answer->relations[0].path, "/things/a");
    EXPECT_TRUE(answer->relations[0].asArray);
    EXPECT_EQ(answer->relations[0].kind, ResponseInfoEx::Relation::Kind::Embed);
    EXPECT_EQ(answer->relations[1].name, "next");
    EXPECT_FALSE(answer->relations[1].asArray);
    EXPECT_EQ(answer->relations[1].kind, ResponseInfoEx::Relation::Kind::Link);
}

TEST_F(RequestProcessorTest, EachVerbReachesItsOperation) {
    EXPECT_EQ(Ask(Verb::Read, "/things/a", "null", true).document.Dump(false), R"({"schema":true})");
    EXPECT_EQ(StatusIn(Ask(Verb::Update, "/things/a", R"({"x":1})")), yOK);
    EXPECT_EQ(things.call, R"(update a{"x":1})");
    const Answer created = Ask(Verb::Create, "/things", R"({"y":2})");
    EXPECT_EQ(things.call, R"(create {"y":2})");
    EXPECT_EQ(created.id, "b");
    EXPECT_EQ(created.path, "/things/b");
    EXPECT_EQ(StatusIn(Ask(Verb::Delete, "/things/b")), yOK);
    EXPECT_EQ(things.call, "delete b");
    EXPECT_EQ(Ask(Verb::Invoke, "/things/c").document.Dump(false), R"({"done":true})");
    EXPECT_EQ(things.call, "invoke cnull");
}

TEST_F(RequestProcessorTest, AVerbThatAResourceLacksIsNotImplemented) {
    for (const Verb verb : {Verb::Read, Verb::Update, Verb::Create, Verb::Delete, Verb::Invoke}) {
        EXPECT_EQ(StatusIn(Ask(verb, "/plain")), yERROR_UNIMPLEMENTED);
        EXPECT_EQ(StatusIn(Ask(verb, "/nothing")), yERROR_NOT_FOUND);
    }
}

TEST_F(RequestProcessorTest, AnExceptionOfAnyTypeIsAnAnswer) {
    things.onDocument = [](ResponseInfoEx&, VorDataTree&) { throw std::runtime_error("broken"); };
    EXPECT_THROW(std::rethrow_exception(Ask(Verb::Read, "/things/a").failure), std::runtime_error);
    things.onDocument = [](ResponseInfoEx&, VorDataTree&) { throw 7; };
    EXPECT_THROW(std::rethrow_exception(Ask(Verb::Read, "/things/a").failure), int);
}

TEST_F(RequestProcessorTest, AResourceMayAnswerLaterFromAnyThread) {
    std::optional<VorApi::Completion> completion;
    things.onDocument = [&](ResponseInfoEx& response, VorDataTree&) {
        response.Link("self", "/things/a", false, VorDataTree());
        completion = response.Defer();
        EXPECT_FAILURE(response.Defer(), yERROR_STATE, "The answer of this request was taken already.");
    };
    Ask(Verb::Read, "/things/a");
    EXPECT_EQ(answers, 0);
    EXPECT_EQ(Ask(Verb::Read, "/things").relations.size(), 2U) << "the loop goes on";
    std::thread([&] { EXPECT_TRUE(completion->Complete(VorDataTree::FromJson({{"late", 1}}))); }).join();
    EXPECT_EQ(answers, 1);
    loop.RunReady();
    ASSERT_EQ(answers, 2);
    EXPECT_EQ(answer->document.Dump(false), R"({"late":1})");
    EXPECT_EQ(answer->relations.size(), 1U);
    EXPECT_FALSE(completion->Complete(VorDataTree()));
    EXPECT_FALSE(completion->Fail(nullptr));
    loop.Advance(10s);
    EXPECT_EQ(answers, 2);
}

TEST_F(RequestProcessorTest, AnAnswerBeforeTheReturnCounts) {
    things.onDocument = [](ResponseInfoEx& response, VorDataTree& data) {
        response.Defer().Complete(data);
        data["more"].Set("x");
    };
    EXPECT_EQ(Ask(Verb::Read, "/things/a").document.Dump(false), R"({"schema":false,"more":"x"})");
}

TEST_F(RequestProcessorTest, AFailureAfterTheAnswerWasTakenIsTheAnswer) {
    std::optional<VorApi::Completion> completion;
    things.onDocument = [&](ResponseInfoEx& response, VorDataTree&) {
        completion = response.Defer();
        Vor::Throw(yERROR_CONFLICT, "no");
    };
    EXPECT_EQ(StatusIn(Ask(Verb::Read, "/things/a")), yERROR_CONFLICT);
    EXPECT_FALSE(completion->Complete(VorDataTree()));
    EXPECT_EQ(answers, 1);
}

TEST_F(RequestProcessorTest, RunAnswersAtOnceUnlessTheResourceDoesLater) {
    std::vector<std::string> texts;
    const auto keep = [&](const Answer& given) { texts.push_back(given.document.Dump(false)); };
    processor->Run({Verb::Read, "/things/a", {}, true}, keep);
    EXPECT_EQ(texts, std::vector<std::string>{R"({"schema":true})"});

    std::optional<VorApi::Completion> completion;
    things.onDocument = [&](ResponseInfoEx& response, VorDataTree&) { completion = response.Defer(); };
    processor->Run({Verb::Read, "/things/a"}, keep);
    EXPECT_EQ(texts.size(), 1U);
    completion->Complete(VorDataTree::FromJson("late"));
    loop.RunReady();
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts.back(), R"("late")");
}

TEST_F(RequestProcessorTest, AnAnswerNamesWhatGoesOnAfterIt) {
    std::vector<Answer> given;
    const auto keep = [&](const Answer& one) { given.push_back(one); };
    processor->Run({.verb = Verb::Invoke, .path = "/things/a", .prefersAsync = true}, keep);
    processor->Run({.verb = Verb::Invoke, .path = "/things/a"}, keep);
    ASSERT_EQ(given.size(), 2U);
    EXPECT_TRUE(given[0].isAccepted);
    EXPECT_EQ(given[0].path, "/things/going");
    EXPECT_EQ(given[0].document.Dump(false), R"({"done":true})");
    EXPECT_FALSE(given[1].isAccepted);
    EXPECT_EQ(given[1].path, "");
}

TEST_F(RequestProcessorTest, AnAnswerThatTakesTooLongIsATimeOut) {
    std::optional<VorApi::Completion> completion;
    things.onDocument = [&](ResponseInfoEx& response, VorDataTree&) { completion = response.Defer(); };
    Ask(Verb::Read, "/things/a");
    loop.Advance(4999ms);
    EXPECT_EQ(answers, 0);
    loop.Advance(1ms);
    ASSERT_EQ(answers, 1);
    const auto failure = FailureIn(*answer);
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_TIMEOUT);
    EXPECT_EQ(failure->text, "The resource gave no answer in time.");
    EXPECT_FALSE(completion->Complete(VorDataTree()));
    loop.Advance(10s);
    EXPECT_EQ(answers, 1);
}

TEST_F(RequestProcessorTest, ItsEndDropsWhatIsOpen) {
    std::optional<VorApi::Completion> completion;
    things.onDocument = [&](ResponseInfoEx& response, VorDataTree&) { completion = response.Defer(); };
    Ask(Verb::Read, "/things/a");
    Post(Verb::Read, "/things");
    processor.reset();
    completion->Complete(VorDataTree());
    loop.Advance(10s);
    EXPECT_EQ(answers, 0);
}

TEST_F(RequestProcessorTest, AStreamIsStoppedAtItsEnd) {
    Receiver receiver;
    auto stream = processor->OpenStream("/things/a", receiver);
    EXPECT_EQ(receiver.messages, "\"a\"");
    EXPECT_EQ(things.call, "");
    stream.reset();
    EXPECT_EQ(things.call, "stop 1");
    EXPECT_EQ(Tests::StatusOf([&] { processor->OpenStream("/nothing", receiver); }), yERROR_NOT_FOUND);
    EXPECT_EQ(Tests::StatusOf([&] { processor->OpenStream("/plain", receiver); }), yERROR_UNIMPLEMENTED);
    things.streams = false;
    EXPECT_EQ(Tests::StatusOf([&] { processor->OpenStream("/things/a", receiver); }), yERROR_UNIMPLEMENTED);
}

TEST_F(RequestProcessorTest, AStreamMayOutliveItsResource) {
    Receiver receiver;
    auto going = std::make_unique<Things>();
    router.Register("/going/:thing", *going);
    auto stream = processor->OpenStream("/going/a", receiver);
    router.Deregister("/going/:thing", true);
    stream.reset();
    EXPECT_EQ(going->call, "");

    router.Register("/going/:thing", *going);
    stream = processor->OpenStream("/going/a", receiver);
    router.Deregister("/going/:thing", true);
    going.reset();
    stream.reset();
}

} // namespace
