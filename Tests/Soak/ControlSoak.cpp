#include "Tests/Soak/ControlSoak.h"

#include "Sensor/Application.h"
#include "Sensor/ResidentMemory.h"
#include "Tests/Soak/BadClient.h"
#include "Tests/Soak/GoodClient.h"
#include "Tests/Soak/HttpClients.h"
#include "Tests/Support/BuildFolders.h"
#include "Vor/AsyncRunner.h"
#include "Vor/Exception.h"
#include "VorCommon/ArchiveStore.h"
#include "VorControl/Control/IControlInstance.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <ostream>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

namespace Soak {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double GrowthLimitKilobytes = 256;
constexpr int ReadingsPerMinute = 12;
constexpr int GoodClients = 5;
constexpr int HttpReaders = 3;
constexpr int HttpEditors = 2;
constexpr int HttpListeners = 3;
constexpr unsigned long long Minute = 60'000'000; ///< microseconds

/// A temporary folder with the plug-ins and the jobs of the run, removed at destruction.
class Workplace {
public:
    Workplace() {
        std::string name = (std::filesystem::temp_directory_path() / "soak-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        path = name;
        std::filesystem::create_directory(path / "plugins");
        for (const char* const name : {"plugins/modbus.so", "plugins/modbus.demo.json", "examples/sample.so"}) {
            const std::filesystem::path file = Tests::BuiltFile(name);
            std::filesystem::create_symlink(file, path / "plugins" / file.filename());
        }
    }
    ~Workplace() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    /// Writes a job like the demo, with its measurements moved by `distance`, and the sample service enabled or not.
    void WriteJob(const std::string& name, int distance, bool sampleEnabled) const {
        const std::string entry = "/controls/modbus/config.json";
        VorCommon::ArchiveStore demo(JobFile("demo"));
        demo.Open();
        const VorCommon::PersistBuffer buffer = demo.Read(entry);
        const unsigned char* begin = buffer.pointer + buffer.offset;
        auto config = nlohmann::json::parse(begin, begin + buffer.size);
        for (auto& block : config["vor:control"]["registerAssemblyList"][0]["blocks"]) {
            if (block["outputId"] < 1000) {
                block["outputId"] = block["outputId"].get<int>() + distance;
            }
        }
        const nlohmann::json sample = {{"version", "1"}, {"vor:control", {{"enabled", sampleEnabled}}}};
        VorCommon::ArchiveStore job(JobFile(name));
        Write(job, entry, config);
        Write(job, "/controls/sample/config.json", sample);
        job.Commit();
    }

    std::filesystem::path path;

private:
    std::string JobFile(const std::string& name) const { return (path / "jobs" / (name + ".vrjob")).string(); }

    static void Write(VorCommon::ArchiveStore& job, const std::string& entry, const nlohmann::json& document) {
        const std::string text = document.dump();
        job.Write(entry, text.data(), text.size());
    }
};

std::uint16_t FreePort() {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(fd, reinterpret_cast<const sockaddr*>(&address), size);
    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    close(fd);
    return ntohs(address.sin_port);
}

Sensor::CommandLine SensorCommand(const Workplace& place, std::uint16_t port, std::uint16_t httpPort) {
    const std::string text = std::to_string(port);
    Sensor::CommandLine command;
    command.dataFolder = place.path;
    command.pluginFolders = {place.path / "plugins"};
    command.pluginFoldersGiven = true;
    command.frameRate = 1000;
    command.http.port = httpPort;
    command.http.portGiven = true;
    command.alignment.time = std::chrono::milliseconds(20);
    command.settings.push_back({"port", "modbus", "port", text});
    return command;
}

long ResidentKilobytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) {
            return std::atol(line.c_str() + 6);
        }
    }
    return 0;
}

/// What malloc has given out and not got back.
long AllocatedKilobytes() {
    const auto info = mallinfo2();
    return static_cast<long>((info.uordblks + info.hblkhd) / 1024);
}

