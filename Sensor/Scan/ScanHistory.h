#pragma once

#include "VorApi/Object.h"
#include "VorCore/ResultHub.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

struct yStamp;

namespace Sensor::Scan {

/// The last frame and the values of the latest Capacity frames, from the construction on. It is filled on the thread of
/// the hub, which allocates nothing for it and never waits for the reader.
class ScanHistory {
public:
    static constexpr std::size_t Capacity = 1200;

    /// A measurement's value in a frame, or that there is none.
    struct Sample {
        std::optional<double> value;
        unsigned char decision = 0; ///< of a value
    };
    struct Frame {
        std::uint64_t index = 0; ///< in its scan
        std::uint64_t time = 0;  ///< microseconds since the start of its scan
        std::vector<Sample> samples = {};
    };

    /// The frames' sets have an item for each of `sourceCount` data sources, the last of which is the stamp; other sets
    /// are ignored. The hub outlives this, and no handler of it waits for the thread that destroys this.
    ScanHistory(VorCore::ResultHub& hub, std::size_t sourceCount);
    ~ScanHistory();
    ScanHistory(const ScanHistory&) = delete;
    ScanHistory& operator=(const ScanHistory&) = delete;

    /// How many frames there were. From any thread.
    std::uint64_t FrameCount() const { return frameCount.load(std::memory_order_acquire); }

    /// The result set of the last frame, null when there was none. For one thread.
    const Vor::Object& LastSet();

    /// The latest frames with their samples of these data sources, oldest first. At most `count`; fewer when there were
    /// fewer, or while the oldest ones are being replaced. From any thread.
    std::vector<Frame> Latest(std::size_t count, const std::vector<std::size_t>& sources) const;

    /// The stamp of such a set; null when it has none.
    static const yStamp* StampOf(void* resultSet);

private:
    /// Words of a frame, of which the first is Writing while the others are being written, and then the number of the
    /// frame.
    using Word = std::atomic<std::uint64_t>;
    static constexpr std::uint64_t Writing = 0;

    void Add(void* resultSet);
    /// Where the words of a frame begin.
    std::size_t PlaceOf(std::uint64_t number) const { return number % Capacity * frameWords; }
    /// Nothing for a frame that is being replaced or was.
    std::optional<Frame> Read(std::uint64_t number, const std::vector<std::size_t>& sources) const;

    VorCore::ResultHub& hub;
    const std::size_t sourceCount;
    const std::size_t frameWords;
    std::vector<Word> words;
    std::atomic<std::uint64_t> frameCount{0}; ///< also the number of the last frame
    std::atomic<void*> fresh{nullptr};        ///< a share of the last set, unless LastSet has taken it
    Vor::Object last;                         ///< the reader's
    VorCore::ResultHub::CallbackId handler;
};

} // namespace Sensor::Scan
