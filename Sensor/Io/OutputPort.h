#pragma once

#include "Sensor/Io/PortSettings.h"
#include "Sensor/Io/ScanClock.h"
#include "Vor/LoopCore.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace Sensor::Io {

/// An output of a device: what it was asked for, when it changes, and what its line did. Its owner guards it, gives it
/// the moment of each call, and calls RunDue when NextDue has come.
class OutputPort {
public:
    using Moment = ScanClock::Moment;
    using Time = Vor::LoopCore::Time;
    using ChangeCount = std::atomic<std::uint64_t>;

    static constexpr std::size_t MaxWaiting = 256;
    static constexpr std::size_t MaxEdges = 256;

    enum class Answer { Taken, NotDriven, SwitchesByItself, NotScanning, Full };

    struct Edge {
        std::uint64_t number = 0; ///< from 1 on
        std::uint64_t time = 0;   ///< microseconds, as the stamps of the scan
        std::optional<std::uint64_t> frame;
        bool high = false; ///< the line from then on
    };
    struct Request {
        bool on = false;
        long long target = 0;
    };
    /// requests = done + refused + lost + waiting
    struct Counts {
        std::uint64_t requests = 0;
        std::uint64_t done = 0;
        std::uint64_t refused = 0;
        std::uint64_t lost = 0; ///< taken, but dropped before their time
        std::uint64_t waiting = 0;
        std::uint64_t rises = 0;
        std::uint64_t falls = 0;
    };

    /// Each change of what can be read here adds to `changes`.
    explicit OutputPort(std::shared_ptr<ChangeCount> changes);

    /// A port that gets another behaviour loses what waits.
    void Configure(const PortSettings& settings, const Moment& moment);
    const PortSettings& Settings() const { return settings; }

    /// Whether somebody drives the device. When nobody does, what waits is lost and the output is in its idle state.
    void Enable(bool enable, const Moment& moment);
    /// Changes the output when the target is reached and the delay is over, perhaps at once. A request that doesn't
    /// change an output which nobody drives is done; others are refused then.
    Answer Ask(const Request& request, const Moment& moment);

    /// The scan has started or stopped. What waits for a target of the scan is lost.
    void OnScanChanged(const Moment& moment);
    /// A frame has been made, so the encoder has moved.
    void OnFrame(const Moment& moment);
    /// Ends pulses and delays.
    void RunDue(const Moment& moment);
    std::optional<Time> NextDue() const;

    bool IsOn() const { return on; }
    bool IsHigh() const { return high; }
    Counts ReadCounts() const;
    const std::optional<Request>& LastRequest() const { return last; }
    /// The latest ones, oldest first.
    std::vector<Edge> Edges(std::size_t count) const;

private:
    struct Timed {
        bool on = false;
        Time reached; ///< when its target is or was reached
    };

    Answer Schedule(const Request& request, const Moment& moment);
    bool IsFull() const { return atEncoder.size() + timed.size() >= MaxWaiting; }
    /// The target is reached at `moment`.
    void Begin(bool wanted, const Moment& moment);
    void CarryOut(bool wanted, const Moment& moment);
    void Pulse(const Moment& moment);
    void LoseAll();
    void LoseTargets(const Moment& moment);
    void Rest(const Moment& moment);
    void SwitchByItself(const Moment& moment);
    void Switch(bool wanted, const Moment& moment);
    void SetLine(const Moment& moment);
    void NoteChange() { changes->fetch_add(1, std::memory_order_relaxed); }

    const std::shared_ptr<ChangeCount> changes;
    PortSettings settings;
    bool enabled = false;
    bool on = false;
    bool high = false;
    std::optional<Time> pulseEnd;
    std::multimap<std::int64_t, bool> atEncoder;
    std::multimap<Time, Timed> timed;
    Counts counts; ///< without those that wait
    std::optional<Request> last;
    std::deque<Edge> edges;
};

} // namespace Sensor::Io