double Median(std::vector<long> values) {
    std::sort(values.begin(), values.end());
    return static_cast<double>(values[(values.size() - 1) / 2] + values[values.size() / 2]) / 2;
}

/// From the second minute to the last, in medians.
double GrowthOf(const std::vector<long>& readings) {
    const auto second = readings.begin() + ReadingsPerMinute;
    return Median({readings.end() - ReadingsPerMinute, readings.end()}) - Median({second, second + ReadingsPerMinute});
}

/// A histogram from 0 to 10 s in steps of 0.1 ms; longer times are in the last step. All memory is allocated at
/// construction.
class StallHistogram {
public:
    void Add(std::chrono::microseconds time) {
        longest = std::max(longest, time);
        ++counts[std::min(static_cast<std::size_t>(time.count()) / 100, counts.size() - 1)];
        ++total;
    }
    double LongestMilliseconds() const { return static_cast<double>(longest.count()) / 1000; }
    /// The upper end of the step below which 99 % of the times are.
    double Percentile99Milliseconds() const {
        unsigned long seen = 0;
        std::size_t step = 0;
        while (step < counts.size() && (seen += counts[step]) * 100 < total * 99) {
            ++step;
        }
        return static_cast<double>(step + 1) / 10;
    }
    unsigned long Total() const { return total; }

private:
    std::vector<unsigned long> counts = std::vector<unsigned long>(100'000, 0);
    std::chrono::microseconds longest{0};
    unsigned long total = 0;
};

/// Controls one run from its own thread while the main loop runs the sensor.
class Conductor {
public:
    Conductor(Sensor::Application& application, std::uint16_t port, std::uint16_t httpPort, int minutes)
        : application(application)
        , port(port)
        , httpPort(httpPort)
        , minutes(minutes) {}

    void Run() {
        std::vector<std::thread> threads;
        for (int number = 1; number <= GoodClients; ++number) {
            threads.emplace_back([this, number] { GoodClient(number, port, totals, ending).Run(); });
        }
        for (const Manner manner :
             {Manner::HalfRequests, Manner::Resets, Manner::Silence, Manner::Floods, Manner::Garbage}) {
            threads.emplace_back([this, manner] { Misbehave(manner, port, ending); });
        }
        AddWorkers<HttpReader>(threads, HttpReaders);
        AddWorkers<HttpEditor>(threads, HttpEditors);
        AddWorkers<HttpListener>(threads, HttpListeners);
        threads.emplace_back([this] { WatchMainLoop(); });
        threads.emplace_back([this] { SwitchServices(); });
        ReadMemory();
        ending = true;
        for (std::thread& thread : threads) {
            thread.join();
        }
        runsAtEnd = GoodClient(GoodClients + 1, port, totals, ending).StartsTheScan();
    }

    /// Prints the results and returns the exit status.
    int Report() const {
        std::printf("Modbus: %ld reads, %ld commands taken, %ld refused as busy, %ld cut off by a disabled service\n",
                    totals.reads.load(), totals.commands.load(), totals.busy.load(), totals.interrupted.load());
        std::printf(
            "HTTP: %ld documents read, %ld edits made, %ld stale, %ld requests refused as busy, %ld events in %ld "
            "streams\n",
            http.reads.load(), http.edits.load(), http.stale.load(), http.busy.load(), http.events.load(),
            http.streams.load());
        std::printf("longest stall of the main loop %.1f ms, 99 %% of %lu probes below %.1f ms\n",
                    stalls.LongestMilliseconds(), stalls.Total(), stalls.Percentile99Milliseconds());
        std::printf("services switched %ld times\n", switches);
        bool kept = true;
        const auto require = [&kept](const char* what, bool held, double value) {
            std::printf("%-48s %10.0f  %s\n", what, value, held ? "ok" : "MISSED");
            kept = kept && held;
        };
        const auto none = [&](const char* what, long count) { require(what, count == 0, static_cast<double>(count)); };
        none("commands that ended with a wrong status", totals.wrongStatus);
        none("commands that didn't end", totals.withoutEnd);
        none("requests without a reply", totals.withoutReply);
        none("replies of two scans", totals.mixedScans);
        none("unexpected answers of HTTP", http.unexpected);
        none("requests and streams of HTTP without an answer", http.withoutReply);
        require("edits over HTTP, at least 100", http.edits >= 100, static_cast<double>(http.edits));
        require("commands taken, at least 100", totals.commands >= 100, static_cast<double>(totals.commands));
        const double growth = GrowthOf(allocated);
        require("growth of allocated memory in KB, at most 256", growth <= GrowthLimitKilobytes, growth);
        const double residentGrowth = GrowthOf(resident);
        require("growth of resident memory in KB, at most 256", residentGrowth <= GrowthLimitKilobytes, residentGrowth);
        require("a command is taken and done at the end", runsAtEnd, runsAtEnd ? 1 : 0);
        return kept ? 0 : 1;
    }

private:
    template <class Worker>
    void AddWorkers(std::vector<std::thread>& threads, int count) {
        for (int number = 1; number <= count; ++number) {
            threads.emplace_back([this, number] { Worker(number, httpPort, http, ending).Run(); });
        }
    }

