#pragma once

#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/ResultSetMaker.h"
#include "Sensor/Scan/ScannerState.h"
#include "Sensor/Scan/TriggerMode.h"
#include "VorApi/Threads/NamedThread.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

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
        /// Stand still behind the last frame instead of beginning again.
        bool once = false;
        /// Called once it stands still, on the thread that published the last frame. May be empty.
        std::function<void()> ended = nullptr;
        TriggerMode trigger = TriggerMode::Time;
    };

    /// Recording and hub are borrowed. Throws a Vor::Exception without a frame or with a rate that isn't above 0.
    Scanner(const Recording& recording, VorCore::ResultHub& hub, Settings settings);
    /// Stops.
    ~Scanner();
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    /// Begins a scan with the first frame, which is published at once or at the first trigger. Frame index, encoder
    /// and time count from here. Does nothing while the scan runs.
    void Start();
    /// No frame is published after it returns. Waits no longer than one frame takes to make.
    void Stop();

    /// Publishes the next frame before it returns. Throws a Vor::Exception yERROR_STATE if frames come by time, if no
    /// scan runs, or if the scan stands still behind its last frame.
    void Trigger();

    ScannerState State() const;

private:
    using Clock = std::chrono::steady_clock;

    yStatus Run();
    bool SleepUntil(Clock::time_point time);
    bool AtEnd() const;
    /// Makes the next frame, which comes at `now`.
    void PublishNext(Clock::time_point now);
    void NotifyEnd() const;

    const Recording& recording;
    VorCore::ResultHub& hub;
    const Settings settings;
    const Clock::duration period;
    const ResultSetMaker maker;

    /// Guards `stopping`. Nothing else is locked under it.
    std::mutex mutex;
    std::condition_variable stopRequested;
    bool stopping = false;

    Vor::NamedThread thread; ///< while a scan by time runs
    bool scanning = false;
    Clock::time_point start;
    Clock::time_point end; ///< once a scan has stopped
    /// Frames that the scan has made. Written by the thread that makes them.
    std::atomic<std::uint64_t> frameCount{0};
};

} // namespace Sensor::Scan
