#pragma once

#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/ResultSetMaker.h"
#include "yApi/yThread.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace VorCore {
class ResultHub;
}

namespace Sensor::Scan {

/// Replays a recording: a thread named "Scanner" publishes one result set a frame, at a steady rate. Start and Stop are
/// for one thread.
class Scanner {
public:
    struct Settings {
        /// Frames a second, above 0.
        double frameRate = 10;
        /// Stand still behind the last frame instead of beginning again.
        bool once = false;
        /// Called on the scanner's thread once it stands still. May be empty.
        std::function<void()> ended = nullptr;
    };

    /// Recording and hub are borrowed. Throws a Vor::Exception without a frame or with a rate that isn't above 0.
    Scanner(const Recording& recording, VorCore::ResultHub& hub, Settings settings);
    /// Stops.
    ~Scanner();
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    /// Begins with the first frame, which is published at once. Does nothing while the scan runs.
    void Start();
    /// No frame is published after it returns. Waits no longer than one frame takes to make.
    void Stop();

private:
    using Clock = std::chrono::steady_clock;

    yStatus Run();
    bool SleepUntil(Clock::time_point time);

    const Recording& recording;
    VorCore::ResultHub& hub;
    const Settings settings;
    const Clock::duration period;
    const ResultSetMaker maker;

    /// Guards `stopping`. Nothing else is locked under it.
    std::mutex mutex;
    std::condition_variable stopRequested;
    bool stopping = false;

    yThread thread = nullptr;
};

} // namespace Sensor::Scan
