#pragma once

#include "Sensor/Scan/Limits.h"
#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/ResultSetMaker.h"
#include "Sensor/Scan/ScannerState.h"
#include "Sensor/Scan/TriggerMode.h"
#include "VorApi/Threads/NamedThread.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

namespace VorCore {
class ResultHub;
}

namespace Sensor::Scan {

/// Replays a recording, one result set a frame: at a steady rate, on a thread named "Scanner", or one at each trigger.
/// Its functions are for one thread.
class Scanner {
public:
    struct Settings {
        /// Frames a second, above 0.
        double frameRate = 10;
        /// Stop making frames after the last one instead of beginning again.
        bool once = false;
        /// Called after the last frame of a recording that is played once, on the thread that published it. May be
        /// empty.
        std::function<void()> ended = nullptr;
        TriggerMode trigger = TriggerMode::Time;
        /// Called with the index of each frame before it is published, on the thread that publishes it. May be empty.
        std::function<void(std::uint64_t index)> frameMade = nullptr;
    };

    /// `recording` and `hub` must outlive this. Throws a Vor::Exception when the recording has no frame or the rate
    /// isn't above 0.
    Scanner(const Recording& recording, VorCore::ResultHub& hub, Settings settings);
    ~Scanner();
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    /// Starts a scan with the first frame, which is published at once or at the first trigger. Frame index, encoder and
    /// time start from 0. Does nothing while the scan runs.
    void Start();
    /// No frame is published after it returns. Waits at most until the present frame is published.
    void Stop();

    /// Publishes the next frame before it returns. Throws yERROR_STATE when frames are made by time, when no scan runs,
    /// or after the last frame of a recording that is played once.
    void Trigger();

    ScannerState State() const;
    /// Frames that all scans have published. From any thread.
    std::uint64_t FrameTotal() const { return frameTotal.load(std::memory_order_relaxed); }

    /// From the next frame on, as ResultSetMaker::SetLimits. From any thread.
    void SetLimits(std::vector<Limits> limits);

private:
    using Clock = std::chrono::steady_clock;

    yStatus Run();
    bool SleepUntil(Clock::time_point time);
    bool AtEnd() const;
    /// Publishes the next frame with the time `now`.
    void PublishNext(Clock::time_point now);
    void NotifyEnd() const;

    const Recording& recording;
    VorCore::ResultHub& hub;
    const Settings settings;
    const Clock::duration period;
    ResultSetMaker maker;

    /// Guards `stopping`. No lock is acquired under it.
    std::mutex mutex;
    std::condition_variable stopRequested;
    bool stopping = false;

    Vor::NamedThread thread; ///< while a scan by time runs
    bool scanning = false;
    Clock::time_point start;
    Clock::time_point end; ///< of the last scan that was stopped
    /// Frames of the scan so far. Written by the thread that publishes them.
    std::atomic<std::uint64_t> frameCount{0};
    std::atomic<std::uint64_t> frameTotal{0}; ///< likewise, of all scans
};

} // namespace Sensor::Scan
