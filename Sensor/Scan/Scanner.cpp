#include "Sensor/Scan/Scanner.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorCore/ResultHub.h"

#include <utility>

namespace Sensor::Scan {

namespace {

/// How far the scan may fall behind, as when the machine was suspended, before it gives up catching up.
constexpr std::chrono::seconds MaxLag{1};

std::chrono::steady_clock::duration PeriodOf(double frameRate) {
    if (!(frameRate > 0)) {
        Vor::Throw(yERROR_PARAMETER, "The frame rate must be above 0.");
    }
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(1 / frameRate));
}

} // namespace

Scanner::Scanner(const Recording& recording, VorCore::ResultHub& hub, Settings settings)
    : recording(recording)
    , hub(hub)
    , settings(std::move(settings))
    , period(PeriodOf(this->settings.frameRate))
    , maker(recording) {
    if (recording.frames.empty()) {
        Vor::Throw(yERROR_PARAMETER, "The recording holds no frame.");
    }
}

Scanner::~Scanner() {
    Stop();
}

void Scanner::Start() {
    if (thread != nullptr) {
        return;
    }
    stopping = false;
    Vor::ThrowIfFailed(yThread_Construct(&thread, [this] { return Run(); }));
    yStatus status = yThread_SetName(thread, "Scanner");
    if (status == yOK) {
        status = yThread_Start(thread);
    }
    if (status != yOK) {
        yThread_Destroy(std::exchange(thread, nullptr));
        Vor::Throw(status);
    }
}

void Scanner::Stop() {
    if (thread == nullptr) {
        return;
    }
    {
        const std::lock_guard guard(mutex);
        stopping = true;
    }
    stopRequested.notify_one();
    yThread_Destroy(std::exchange(thread, nullptr));
}

yStatus Scanner::Run() {
    try {
        const Clock::time_point start = Clock::now();
        Clock::time_point next = start;
        const std::size_t count = recording.frames.size();
        for (std::uint64_t index = 0; !settings.once || index < count; ++index) {
            if (!SleepUntil(next)) {
                return yOK;
            }
            const Clock::time_point now = Clock::now();
            const auto time = std::chrono::duration_cast<std::chrono::microseconds>(now - start).count();
            const Vor::Object set =
                maker.Make(recording.frames[index % count], index, static_cast<std::uint64_t>(time));
            hub.Publish(set.Get());
            next += period;
            if (now - next > MaxLag) {
                Vor::LogWarning("The scan was held up for more than a second and goes on from here.");
                next = now;
            }
        }
        if (settings.ended) {
            settings.ended();
        }
        return yOK;
    } catch (const std::exception& e) {
        Vor::LogError("The scan ended with an error.");
        Vor::Exception::LogException(e);
        Vor::Exception::LogBackTrace(e);
        return yERROR;
    }
}

bool Scanner::SleepUntil(Clock::time_point time) {
    std::unique_lock guard(mutex);
    return !stopRequested.wait_until(guard, time, [this] { return stopping; });
}

} // namespace Sensor::Scan
