#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace Services::Common {

/// How long result sets take from their publication until clients can read them: all of them in a histogram, and those
/// of the last seconds with their quantiles. Times are microseconds but for the arguments. Allocates nothing. For any
/// thread.
class ResultLatency {
public:
    /// The upper bounds of the buckets. One more bucket has what is longer than the last one.
    static constexpr std::array<std::uint64_t, 16> Bounds{100,       250,       500,       1'000,     2'500,   5'000,
                                                          10'000,    25'000,    50'000,    100'000,   250'000, 500'000,
                                                          1'000'000, 2'500'000, 5'000'000, 10'000'000};
    using Counts = std::array<std::uint64_t, Bounds.size() + 1>;

    /// The last seconds are so many, the present one included.
    static constexpr std::uint64_t RecentSeconds = 10;

    struct Figures {
        Counts counts{};       ///< of each bucket alone
        std::uint64_t sum = 0; ///< of all latencies

        std::uint64_t recent = 0; ///< how many there were in the last seconds; of these are the others, 0 without any
        std::uint64_t median = 0;
        std::uint64_t percentile99 = 0; ///< this and the median are at most an eighth more than they should be
        std::uint64_t greatest = 0;
    };

    /// Both are yTime_Monotonic: when the results were published, and when clients can read them.
    void Add(std::uint64_t published, std::uint64_t now);
    /// As they are at `now`, a yTime_Monotonic.
    Figures Read(std::uint64_t now) const;
    void Reset();

private:
    /// Latencies of up to 2^26 us, that is 67 s, in eight buckets for each power of two. The last one also has those
    /// that are longer.
    static constexpr unsigned SubBits = 3;
    static constexpr unsigned SubCount = 1U << SubBits;
    static constexpr unsigned MaxBits = 26;
    static constexpr std::size_t FineCount = std::size_t{SubCount} * (MaxBits - SubBits + 1);
    using FineCounts = std::array<std::uint32_t, FineCount>;

    /// One second.
    struct Slot {
        std::uint64_t second = 0; ///< since the start of the clock
        std::uint64_t greatest = 0;
        FineCounts counts{};
    };

    static std::size_t FineBucket(std::uint64_t latency);
    /// The greatest latency of a bucket.
    static std::uint64_t FineBound(std::size_t bucket);
    static std::uint64_t Quantile(const FineCounts& counts, std::uint64_t rank, std::uint64_t greatest);

    /// Guards the members below, only while they are counted or summed. No lock is acquired under it.
    mutable std::mutex mutex;
    Counts counts{};
    std::uint64_t sum = 0;
    std::array<Slot, RecentSeconds> slots{}; ///< each second has the one of its remainder
};

} // namespace Services::Common
