// What Prometheus gets, of a sensor with real services.

#include "Sensor/Http/IMediaResource.h"
#include "Sensor/Http/RequestCounts.h"
#include "Sensor/Resources/LoopStalls.h"
#include "Sensor/Resources/OperationRunner.h"
#include "Tests/Sensor/Resources/SensorFixture.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/MarkdownTable.h"
#include "Tests/Support/MetricsService.h"
#include "Tests/Support/ServiceProperties.h"
#include "Tests/Support/Signal.h"
#include "Tests/Support/TcpClient.h"
#include "Tests/Support/Threads.h"
#include "Vor/ByteVector.h"
#include "Vor/Exception.h"
#include "VorControl/Control/ControlModule.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "yApi/yTime.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Resources {
namespace {

using namespace std::chrono_literals;

/// Holds the lock of an assembly on a thread of its own, as who edits it does.
class HeldAssembly {
public:
    using Assembly = VorControl::ControlProtocol::IProtocolRegisterAssembly;

    explicit HeldAssembly(const std::shared_ptr<Assembly>& assembly)
        : thread([this, assembly] {
            const VorControl::ControlProtocol::AssemblyLock lock(*assembly);
            held.Set();
            release.Wait();
        }) {
        EXPECT_TRUE(held.Wait());
    }
    ~HeldAssembly() {
        release.Set();
        thread.join();
    }
    HeldAssembly(const HeldAssembly&) = delete;
    HeldAssembly& operator=(const HeldAssembly&) = delete;

private:
    Tests::Signal held;
    Tests::Signal release;
    std::thread thread;
};

class MetricsTest : public SensorFixture {
protected:
    static constexpr const char* AssemblyPath = "/controls/modbus/registerAssemblies/registerAssembly-0";

    MetricsTest()
        : SensorFixture(Tests::BuiltFile("plugins")) {}

    std::string Text() {
        const Vor::Properties::ByteVector bytes = Read("/metrics").AsBinary();
        return {reinterpret_cast<const char*>(bytes.Data()), bytes.Size()};
    }
    /// The values by what is before them, such as `vor_service_requests_total{service="modbus"}`.
    std::map<std::string, std::string> Values() {
        std::map<std::string, std::string> values;
        std::istringstream text(Text());
        for (std::string line; std::getline(text, line);) {
            const auto space = line.rfind(' ');
            if (!line.starts_with('#')) {
                EXPECT_TRUE(values.emplace(line.substr(0, space), line.substr(space + 1)).second) << line;
            }
        }
        return values;
    }
    double Value(const std::string& name) {
        const auto values = Values();
        const auto found = values.find(name);
        EXPECT_TRUE(found != values.end()) << name;
        return found == values.end() ? -1 : std::stod(found->second);
    }
    double ValueOf(const std::string& service, const std::string& figure) {
        return Value("vor_service_" + figure + "{service=\"" + service + "\"}");
    }

