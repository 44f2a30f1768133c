#include "Tests/Soak/HttpClients.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <thread>

#include <nlohmann/json.hpp>

namespace Soak {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using Json = nlohmann::json;

const std::string Service = "/controls/modbus";
const std::string Assembly = "/controls/modbus/registerAssemblies/registerAssembly-0";

/// Where the editors' blocks are: behind the measurements of each job, before the blocks of commands.
constexpr int FirstBlock = 700;

constexpr long MostSaid = 10;

} // namespace

HttpWorker::HttpWorker(int number, std::uint16_t port, HttpTotals& totals, const std::atomic<bool>& ending)
    : number(number)
    , totals(totals)
    , ending(ending)
    , random(static_cast<unsigned>(number))
    , port(port) {}

void HttpWorker::Run() {
    std::unique_ptr<HttpConnection> connection;
    while (!ending) {
        try {
            if (!connection || random() % 20 == 0) {
                connection = std::make_unique<HttpConnection>(port);
            }
            if (!WorkOnce(*connection)) {
                connection.reset();
            }
        } catch (const std::runtime_error& e) {
            if (++totals.withoutReply <= MostSaid) {
                std::printf("HTTP: %s\n", e.what());
            }
            connection.reset();
        }
        std::this_thread::sleep_for(milliseconds(random() % 20));
    }
}

void HttpWorker::CountFailure(const std::string& what, const HttpAnswer& answer) {
    if (answer.status == 503) {
        ++totals.busy;
    } else if (++totals.unexpected <= MostSaid) {
        std::printf("HTTP: %s is answered with %d: %s\n", what.c_str(), answer.status, answer.body.c_str());
    }
}

bool HttpReader::WorkOnce(HttpConnection& connection) {
    const std::array<std::string, 17> paths = {"/",
                                               "/sensor",
                                               "/sensor/problems",
                                               "/sensor/log?n=10&level=warning",
                                               "/sensor/sources",
                                               "/sensor/scan?points=100",
                                               "/sensor/scan/history?source=profile/max",
                                               "/healthz",
                                               "/controls?expand=item",
                                               "/controls/sample",
                                               Service,
                                               Service + "/metrics",
                                               Service + "?schema=1&expand=vor:registerAssembly",
                                               Assembly,
                                               Assembly + "?schema=1",
                                               Assembly + "?schema=2020-12",
                                               "/openapi.json"};
    const std::string& path = paths[random() % paths.size()];
    const HttpAnswer answer = connection.Ask("GET", path);
    if (answer.status == 200 && Json::accept(answer.body)) {
        ++totals.reads;
    } else {
        CountFailure(path, answer);
    }
    return true;
}

bool HttpEditor::WorkOnce(HttpConnection& connection) {
    const HttpAnswer read = connection.Ask("GET", Assembly);
    if (read.status != 200) {
        CountFailure(Assembly, read);
        return true;
    }
    if (random() % 2 == 0) {
        Edit(connection, read.tag, "PATCH", Service,
             Json{{"parameters", {{"idleTimeout", 50 + random() % 10}}}}.dump());
        return true;
    }
    const int place = FirstBlock + 10 * number;
    const Json blocks = Json::parse(read.body).at("blocks");
    const bool exists = std::ranges::any_of(blocks, [&](const Json& block) { return block.at("outputId") == place; });
    if (exists) {
        const Json ids = Json::array({{{"outputId", place}}});
        Edit(connection, read.tag, "POST", Assembly + "/commands/remove", Json{{"outputIdList", ids}}.dump());
    } else {
        const Json added = Json::array({{{"type", "Measurement"}, {"dataSource", "profile/max"}, {"outputId", place}}});
        Edit(connection, read.tag, "POST", Assembly + "/commands/add", Json{{"blocks", added}}.dump());
    }
    return true;
}

void HttpEditor::Edit(HttpConnection& connection, const std::string& tag, const std::string& method,
                      const std::string& path, const std::string& body) {
    const HttpAnswer answer = connection.Ask(method, path, "If-Match: " + tag + "\r\n", body);
    if (answer.status == 200) {
        ++totals.edits;
    } else if (answer.status == 412) {
        ++totals.stale;
    } else {
        CountFailure(method + ' ' + path, answer);
    }
}

bool HttpListener::WorkOnce(HttpConnection& connection) {
    connection.Send(HttpConnection::Request(
        "GET", "/events?topic=notice&topic=state&topic=problems&topic=log&topic=scan;rate=25&topic=metrics:modbus",
        "Accept: text/event-stream\r\n" + (lastId.empty() ? std::string() : "Last-Event-ID: " + lastId + "\r\n")));
    std::string text = connection.Piece();
    if (text.find("HTTP/1.1 200") != 0) {
        throw std::runtime_error("a stream begins with " + text.substr(0, 200));
    }
    ++totals.streams;
    const auto end = Clock::now() + milliseconds(random() % 5000);
    while (!ending && Clock::now() < end) {
        std::size_t begin = 0;
        for (std::size_t next = text.find('\n'); next != std::string::npos; next = text.find('\n', begin)) {
            const std::string line = text.substr(begin, next - begin);
            begin = next + 1;
            totals.events += line.starts_with("event: ") ? 1 : 0;
            if (line.starts_with("id: ")) {
                lastId = line.substr(4);
            }
        }
        text.erase(0, begin);
        text += connection.Piece();
    }
    return false;
}

} // namespace Soak
