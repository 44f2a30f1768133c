#include "Sensor/Scan/Scanner.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorCore/ResultHub.h"

#include <utility>

namespace Sensor::Scan {

namespace {

/// When the scan is later than this, for instance because the machine was suspended, it doesn't catch up.
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
    if (scanning) {
        return;
    }
    frameCount.store(0, std::memory_order_relaxed);
    start = Clock::now();
    if (settings.trigger == TriggerMode::Time) {
        stopping = false;
        thread = Vor::NamedThread("Scanner", [this] { return Run(); });
    }
    scanning = true;
}

void Scanner::Stop() {
    if (!scanning) {
        return;
    }
    if (thread) {
        {
            const std::lock_guard guard(mutex);
            stopping = true;
        }
        stopRequested.notify_one();
        thread.Reset();
    }
    end = Clock::now();
    scanning = false;
}

void Scanner::Trigger() {
    if (settings.trigger != TriggerMode::Software) {
        Vor::Throw(yERROR_STATE, "The sensor isn't in triggered mode, its frames come by time.");
    }
    if (!scanning) {
        Vor::Throw(yERROR_STATE, "The sensor isn't scanning.");
    }
    if (AtEnd()) {
        Vor::Throw(yERROR_STATE, "The scan stands still behind the last frame of the recording.");
    }
    PublishNext(Clock::now());
    NotifyEnd();
}

ScannerState Scanner::State() const {
    const std::uint64_t count = frameCount.load(std::memory_order_relaxed);
    const auto time = (scanning ? Clock::now() : end) - start;
    return {.scanning = scanning,
            .frames = count,
            .encoder = count == 0 ? 0 : static_cast<std::int64_t>(count - 1) * ResultSetMaker::EncoderTicksPerFrame,
            .time = static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(time).count())};
}

void Scanner::SetLimits(std::vector<Limits> limits) {
    maker.SetLimits(std::move(limits));
}

yStatus Scanner::Run() {
    try {
        Clock::time_point next = start;
        while (!AtEnd()) {
            if (!SleepUntil(next)) {
                return yOK;
            }
            const Clock::time_point now = Clock::now();
            PublishNext(now);
            next += period;
            if (now - next > MaxLag) {
                Vor::LogWarning("The scan was held up for more than a second and goes on from here.");
                next = now;
            }
        }
        NotifyEnd();
        return yOK;
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "The scan ended with an error.");
        return yERROR;
    }
}

bool Scanner::AtEnd() const {
    return settings.once && frameCount.load(std::memory_order_relaxed) >= recording.frames.size();
}

void Scanner::PublishNext(Clock::time_point now) {
    const std::uint64_t index = frameCount.load(std::memory_order_relaxed);
    const auto time = std::chrono::duration_cast<std::chrono::microseconds>(now - start).count();
    const Vor::Object set =
        maker.Make(recording.frames[index % recording.frames.size()], index, static_cast<std::uint64_t>(time));
    frameCount.store(index + 1, std::memory_order_relaxed);
    frameTotal.fetch_add(1, std::memory_order_relaxed);
    if (settings.frameMade) {
        settings.frameMade(index);
    }
    hub.Publish(set.Get());
}

void Scanner::NotifyEnd() const {
    if (AtEnd() && settings.ended) {
        settings.ended();
    }
}

bool Scanner::SleepUntil(Clock::time_point time) {
    std::unique_lock guard(mutex);
    return !stopRequested.wait_until(guard, time, [this] { return stopping; });
}

} // namespace Sensor::Scan
