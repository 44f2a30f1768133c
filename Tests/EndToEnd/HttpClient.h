#pragma once

#include "Tests/EndToEnd/Program.h"
#include "Tests/EndToEnd/VirtualSensor.h"

#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {

/// What curl got.
struct HttpAnswer {
    int status = 0;
    std::map<std::string, std::string> fields; ///< names in small letters
    nlohmann::json body;                       ///< null when it is no JSON

    std::string Field(const std::string& name) const {
        const auto found = fields.find(name);
        return found == fields.end() ? "" : found->second;
    }
    /// Where the link leads, the first of several.
    std::string Link(const std::string& relation) const {
        const nlohmann::json& links = body.at("_links").at(relation);
        return (links.is_array() ? links.at(0) : links).at("href");
    }
    /// Where the links lead.
    std::vector<std::string> Links(const std::string& relation) const {
        std::vector<std::string> paths;
        for (const nlohmann::json& link : body.at("_links").at(relation)) {
            paths.push_back(link.at("href"));
        }
        return paths;
    }
    /// Where the embedded documents of a relation are.
    std::vector<std::string> Embedded(const std::string& relation) const {
        std::vector<std::string> paths;
        const nlohmann::json& documents = body.at("_embedded").at(relation);
        for (const nlohmann::json& document : documents.is_array() ? documents : nlohmann::json::array({documents})) {
            paths.push_back(document.at("_links").at("self").at("href"));
        }
        return paths;
    }
};

/// A client of the sensor's HTTP that is the program curl.
class HttpClient {
public:
    /// `address` as in the sensor's output, such as "http://127.0.0.1:8080/".
    explicit HttpClient(const std::string& address)
        : host(address.substr(0, address.size() - 1)) {}

    /// The client of a sensor that has started; waits for its line.
    static HttpClient Of(VirtualSensor& sensor) {
        const std::string line = sensor.Process().WaitForLine("HTTP: http://").value_or("HTTP: none/");
        return HttpClient(line.substr(6));
    }

    HttpAnswer Ask(const std::string& method, const std::string& path, const nlohmann::json& body = nullptr,
                   const std::vector<std::string>& fields = {}) const {
        std::vector<std::string> command{"curl",       "--silent", "--show-error", "--include",
                                         "--max-time", "20",       "--request",    method};
        if (!body.is_null()) {
            command.insert(command.end(), {"--data", body.dump(), "--header", "Content-Type: application/json"});
        }
        for (const std::string& field : fields) {
            command.insert(command.end(), {"--header", field});
        }
        command.push_back(host + path);
        const Answer answer = RunToEnd(command);
        EXPECT_EQ(answer.status, 0) << answer.errors;
        return Parse(answer.output);
    }
    HttpAnswer Get(const std::string& path) const { return Ask("GET", path); }

    /// A stream, line by line.
    Program Stream(const std::string& path) const {
        return Program(
            {"curl", "--silent", "--show-error", "--no-buffer", "--header", "Accept: text/event-stream", host + path});
    }

private:
    static HttpAnswer Parse(const std::string& output) {
        HttpAnswer answer;
        std::istringstream lines(output);
        std::string line;
        std::getline(lines, line);
        answer.status = std::atoi(line.substr(line.find(' ') + 1).c_str());
        while (std::getline(lines, line) && line != "\r") {
            const auto colon = line.find(": ");
            std::string name = line.substr(0, colon);
            std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
            answer.fields[name] = line.substr(colon + 2, line.size() - colon - 3);
        }
        const std::string body(std::istreambuf_iterator<char>(lines), {});
        answer.body = nlohmann::json::parse(body, nullptr, false);
        if (answer.body.is_discarded()) {
            answer.body = nullptr;
        }
        return answer;
    }

    std::string host;
};

} // namespace Tests
