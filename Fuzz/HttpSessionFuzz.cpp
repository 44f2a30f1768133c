// Any stream of bytes as one connection of HTTP. What is handled and answered must not depend on the sizes of the
// pieces in which the stream arrives, and every answer must have a status line.

#include "Net/Wakeup.h"
#include "Sensor/Http/HttpSession.h"
#include "Sensor/Http/IHttpHandler.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace {

using namespace Sensor::Http;

/// Ends after its only piece.
class ShortStream : public IBodyStream {
public:
    void Read(std::string& out) override { out += std::exchange(left, ""); }
    bool Ended() const override { return left.empty(); }

private:
    std::string left = "data";
};

/// Answers at once, with what it was asked. The body of a PUT is taken in pieces.
class Handler : public IHttpHandler {
public:
    std::optional<HttpResponse> CheckHeader(const HttpRequest& request) override {
        if (request.fields.Count("Host") > 1 || !request.body.empty() || request.method.empty()) {
            std::abort();
        }
        if (request.target == "/refused") {
            return HttpResponse{.status = 403};
        }
        return std::nullopt;
    }
    void Handle(HttpRequest request, Responder responder) override {
        std::string text = request.method + " " + request.target + "\n";
        for (const auto& [name, value] : request.fields) {
            text.append(name).append(":").append(value).append("\n");
        }
        text += request.body;
        if (!hasStreamed) { // what follows a stream is handled only if it was received before the stream began
            handled += text;
        }
        if (request.target == "/stream") {
            hasStreamed = true;
            responder.Respond({.stream = std::make_shared<ShortStream>()});
        } else if (request.target == "/nothing") {
            responder.Respond({.status = 204});
        } else if (request.target != "/dropped") {
            responder.Respond({.body = std::make_shared<const std::string>(std::move(text))});
        }
    }

    bool IsInPieces(const HttpRequest& request) const override { return request.method == "PUT"; }
    std::shared_ptr<IBodyReceiver> Receive(HttpRequest request, Responder responder) override;

    std::string handled;

private:
    bool hasStreamed = false;
};

/// Passes the request on when its body is whole.
class Receiver : public IBodyReceiver {
public:
    Receiver(Handler& handler, HttpRequest request, Responder responder)
        : handler(handler)
        , request(std::move(request))
        , responder(std::move(responder)) {}
    bool HasRoom() const override { return true; }
    void Take(std::string piece) override {
        if (piece.empty()) {
            std::abort();
        }
        request.body += piece;
    }
    void End() override { handler.Handle(std::move(request), std::move(responder)); }

private:
    Handler& handler;
    HttpRequest request;
    Responder responder;
};

std::shared_ptr<IBodyReceiver> Handler::Receive(HttpRequest request, Responder responder) {
    return std::make_shared<Receiver>(*this, std::move(request), std::move(responder));
}

/// Without the times, which differ.
std::string WithoutDates(std::string answers) {
    const std::string begin = "\r\nDate: ";
    for (std::size_t at = answers.find(begin); at != std::string::npos; at = answers.find(begin, at)) {
        answers.erase(at, answers.find("\r\n", at + 2) - at);
    }
    return answers;
}

std::string Feed(std::span<const unsigned char> stream, std::size_t step, std::size_t maxSentSize) {
    static const auto Wakeup = std::make_shared<Net::Wakeup>();
    HttpSessionSettings settings;
    settings.limits = {.requestLine = 100, .header = 400, .fields = 10, .body = 200, .pieces = 300};
    Handler handler;
    HttpSession session(settings, handler, Wakeup);
    std::string answers;
    while (!stream.empty() && !session.Broken()) {
        const auto space = session.ReceiveSpace();
        if (space.empty()) {
            std::abort();
        }
        const std::size_t size = std::min({step, space.size(), stream.size()});
        std::copy_n(stream.begin(), size, space.begin());
        session.Received(size);
        stream = stream.subspan(size);
        session.Process();
        while (!session.Replies().empty()) {
            const auto replies = session.Replies().first(std::min(maxSentSize, session.Replies().size()));
            answers.append(replies.begin(), replies.end());
            session.Sent(replies.size());
            session.Process();
        }
    }
    if (session.IsWorking() || (!answers.empty() && !answers.starts_with("HTTP/1.1 "))) {
        std::abort();
    }
    return WithoutDates(answers) + "\n" + handler.handled;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A line between chunks is found too long when it is received, not where it begins to be.
    const std::span<const unsigned char> stream(data, std::min(size, RequestParser::MaxFraming / 2));
    const std::size_t odd = size == 0 ? 1 : 1 + data[size - 1] % 23;
    const std::string whole = Feed(stream, SIZE_MAX, SIZE_MAX);
    if (Feed(stream, 1, SIZE_MAX) != whole || Feed(stream, odd, 100) != whole || Feed(stream, 12, 37) != whole) {
        std::abort();
    }
    return 0;
}
