// What a running sensor tells a plant's monitoring, checked by Prometheus' own parser.

#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/Threads.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace Tests {
namespace {

/// What `promtool check metrics` says of a text; `text` may be a pipe of the shell.
Answer Check(const std::string& promtool, const std::string& command) {
    return RunToEnd({"sh", "-c", command + " | '" + promtool + "' check metrics"});
}

class HttpMetricsTest : public testing::Test {
protected:
    HttpMetricsTest() {
        sensor.Process().WaitForLine("Service modbus (Modbus TCP): Running");
        address = HttpClient::Of(sensor).Address() + "metrics";
    }

    /// The value of a line of the metrics; -1 when there is none.
    double Value(const std::string& name) const {
        const std::string text = '\n' + RunToEnd({"curl", "--silent", "--fail", "--max-time", "20", address}).output;
        const auto at = text.find('\n' + name + ' ');
        return at == std::string::npos ? -1 : std::stod(text.substr(at + name.size() + 2));
    }

    VirtualSensor sensor{{"--frame-rate", "200", "--once"}};
    std::string address;
};

TEST_F(HttpMetricsTest, AreTakenByPrometheus) {
    const std::string promtool = SourceFile("build/prometheus/usr/bin/promtool");
    if (!std::filesystem::exists(promtool)) {
        GTEST_SKIP() << "there is no promtool";
    }
    ASSERT_TRUE(WaitUntil([&] { return Value("vor_service_latency_seconds_count{service=\"modbus\"}") > 0; }));
    const Answer checked = Check(promtool, "curl --silent --fail --max-time 20 " + address);
    EXPECT_EQ(checked.status, 0) << checked.output << checked.errors;
    EXPECT_EQ(checked.output + checked.errors, "") << "it has nothing to say";
    EXPECT_NE(Check(promtool, "echo 'vor_frames_total{a=\"}'").status, 0);
}

TEST_F(HttpMetricsTest, AreAResourceLikeOthers) {
    const Answer text = RunToEnd({"curl", "--silent", "--include", "--max-time", "20", address});
    EXPECT_NE(text.output.find("\r\nContent-Type: text/plain; version=0.0.4; charset=utf-8\r\n"), std::string::npos)
        << text.output;
    const auto statusOf = [&](const std::string& field) {
        return RunToEnd({"curl", "--silent", "--output", "/dev/null", "--write-out", "%{http_code}", "--max-time", "20",
                         "--header", field, address})
            .output;
    };
    EXPECT_EQ(statusOf("X-Nothing: 1"), "200");
    EXPECT_EQ(statusOf("Host: elsewhere.example"), "421");
    EXPECT_EQ(statusOf("Accept: text/event-stream"), "406");
    EXPECT_GE(Value("vor_http_requests_total{method=\"GET\",status=\"421\"}"), 1);
}

// Each frame has the source of a block of the demo map.
TEST_F(HttpMetricsTest, AServiceGetsWhatTheScanHasProduced) {
    ASSERT_TRUE(sensor.WaitForLastFrame());
    const double frames = Value("vor_frames_total");
    EXPECT_GT(frames, 0);
    for (const std::string service : {"ascii", "modbus"}) {
        const std::string label = "{service=\"" + service + "\"}";
        EXPECT_TRUE(WaitUntil([&] { return Value("vor_service_results_received_total" + label) == frames; }))
            << service;
        EXPECT_EQ(Value("vor_service_results_applied_total" + label) +
                      Value("vor_service_results_dropped_total" + label),
                  frames);
    }
}

} // namespace
} // namespace Tests
