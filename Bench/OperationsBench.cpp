// The cost of an operation for the service that starts it: StartScan until it returns, against the bare post of a
// closure as small as its action. Between two calls all queues are drained, so that each call finds the free slot. In
// the first comparison the caller is the main loop's thread itself, so a post wakes no thread, and wall time is
// measured. In the second one the main loop sleeps on another thread and each post wakes it. There the caller's CPU
// time is measured: on a machine with few cores the woken threads may run in the middle of the call, and wall time
// would measure the scheduler.

#include "Bench/Measure.h"
#include "Vor/AsyncRunner.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorCommon/RuntimeCache.h"
#include "VorControl/Control/ControlProtocolOperations.h"
#include "VorControl/Control/ControlScanEngineInterface.h"
#include "VorControl/Control/ControlSystemInterface.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int CallsPerRound = 1000;
constexpr int Pairs = 11;
constexpr double Limit = 3;
const std::string Service = "modbus";

/// A system that only counts the starts of its scan.
class System : public VorControl::ControlSystemInterface {
public:
    System()
        : ControlSystemInterface(nullptr, nullptr, nullptr) {}

    void Start() override { ++starts; }

    std::uint64_t starts = 0;
};

using Clock = double (*)();

double ThreadCpuSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The median cost of a call in seconds. `drain` runs after each call and isn't measured.
double Cost(Clock now, const std::function<void()>& call, const std::function<void()>& drain) {
    std::vector<double> costs;
    costs.reserve(CallsPerRound);
    for (int i = 0; i < CallsPerRound; ++i) {
        const double begin = now();
        call();
        costs.push_back(now() - begin);
        drain();
    }
    return Bench::Median(std::move(costs));
}

/// Compares StartScan with a post. `settle` returns when everything that was posted before has run.
void Measure(Bench::Report& report, const std::string& label, Clock now, const std::function<void()>& settle) {
    System system;
    VorControl::ControlScanEngineInterface scanEngine(nullptr);
    VorCommon::RuntimeCache runtimeCache;
    VorControl::ControlProtocolOperations operations(system, scanEngine, runtimeCache);
    std::atomic<int> ends = 0;
    operations.AddOpEndEventHandler(Service, [&](int) { ++ends; });
    Vor::AsyncRunner runner;

    int started = 0;
    const auto subject = [&] {
        return Cost(
            now, [&] { operations.StartScan(Service); },
            [&] {
                ++started;
                settle();
                while (ends.load() < started) {
                    std::this_thread::yield();
                }
                settle();
            });
    };
    const auto reference = [&] {
        return Cost(
            now, [&] { runner.Run([&system] { system.Start(); }); },
            [&] {
                settle();
                settle();
            });
    };
    report.Add(label, Bench::Compare(Pairs, subject, reference), "us", Limit, 1e6);
}

void MeasureOnTheMainLoop(Bench::Report& report) {
    Vor::MainLoop loop(Vor::MainLoop::Mode::Manual);
    Measure(report, "StartScan against a post, nobody is woken", Bench::WallSeconds, [&] { loop.RunReady(); });
}

void MeasureFromAnotherThread(Bench::Report& report) {
    std::promise<Vor::MainLoop*> made;
    std::thread thread([&] {
        Vor::MainLoop loop;
        made.set_value(&loop);
        loop.Run();
    });
    Vor::MainLoop* loop = made.get_future().get();
    // Waits until the loop has run what was posted before, and gives it time to fall asleep.
    Measure(report, "StartScan against a post, the main loop is woken", ThreadCpuSeconds, [&] {
        std::promise<void> passed;
        loop->Post([&] { passed.set_value(); });
        passed.get_future().wait();
        std::this_thread::sleep_for(std::chrono::microseconds(20));
    });
    loop->Stop();
    thread.join();
}

} // namespace

int main(int argc, char** argv) {
    Vor::Logging::SetMinimumLevel(Vor::LevelError);
    Bench::Report report("operations", argc, argv);
    MeasureOnTheMainLoop(report);
    MeasureFromAnotherThread(report);
    return report.Finish();
}
