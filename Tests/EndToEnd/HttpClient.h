#pragma once

#include "Tests/EndToEnd/HttpAnswer.h"
#include "Tests/EndToEnd/Program.h"
#include "Tests/EndToEnd/VirtualSensor.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {

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
        std::vector<std::string> options{"--request", method};
        if (!body.is_null()) {
            options.insert(options.end(), {"--data", body.dump(), "--header", "Content-Type: application/json"});
        }
        return AskWith(options, path, fields);
    }
    HttpAnswer Get(const std::string& path) const { return Ask("GET", path); }

    /// Writes what is there to a file.
    void Download(const std::string& path, const std::string& file) const {
        const Answer answer =
            RunToEnd({"curl", "--silent", "--show-error", "--fail", "--max-time", "20", "--output", file, host + path});
        EXPECT_EQ(answer.status, 0) << answer.errors;
    }
    /// A PUT of a file.
    HttpAnswer Upload(const std::string& path, const std::string& file,
                      const std::vector<std::string>& fields = {}) const {
        return AskWith({"--upload-file", file}, path, fields);
    }

    /// A stream, line by line.
    Program Stream(const std::string& path, const std::vector<std::string>& fields = {}) const {
        std::vector<std::string> command{"curl",        "--silent", "--show-error",
                                         "--no-buffer", "--header", "Accept: text/event-stream"};
        for (const std::string& field : fields) {
            command.insert(command.end(), {"--header", field});
        }
        command.push_back(host + path);
        return Program(command);
    }

    std::string Address() const { return host + '/'; }
    std::uint16_t Port() const { return static_cast<std::uint16_t>(std::stoi(host.substr(host.rfind(':') + 1))); }

private:
    HttpAnswer AskWith(const std::vector<std::string>& options, const std::string& path,
                       const std::vector<std::string>& fields) const {
        std::vector<std::string> command{"curl", "--silent", "--show-error", "--include", "--max-time", "20"};
        command.insert(command.end(), options.begin(), options.end());
        for (const std::string& field : fields) {
            command.insert(command.end(), {"--header", field});
        }
        command.push_back(host + path);
        const Answer answer = RunToEnd(command);
        EXPECT_EQ(answer.status, 0) << answer.errors;
        return ParseHttpAnswer(answer.output);
    }

    std::string host;
};

} // namespace Tests