    void ReadMemory() {
        const auto begin = Clock::now();
        for (int i = 1; i <= minutes * ReadingsPerMinute; ++i) {
            std::this_thread::sleep_until(begin + i * std::chrono::seconds(5));
            resident.push_back(ResidentKilobytes());
            allocated.push_back(AllocatedKilobytes());
            std::printf("%5d s  resident %7ld KB  allocated %7ld KB  %7ld reads  %6ld commands  %6ld edits\n", i * 5,
                        resident.back(), allocated.back(), totals.reads.load(), totals.commands.load(),
                        http.edits.load());
            std::fflush(stdout);
        }
    }

    /// Measures how long posted closures wait.
    void WatchMainLoop() {
        Vor::AsyncRunner runner;
        while (!ending) {
            const auto begin = Clock::now();
            runner.RunAndWait([] {}, Minute);
            stalls.Add(std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin));
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    void SwitchServices() {
        std::mt19937 random(99);
        while (!ending) {
            const std::string serviceId = random() % 4 == 0 ? "modbus" : "sample";
            Enable(serviceId, false);
            std::this_thread::sleep_for(std::chrono::milliseconds(random() % 300));
            Enable(serviceId, true);
            ++switches;
            for (int i = 0; i < 20 && !ending; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
            }
        }
    }

    void Enable(const std::string& serviceId, bool on) {
        Vor::AsyncRunner runner;
        runner.RunAndWait([this, serviceId, on] { application.Services().GetInstance(serviceId).Enable(on); }, Minute);
    }

    Sensor::Application& application;
    const std::uint16_t port;
    const std::uint16_t httpPort;
    const int minutes;
    std::atomic<bool> ending{false};
    GoodClient::Totals totals;
    HttpTotals http;
    std::vector<long> resident; ///< KB, as the next
    std::vector<long> allocated;
    StallHistogram stalls;
    long switches = 0;
    bool runsAtEnd = false; ///< whether a command succeeded at the end
};

} // namespace

int ControlSoak(int minutes) {
    Sensor::LimitHeaps();
    const Workplace place;
    const std::uint16_t port = FreePort();
    const std::uint16_t httpPort = FreePort();
    std::ostream output(nullptr); // discards everything
    Sensor::Application application(SensorCommand(place, port, httpPort), output);
    Conductor conductor(application, port, httpPort, minutes);
    std::exception_ptr failure;
    std::thread thread([&] {
        try {
            Vor::AsyncRunner().RunAndWait([] {}, Minute); // until the sensor runs
            place.WriteJob("second", 300, true);
            place.WriteJob("third", 0, false);
            conductor.Run();
        } catch (...) {
            failure = std::current_exception();
        }
        kill(getpid(), SIGTERM);
    });
    application.Run();
    thread.join();
    if (failure) {
        std::rethrow_exception(failure);
    }
    return conductor.Report();
}

} // namespace Soak
