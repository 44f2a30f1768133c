#pragma once

#include "Sensor/Http/IEventStreams.h"
#include "Sensor/Http/IMediaResource.h"
#include "Sensor/Http/IRevisions.h"
#include "Sensor/Http/ResourceGateway.h"
#include "Sensor/Http/ResponderTarget.h"
#include "Tests/VorControl/Protocol/ResourceFixture.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorApi/ICallableResource.h"
#include "VorApi/IParentResource.h"
#include "VorApi/Path.h"
#include "VorApi/RoutedResource.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {

/// A client that waits for an answer.
class WaitingClient {
public:
    explicit WaitingClient(Vor::MainLoop& loop)
        : loop(loop) {}

    void Respond(Sensor::Http::HttpResponse response) {
        const std::lock_guard guard(mutex);
        if (!answer) {
            answer = std::move(response);
            answeredOn = std::this_thread::get_id();
        }
    }
    bool IsWanted() const {
        const std::lock_guard guard(mutex);
        return !hasGone && !answer;
    }
    /// Nobody can answer any more.
    void Release() {
        {
            const std::lock_guard guard(mutex);
            isReleased = true;
        }
        loop.Post([] {}); // wakes the test that waits for it
    }

    bool IsAnswered() const {
        const std::lock_guard guard(mutex);
        return answer.has_value();
    }
    bool IsReleased() const {
        const std::lock_guard guard(mutex);
        return isReleased;
    }
    Sensor::Http::HttpResponse Answer() const {
        const std::lock_guard guard(mutex);
        return answer.value();
    }
    /// The thread that has answered.
    std::thread::id AnsweredOn() const {
        const std::lock_guard guard(mutex);
        return answeredOn;
    }
    /// Releases what was answered, as after sending it.
    void Leave() {
        const std::lock_guard guard(mutex);
        hasGone = true;
        answer.reset();
    }

private:
    Vor::MainLoop& loop;
    mutable std::mutex mutex;
    std::optional<Sensor::Http::HttpResponse> answer;
    std::thread::id answeredOn;
    bool hasGone = false;
    bool isReleased = false;
};

/// The way to a client.
class ClientTarget : public Sensor::Http::Responder::Target {
public:
    explicit ClientTarget(std::shared_ptr<WaitingClient> client)
        : client(std::move(client)) {}
    ~ClientTarget() override { client->Release(); }
    ClientTarget(const ClientTarget&) = delete;
    ClientTarget& operator=(const ClientTarget&) = delete;

    void Respond(Sensor::Http::HttpResponse response) override { client->Respond(std::move(response)); }
    bool IsWanted() const override { return client->IsWanted(); }
    void Wake() override {}

private:
    const std::shared_ptr<WaitingClient> client;
};

/// The configuration of what is below "/controls/full", but its figures, has a revision.
class FakeRevisions : public Sensor::Http::IRevisions {
public:
    std::optional<std::string> TagOf(const std::string& path) const override {
        if (!path.starts_with("/controls/full") || path == "/controls/full/metrics") {
            return std::nullopt;
        }
        return "\"boot-" + std::to_string(revision) + '"';
    }

    unsigned revision = 1;
};

class FakeEventStreams : public Sensor::Http::IEventStreams {
public:
    Sensor::Http::HttpResponse Open(const Sensor::Http::RequestTarget& target, const Sensor::Http::HttpRequest&,
                                    Sensor::Http::Responder) override {
        opened = target.path;
        if (failure != yOK) {
            Vor::Throw(failure);
        }
        return {.fields = {{"Content-Type", "text/event-stream"}}};
    }

    std::string opened;
    yStatus failure = yOK;
};

/// Notes at "/notes/:note": create, read, update, delete. "broken" can't be read, "crowded" has a part more than can be
/// expanded.
class Notes : public VorApi::DocumentResourceBase, public VorApi::IParentResource {
public:
    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override {
        if (const std::string* const id = request.FindKey("note")) {
            data["text"].Set(Text(*id));
            if (request.WantsSchema()) {
                data["_schema"]["type"].Set("object");
            }
            if (*id == "broken") {
                Vor::Throw(yERROR_STATE, "broken");
            }
            for (std::size_t i = 0; *id == "crowded" && i <= Sensor::Http::ResourceGateway::MaxExpanded; ++i) {
                response.Embed("part", "/notes", true, VorApi::VorDataTree());
            }
            return;
        }
        for (const auto& [id, text] : texts) {
            response.Embed("item", VorApi::Path::Format("/notes/:note", {id}), true, VorApi::VorDataTree());
        }
    }
    bool IsUpdatable() const override { return true; }
    void UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) override {
        std::string& text = Text(*request.FindKey("note"));
        if (!json.at("text").is_string()) {
            Vor::Throw(yERROR_PARAMETER, "A text was expected.");
        }
        text = json["text"];
    }
    Created Create(const VorApi::RequestInfo&, const nlohmann::json& json) override {
        const std::string id = json.at("id");
        if (!texts.emplace(id, json.value("text", "")).second) {
            Vor::Throw(yERROR_ALREADY_EXISTS, "There is a note '%s'.", id);
        }
        return {id, VorApi::Path::Format("/notes/:note", {id})};
    }
    using IParentResource::Delete;
    void Delete(const VorApi::RequestInfo& request) override {
        Text(*request.FindKey("note"));
        texts.erase(*request.FindKey("note"));
    }

    bool Creates() const override { return creates; }

    std::map<std::string, std::string> texts;
    bool creates = true;

