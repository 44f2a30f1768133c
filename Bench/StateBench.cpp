// How long services wait for the state of the system while the main loop is busy. Eight services poll with a time-out
// of 0, each on its own thread, and pause between two polls as services do: with threads that never sleep, the
// benchmark would measure the scheduler. The main loop runs closures of a few milliseconds each without a pause, and
// the queries between them. The wall time of each call is measured, and the 99th percentile must be below the time-out
// plus one millisecond. For calls with a time-out of 2 ms, threads that wait as long for an empty queue are the
// reference: how late they wake up is a property of the machine.

#include "Bench/Measure.h"
#include "Vor/MainLoop.h"
#include "VorApi/Threads/MsgQueue.h"
#include "VorControl/Control/ControlDataCache.h"
#include "VorControl/Control/ControlScanEngineInterface.h"
#include "VorControl/Control/ControlSystemInterface.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int Pollers = 8;
constexpr int PollsPerRun = 4000; ///< of all pollers
constexpr auto Pause = std::chrono::milliseconds(10);
constexpr auto ClosureTime = std::chrono::milliseconds(4);
constexpr unsigned long long Patience = 2000; ///< of the pollers that wait, in microseconds
constexpr double Allowed = 1000;              ///< microseconds beyond a time-out of 0

/// A system with a state of usual size.
class System : public VorControl::ControlSystemInterface {
public:
    System()
        : ControlSystemInterface(nullptr, nullptr, nullptr) {}

    std::atomic<std::uint64_t> queries{0};

    void Stats(SystemStats& out) override {
        out.coreMetric0 = ++queries;
        out.loadedJob = "the-job-that-is-loaded.vrjob";
        out.runState = 1;
        out.networkIfStates = {1, 1, 0};
        out.networkIfCounts = {1'000'000'000, 1'000'000'000, 0};
        out.storageVolumes.resize(4);
    }
};

/// A main loop on a thread of its own that is always busy.
class BusyMainLoop {
public:
    BusyMainLoop() {
        std::promise<void> ready;
        thread = std::thread([this, &ready] {
            Vor::MainLoop made;
            loop = &made;
            Work();
            ready.set_value();
            made.Run();
        });
        ready.get_future().wait();
    }

    ~BusyMainLoop() {
        loop->Stop();
        thread.join();
    }

    BusyMainLoop(const BusyMainLoop&) = delete;
    BusyMainLoop& operator=(const BusyMainLoop&) = delete;

private:
    Vor::MainLoop* loop = nullptr;
    std::thread thread;

    void Work() {
        loop->Post([this] {
            const auto end = Clock::now() + ClosureTime;
            while (Clock::now() < end) {
                Bench::Keep(end);
            }
            Work();
        });
    }
};

/// Microseconds that each call took, in ascending order.
std::vector<double> Poll(const std::function<void()>& call) {
    std::vector<std::vector<double>> times(Pollers);
    std::vector<std::thread> threads;
    for (auto& own : times) {
        threads.emplace_back([&own, &call] {
            for (int i = 0; i < PollsPerRun / Pollers; ++i) {
                const auto begin = Clock::now();
                call();
                own.push_back(std::chrono::duration<double, std::micro>(Clock::now() - begin).count());
                std::this_thread::sleep_for(Pause);
            }
        });
    }
    std::vector<double> all;
    for (int i = 0; i < Pollers; ++i) {
        threads[static_cast<std::size_t>(i)].join();
        all.insert(all.end(), times[static_cast<std::size_t>(i)].begin(), times[static_cast<std::size_t>(i)].end());
    }
    std::sort(all.begin(), all.end());
    return all;
}

void Measure(Bench::Report& report, const std::string& label, std::optional<double> limit,
             const std::function<void()>& call) {
    const std::vector<double> times = Poll(call);
    report.Note(label + ", p50", times[times.size() / 2], "us");
    report.Note(label + ", p99", times[times.size() * 99 / 100], "us", limit);
    report.Note(label + ", longest", times.back(), "us");
}

} // namespace

int main(int argc, char** argv) {
    Bench::Report report("state: what a poller waits for while the main loop is busy", argc, argv);
    System system;
    VorControl::ControlScanEngineInterface engines(nullptr);
    const BusyMainLoop loop;
    VorControl::ControlDataCache cache(system, engines);
    Measure(report, "SystemStats, time-out 0", Allowed, [&] { Bench::Keep(cache.SystemStats(0)); });
    report.Note("queries per call", static_cast<double>(system.queries) / PollsPerRun, "");
    Measure(report, "SystemStats, time-out 2 ms", std::nullopt, [&] { Bench::Keep(cache.SystemStats(Patience)); });
    Vor::MsgQueue<int> empty;
    Measure(report, "empty queue, time-out 2 ms", std::nullopt, [&] {
        std::unique_ptr<int> none;
        Bench::Keep(empty.Remove(none, Patience));
    });
    return report.Finish();
}