    void Update(const std::string& path, const nlohmann::json& document) {
        const VorRest::Answer answer =
            Ask({.verb = VorRest::Verb::Update, .path = path, .body = VorApi::VorDataTree::FromJson(document)});
        EXPECT_TRUE(answer.failure == nullptr) << TextIn(answer);
    }
    void Start(const std::string& service) {
        Update("/controls/" + service, {{"parameters", {{"port", 0}}}});
        Update("/controls/" + service, {{"enabled", true}});
    }
    void StartModbusWithABlock() {
        const nlohmann::json block{{"type", "Measurement"}, {"dataSource", "profile/max"}};
        const nlohmann::json arguments{{"blocks", nlohmann::json::array({block})}};
        EXPECT_EQ(TextIn(Invoke(std::string(AssemblyPath) + "/commands/add", arguments)), "");
        Start("modbus");
    }
};

TEST_F(MetricsTest, AreTextForPrometheus) {
    const auto match = host.Router().Find("/metrics");
    ASSERT_TRUE(match);
    const auto* const media = dynamic_cast<Http::IMediaResource*>(&match->resource);
    ASSERT_NE(media, nullptr);
    EXPECT_EQ(media->MediaType(), "text/plain; version=0.0.4; charset=utf-8");
    EXPECT_EQ(Text().find("# HELP vor_frames_total Frames that the scan has produced.\n"
                          "# TYPE vor_frames_total counter\n"
                          "vor_frames_total 0\n"),
              0U)
        << Text();
}

TEST_F(MetricsTest, HaveEachFigureOfEachService) {
    for (const char* const service : {"ascii", "modbus"}) {
        const nlohmann::json figures = Read(std::string("/controls/") + service + "/metrics").ToJson();
        const std::string label = std::string("{service=\"") + service + "\"}";
        const auto values = Values();
        const auto count = std::ranges::count_if(values, [&](const auto& value) {
            return value.first.starts_with("vor_service_") && value.first.ends_with(label);
        });
        // Of the histogram there are two, its buckets aside; a service that isn't started has no queue.
        EXPECT_EQ(static_cast<std::size_t>(count), figures.size() + 1) << service;
    }
}

TEST_F(MetricsTest, ADelayOfAServiceMovesItsLatency) {
    StartModbusWithABlock();
    constexpr std::uint64_t Delay = 5'000'000;
    MakeFrames(0); // the scan starts without a held lock
    const auto assembly = host.Services().GetInstance("modbus").RegisterAssembly("registerAssembly-0");
    {
        const HeldAssembly held(assembly);
        MakeFrames(3);
        EXPECT_EQ(ValueOf("modbus", "queue_length"), 3);
        EXPECT_EQ(ValueOf("modbus", "results_received_total"), 0);
        for (const std::uint64_t published = yTime_Monotonic(); yTime_Monotonic() - published <= Delay + 1000;) {
            std::this_thread::yield();
        }
    }
    EXPECT_TRUE(Tests::WaitUntil([&] { return ValueOf("modbus", "queue_length") == 0; }));
    EXPECT_EQ(Value("vor_service_latency_seconds_bucket{service=\"modbus\",le=\"0.0025\"}"), 0);
    EXPECT_EQ(Value("vor_service_latency_seconds_bucket{service=\"modbus\",le=\"0.005\"}"), 0);
    EXPECT_EQ(Value("vor_service_latency_seconds_bucket{service=\"modbus\",le=\"+Inf\"}"), 3);
    EXPECT_EQ(ValueOf("modbus", "latency_seconds_count"), 3);
    EXPECT_GE(ValueOf("modbus", "latency_seconds_sum"), 0.015);
    EXPECT_GE(ValueOf("modbus", "latency_p50_seconds"), 0.005);
    EXPECT_GE(ValueOf("modbus", "latency_p99_seconds"), ValueOf("modbus", "latency_p50_seconds"));
    EXPECT_GE(ValueOf("modbus", "latency_max_seconds"), ValueOf("modbus", "latency_p99_seconds"));
}

TEST_F(MetricsTest, SetsReceivedAreAppliedPlusDroppedAndWhatTheScanHasProduced) {
    StartModbusWithABlock();
    const auto received = [&] {
        const auto values = Values();
        const auto of = [&](const char* figure) {
            return std::stoul(values.at(std::string("vor_service_") + figure + "_total{service=\"modbus\"}"));
        };
        EXPECT_EQ(of("results_received"), of("results_applied") + of("results_dropped"));
        EXPECT_EQ(of("drop_count"), of("results_dropped"));
        return of("results_received");
    };
    for (int i = 0; i < 20; ++i) {
        MakeFrames(5);
        received();
    }
    EXPECT_EQ(Value("vor_frames_total"), 100);
    EXPECT_TRUE(Tests::WaitUntil([&] { return received() == 100; }));
    sensor.Core().Stop(false, false);
    MakeFrames(1);
    EXPECT_EQ(Value("vor_frames_total"), 101) << "also those of another scan";
}

TEST_F(MetricsTest, FiguresOfAStoppedServiceAreUpToDate) {
    Start("ascii");
    EXPECT_EQ(ValueOf("ascii", "queue_length"), 0);
    const Tests::TcpClient client(Tests::PortOf(Read("/controls/ascii").ToJson().at("address")));
    EXPECT_TRUE(Tests::WaitUntil([&] { return ValueOf("ascii", "connected") == 1; }));
    Update("/controls/ascii", {{"enabled", false}});
    EXPECT_EQ(ValueOf("ascii", "connected"), 0);
    EXPECT_FALSE(Values().contains("vor_service_queue_length{service=\"ascii\"}"));
}

TEST_F(MetricsTest, CountRequestsByMethodAndStatus) {
    requests.Add("GET", 200);
    requests.Add("GET", 200);
    requests.Add("GET", 404);
    requests.Add("BREW\"", 501);
    requests.Add("", 400);
    EXPECT_EQ(Value("vor_http_requests_total{method=\"GET\",status=\"200\"}"), 2);
    EXPECT_EQ(Value("vor_http_requests_total{method=\"GET\",status=\"404\"}"), 1);
    EXPECT_EQ(Value("vor_http_requests_total{method=\"other\",status=\"501\"}"), 1);
    EXPECT_EQ(Value("vor_http_requests_total{method=\"other\",status=\"400\"}"), 1);
}

TEST_F(MetricsTest, CountOperationsByResult) {
    const auto ended = [&](const std::string& client, const std::string& result) {
        return Value("vor_operations_total{client=\"" + client + "\",result=\"" + result + "\"}");
    };
    EXPECT_EQ(ended("/sensor", "succeeded"), 0);
    EXPECT_EQ(ended("modbus", "failed"), 0);
    EXPECT_EQ(TextIn(Invoke("/sensor/commands/start")), "");
    EXPECT_EQ(ended("/sensor", "succeeded"), 1);
    EXPECT_EQ(ended("/sensor", "failed"), 0);
    auto& operations = host.Module().Operations();
    operations.RunSynchronousOp("modbus", VorControl::ControlProtocolOperations::ActionId::Fail, {});
    EXPECT_TRUE(Tests::WaitUntil([&] { return ended("modbus", "failed") == 1; }));
    EXPECT_EQ(ended("modbus", "succeeded"), 0);
    EXPECT_EQ(ended("ascii", "failed"), 0);
}

TEST_F(MetricsTest, HaveTheLongestStallOfTheMainLoop) {
    loop.RunReady();
    EXPECT_EQ(Value("vor_main_loop_longest_stall_seconds"), 0);
    loop.Elapse(600ms);
    const double stall = Value("vor_main_loop_longest_stall_seconds");
    EXPECT_GE(stall, 0.58);
    EXPECT_LE(stall, 0.6);
    loop.Advance(30s);
    EXPECT_EQ(Value("vor_main_loop_longest_stall_seconds"), stall) << "it is remembered";
    loop.Elapse(100ms);
    EXPECT_EQ(Value("vor_main_loop_longest_stall_seconds"), stall);
    loop.Advance(61s);
    EXPECT_EQ(Value("vor_main_loop_longest_stall_seconds"), 0);
}

TEST_F(MetricsTest, HaveTheMemoryAndTheQueuesOfTheSensor) {
    EXPECT_GT(Value("vor_resident_memory_bytes"), 1e6);
    EXPECT_EQ(Value("vor_frame_queue_length"), 0);
    EXPECT_EQ(Value("vor_main_loop_queue_length"), 0);
}

TEST_F(MetricsTest, HaveAPageThatListsThem) {
    StartModbusWithABlock();
    Start("ascii");
    requests.Add("GET", 200);
    std::map<std::string, std::string> types;
    std::map<std::string, std::set<std::string>> labels;
    std::istringstream text(Text());
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line);
        std::string first;
        std::string second;
        std::string name;
        words >> first >> second >> name;
        if (second == "TYPE") {
            words >> types[name];
        }
    }
    for (const auto& [key, value] : Values()) {
        std::string name = key.substr(0, key.find('{'));
        for (const char* const suffix : {"_bucket", "_sum", "_count"}) {
            const bool isPart = !types.contains(name) && name.ends_with(suffix);
            name = isPart ? name.substr(0, name.size() - std::string(suffix).size()) : name;
        }
        labels[name];
        for (auto at = key.find("=\""); at != std::string::npos; at = key.find("=\"", at + 1)) {
            const auto begin = key.find_last_of("{,", at) + 1;
            labels[name].insert(key.substr(begin, at - begin));
        }
    }
    const auto rows = Tests::MarkdownTable("Docs/metrics.md", {"Metric", "Type", "Labels", "Content"});
    std::set<std::string> names;
    for (const auto& [name, cells] : rows) {
        names.insert(name);
        EXPECT_EQ(Tests::WithoutTicks(cells.at(1)), types[name]) << name;
        std::set<std::string> documented;
        std::istringstream list(Tests::WithoutTicks(cells.at(2)));
        for (std::string label; std::getline(list, label, ',');) {
            documented.insert(label.substr(label.find_first_not_of(' ')));
        }
        EXPECT_EQ(documented, labels[name]) << name;
    }
    for (const auto& [name, type] : types) {
        EXPECT_TRUE(names.contains(name)) << "Docs/metrics.md doesn't have " << name << ", " << type;
    }
}