protected:
    // The list also names what can't be read.
    void RequireDocument(const VorApi::RequestInfoEx& request) override {
        if (const std::string* const id = request.FindKey("note")) {
            Text(*id);
        }
    }

private:
    std::string& Text(const std::string& id) {
        const auto found = texts.find(id);
        if (found == texts.end()) {
            Vor::Throw(yERROR_NOT_FOUND, "There is no note '%s'.", id);
        }
        return found->second;
    }
};

/// A document that the test writes.
class FreeDocument : public VorApi::DocumentResourceBase {
public:
    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override {
        ++reads;
        if (onDocument) {
            onDocument(request, response, data);
        }
    }

    std::function<void(const VorApi::RequestInfoEx&, VorApi::ResponseInfoEx&, VorApi::VorDataTree&)> onDocument;
    unsigned reads = 0;

protected:
    void RequireDocument(const VorApi::RequestInfoEx&) override {}
};

/// A document of bytes of a type of their own.
class Picture : public FreeDocument, public Sensor::Http::IMediaResource {
public:
    std::string_view MediaType() const override { return "image/png"; }
};

/// A command without a document.
class Button : public VorApi::ResourceBase, public VorApi::ICallableResource {
public:
    using ICallableResource::Invoke;
    VorApi::VorDataTree Invoke(const VorApi::RequestInfoEx&, const VorApi::VorDataTree& data) override {
        if (onInvoke) {
            onInvoke();
        }
        return data;
    }
    /// Goes on after the answer, at "/free", if the client prefers that.
    VorApi::VorDataTree Invoke(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                               const VorApi::VorDataTree& data) override {
        if (request.PrefersAsync()) {
            response.Accept("/free");
        }
        return Invoke(request, data);
    }

    std::function<void()> onInvoke;
};

/// HTTP without sockets: the resources of the services "bare" and "full", and a few others. The test's thread is the
/// main loop's.
class GatewayFixture : public ResourceFixture {
protected:
    using Json = nlohmann::json;
    using HttpRequest = Sensor::Http::HttpRequest;
    using HttpResponse = Sensor::Http::HttpResponse;
    using HttpFields = Sensor::Http::HttpFields;
    using Client = std::shared_ptr<WaitingClient>;

    GatewayFixture() {
        router.Register("/", entry);
        router.Register("/notes/:note", notes);
        router.Register("/free", free);
        router.Register("/button", button);
        entry.onDocument = [](const VorApi::RequestInfoEx&, VorApi::ResponseInfoEx& response, VorApi::VorDataTree&) {
            for (const char* const path : {"/controls", "/controlTypes", "/notes", "/problems", "/rels"}) {
                response.Link("section", path, true, VorApi::VorDataTree());
            }
        };
        Restart({});
    }

    void Restart(const Sensor::Http::ResourceGateway::Settings& settings) {
        gateway.reset();
        gateway = std::make_unique<Sensor::Http::ResourceGateway>(settings, router, requests, revisions, streams);
    }

    /// Sends a request, to this host unless the fields say otherwise.
    Client Send(const std::string& method, const std::string& target, HttpFields fields = {},
                const std::string& body = "") {
        auto client = std::make_shared<WaitingClient>(loop);
        if (!fields.Find("Host")) {
            fields.Add("Host", "localhost:8080");
        }
        gateway->Handle({method, target, std::move(fields), body},
                        Sensor::Http::Responder(std::make_shared<ClientTarget>(client)));
        return client;
    }
    HttpResponse Wait(const Client& client) {
        loop.RunReady();
        while (!client->IsReleased()) {
            if (!loop.WaitReady()) {
                ADD_FAILURE() << "no answer";
                return {.status = 0};
            }
            loop.RunReady();
        }
        loop.RunReady();
        return client->Answer();
    }

    HttpResponse Request(const std::string& method, const std::string& target, HttpFields fields = {},
                         const std::string& body = "") {
        return Wait(Send(method, target, std::move(fields), body));
    }
    HttpResponse Get(const std::string& target) { return Request("GET", target); }
    HttpResponse SendJson(const std::string& method, const std::string& target, const std::string& body,
                          HttpFields fields = {}) {
        fields.Add("Content-Type", "application/json");
        return Request(method, target, std::move(fields), body);
    }

    static Json Parse(const HttpResponse& response) { return response.body ? Json::parse(*response.body) : Json(); }
    /// The document of an answer 200.
    Json GetDocument(const std::string& target) {
        const HttpResponse response = Get(target);
        EXPECT_EQ(response.status, 200U) << target << (response.body ? *response.body : "");
        EXPECT_EQ(response.fields.Find("Content-Type"), "application/hal+json");
        return Parse(response);
    }
    /// The detail of a problem with that status.
    static std::string DetailOf(const HttpResponse& response, unsigned status) {
        EXPECT_EQ(response.status, status);
        if (!response.body) {
            return "";
        }
        const Json problem = Parse(response);
        EXPECT_EQ(problem["status"], status);
        return problem["detail"];
    }

    FreeDocument entry;
    Notes notes;
    FreeDocument free;
    Button button;
    FakeRevisions revisions;
    FakeEventStreams streams;
    std::unique_ptr<Sensor::Http::ResourceGateway> gateway;
};

} // namespace Tests
