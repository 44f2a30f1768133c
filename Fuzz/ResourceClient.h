#pragma once

#include "Sensor/Http/HttpRequest.h"
#include "Sensor/Http/HttpResponse.h"
#include "Sensor/Http/IHttpHandler.h"
#include "Sensor/Http/ProblemTypes.h"
#include "Sensor/Http/ResponderTarget.h"
#include "Vor/MainLoop.h"

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

namespace Fuzz {

inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// A client that is answered once.
class Client : public Sensor::Http::Responder::Target {
public:
    void Respond(Sensor::Http::HttpResponse response) override {
        const std::lock_guard guard(mutex);
        Require(!answer);
        answer = std::move(response);
        answered.notify_one();
    }
    bool IsWanted() const override { return true; }
    void Wake() override {}

    Sensor::Http::HttpResponse Wait() {
        std::unique_lock guard(mutex);
        answered.wait(guard, [this] { return answer.has_value(); });
        return *answer;
    }

private:
    std::mutex mutex;
    std::condition_variable answered;
    std::optional<Sensor::Http::HttpResponse> answer;
};

/// Removes the text until that character, which goes, too. Returns it.
inline std::string_view SplitOff(std::string_view& text, char end) {
    const std::string_view part = text.substr(0, text.find(end));
    text.remove_prefix(std::min(text.size(), part.size() + 1));
    return part;
}

/// "METHOD TARGET", lines with fields, an empty line and the body.
inline Sensor::Http::HttpRequest ParseRequest(std::string_view text) {
    Sensor::Http::HttpRequest request;
    std::string_view line = SplitOff(text, '\n');
    request.method = SplitOff(line, ' ');
    request.target = line;
    for (line = SplitOff(text, '\n'); !line.empty(); line = SplitOff(text, '\n')) {
        const std::string_view name = SplitOff(line, ':');
        request.fields.Add(std::string(name), std::string(line));
    }
    request.body = text;
    return request;
}

/// The answer to a request, which is one of which the client is to blame, and whose body is JSON.
inline Sensor::Http::HttpResponse Ask(Sensor::Http::IHttpHandler& handler, Vor::MainLoop& loop,
                                      Sensor::Http::HttpRequest request) {
    const auto client = std::make_shared<Client>();
    handler.Handle(std::move(request), Sensor::Http::Responder(client));
    loop.RunReady();
    Sensor::Http::HttpResponse response = client->Wait();
    Require(response.status < 500 && response.status != 408);
    Require(response.status < 400 || Sensor::Http::ProblemTypeOf(response.status).status == response.status);
    Require((response.body == nullptr) == (response.status == 204 || response.stream != nullptr));
    if (response.body) {
        Require(nlohmann::json::accept(*response.body));
    }
    return response;
}

} // namespace Fuzz