/// A service "works" with a figure, and one whose figures can't be refreshed.
class FailingFiguresTest : public SensorFixture {
protected:
    FailingFiguresTest()
        : SensorFixture(Plugin()) {}

    static Tests::TestPlugin Plugin() {
        Tests::TestPlugin plugin;
        for (const char* const name : {"fails", "works"}) {
            plugin.Add(Tests::TestPlugin::Info(name),
                       [fails = std::string(name) ==
                                "fails"](const VorControl::ControlProtocol::ControlProtocolEnviron& environ) {
                           auto made = std::make_shared<Tests::MetricsService>(environ);
                           if (fails) {
                               made->onUpdate = [] { Vor::Throw(yERROR_STATE, "broken"); };
                           }
                           return made;
                       });
        }
        return plugin;
    }
};

TEST_F(FailingFiguresTest, KeepNobodyFromReadingTheOthers) {
    const Vor::Properties::ByteVector bytes = Read("/metrics").AsBinary();
    const std::string text(reinterpret_cast<const char*>(bytes.Data()), bytes.Size());
    EXPECT_NE(text.find("\nvor_service_drop_count{service=\"works\"} 1\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("service=\"fails\"} "), std::string::npos) << text;
    EXPECT_EQ(log.Count(Vor::LevelError, "The figures of fails can't be read."), 1U);
}

} // namespace
} // namespace Sensor::Resources
