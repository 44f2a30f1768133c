#include "Services/Common/ResultLatency.h"

#include <algorithm>
#include <bit>
#include <functional>

namespace Services::Common {

namespace {

constexpr std::uint64_t Microsecond = 1'000;
constexpr std::uint64_t Second = 1'000'000'000;

} // namespace

void ResultLatency::Add(std::uint64_t published, std::uint64_t now) {
    const std::uint64_t latency = (now - std::min(published, now)) / Microsecond;
    const std::uint64_t second = now / Second;
    const auto bucket = static_cast<std::size_t>(std::ranges::lower_bound(Bounds, latency) - Bounds.begin());
    const std::lock_guard lock(mutex);
    ++counts[bucket];
    sum += latency;
    Slot& slot = slots[second % slots.size()];
    if (slot.second != second) {
        slot = {.second = second};
    }
    ++slot.counts[FineBucket(latency)];
    slot.greatest = std::max(slot.greatest, latency);
}

ResultLatency::Figures ResultLatency::Read(std::uint64_t now) const {
    const std::uint64_t second = now / Second;
    Figures figures;
    FineCounts recent{};
    {
        const std::lock_guard lock(mutex);
        figures.counts = counts;
        figures.sum = sum;
        for (const Slot& slot : slots) {
            if (slot.second + RecentSeconds > second) {
                std::ranges::transform(recent, slot.counts, recent.begin(), std::plus<>());
                figures.greatest = std::max(figures.greatest, slot.greatest);
            }
        }
    }
    for (const std::uint32_t count : recent) {
        figures.recent += count;
    }
    figures.median = Quantile(recent, (figures.recent + 1) / 2, figures.greatest);
    figures.percentile99 = Quantile(recent, (figures.recent * 99 + 99) / 100, figures.greatest);
    return figures;
}

void ResultLatency::Reset() {
    const std::lock_guard lock(mutex);
    counts = {};
    sum = 0;
    slots = {};
}

std::size_t ResultLatency::FineBucket(std::uint64_t latency) {
    const std::uint64_t limited = std::min(latency, (std::uint64_t{1} << MaxBits) - 1);
    if (limited < SubCount) {
        return limited;
    }
    const auto shift = static_cast<unsigned>(std::bit_width(limited)) - SubBits - 1;
    return std::size_t{SubCount} * shift + (limited >> shift);
}

std::uint64_t ResultLatency::FineBound(std::size_t bucket) {
    if (bucket < SubCount) {
        return bucket;
    }
    const std::size_t shift = bucket / SubCount - 1;
    return ((bucket % SubCount + SubCount + 1) << shift) - 1;
}

// No latency is more than the greatest one; the last bucket has no other bound.
std::uint64_t ResultLatency::Quantile(const FineCounts& counts, std::uint64_t rank, std::uint64_t greatest) {
    std::uint64_t below = 0;
    for (std::size_t bucket = 0; bucket + 1 < FineCount; ++bucket) {
        below += counts[bucket];
        if (below >= rank) {
            return std::min(FineBound(bucket), greatest);
        }
    }
    return greatest;
}

} // namespace Services::Common
