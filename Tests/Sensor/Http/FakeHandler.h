#pragma once

#include "Sensor/Http/IHttpHandler.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Sensor::Http {

/// A stream whose texts come from any thread.
class FakeStream : public IBodyStream {
public:
    /// What the stream and the test share; it outlives the stream.
    struct Source {
        void Put(const std::string& text) {
            const std::lock_guard guard(mutex);
            waiting += text;
        }
        void End() {
            const std::lock_guard guard(mutex);
            hasEnded = true;
        }
        std::mutex mutex; ///< guards the next three
        std::string waiting;
        bool hasEnded = false;
        std::size_t maxPiece = 65536; ///< bytes that are read at once
        std::atomic<bool> isCut = false;
        std::atomic<bool> isStreamGone = false;
        std::atomic<std::size_t> bytesRead = 0;
    };

    explicit FakeStream(std::shared_ptr<Source> source)
        : source(std::move(source)) {}
    ~FakeStream() override { source->isStreamGone = true; }
    FakeStream(const FakeStream&) = delete;
    FakeStream& operator=(const FakeStream&) = delete;

    void Read(std::string& out) override {
        const std::lock_guard guard(source->mutex);
        const std::string piece = source->waiting.substr(0, source->maxPiece);
        source->waiting.erase(0, piece.size());
        source->bytesRead += piece.size();
        out += piece;
    }
    bool Ended() const override {
        const std::lock_guard guard(source->mutex);
        return source->hasEnded;
    }
    bool IsCut() const override { return source->isCut; }

private:
    const std::shared_ptr<Source> source;
};

/// Answers with method, target and body, or as the target says.
class FakeHandler : public IHttpHandler {
public:
    static constexpr std::size_t LongSize = std::size_t{1} << 20;

    std::optional<HttpResponse> CheckHeader(const HttpRequest& request) override {
        {
            const std::lock_guard guard(mutex);
            checked.push_back(request.method + " " + request.target);
        }
        if (request.target == "/throw-in-check") {
            throw std::runtime_error("thrown");
        }
        if (request.target == "/forbidden") {
            return HttpResponse{.status = 403, .body = std::make_shared<const std::string>("no")};
        }
        return std::nullopt;
    }

    void Handle(HttpRequest request, Responder responder) override {
        const std::string& target = request.target;
        const std::string text = request.method + " " + target + "\n" + request.body;
        {
            const std::lock_guard guard(mutex);
            handled.push_back(request);
            if (target.starts_with("/later")) {
                waiting.push_back({responder, text});
                return;
            }
        }
        if (target == "/throw") {
            throw std::runtime_error("thrown");
        }
        if (target == "/stream") {
            const std::lock_guard guard(mutex);
            streamers.push_back(responder);
            responder.Respond(
                {.fields = {{"Content-Type", "text/event-stream"}}, .stream = std::make_shared<FakeStream>(source)});
        } else if (target == "/nothing") {
            responder.Respond({.status = 204, .body = longBody}); // of which nothing may be sent
        } else if (target == "/long") {
            responder.Respond({.body = longBody});
        } else if (target != "/dropped") {
            responder.Respond(
                {.fields = {{"Content-Type", "text/plain"}}, .body = std::make_shared<const std::string>(text)});
        }
    }

    std::size_t WaitingCount() {
        const std::lock_guard guard(mutex);
        return waiting.size();
    }
    /// Answers the request to a target "/later..." that came as number `index` of those that wait.
    void AnswerWaiting(std::size_t index) {
        std::unique_lock guard(mutex);
        const auto [responder, text] = std::move(waiting.at(index));
        waiting.erase(waiting.begin() + static_cast<std::ptrdiff_t>(index));
        guard.unlock();
        responder.Respond({.body = std::make_shared<const std::string>(text)});
    }
    void Stream(const std::string& text) {
        source->Put(text);
        WakeStreams();
    }
    void WakeStreams() {
        const std::lock_guard guard(mutex);
        for (const Responder& streamer : streamers) {
            streamer.Wake();
        }
    }

    const std::shared_ptr<const std::string> longBody = std::make_shared<const std::string>(LongSize, 'x');
    const std::shared_ptr<FakeStream::Source> source = std::make_shared<FakeStream::Source>();

    std::mutex mutex; ///< guards the others
    std::vector<std::string> checked;
    std::vector<HttpRequest> handled;
    std::vector<std::pair<Responder, std::string>> waiting;
    std::vector<Responder> streamers;
};

} // namespace Sensor::Http
