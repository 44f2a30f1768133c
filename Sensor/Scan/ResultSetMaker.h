#pragma once

#include "Sensor/Scan/Limits.h"
#include "Sensor/Scan/Recording.h"
#include "VorApi/Object.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Sensor::Scan {

/// The sensor's tools: creates the result set of a frame, with one item per data source in the order of DataSources().
/// A measurement without a value is a null message.
class ResultSetMaker {
public:
    /// The encoder's difference from one frame to the next.
    static constexpr std::int64_t EncoderTicksPerFrame = 1000;

    explicit ResultSetMaker(const Recording& recording);

    /// The data sources of a recording. Profiles: `profile/max`, `profile/min`, `profile/mean`,
    /// `profile/width`, `profile/points`, `profile/text`, `profile/stamp`. Named values: `values/NAME` for each name,
    /// then `values/stamp`.
    static std::vector<std::string> DataSources(const Recording& recording);

    /// Sets the limits of the measurements' decisions, 1 inside and 0 outside, in the order of DataSources(): one for
    /// each data source, also for those that have no decision. By default every value is inside. All decisions of a
    /// frame are by the limits of one call. From any thread. Throws yERROR_SIZE for another number of limits.
    void SetLimits(std::vector<Limits> given);

    /// A new ResultSet, to be published at once: its items have the time of this call as that of their publication.
    /// `frameIndex` counts the frames of the scan from 0, `time` is in microseconds since its start. For any thread.
    Vor::Object Make(const Frame& frame, std::uint64_t frameIndex, std::uint64_t time) const;

private:
    struct Source {
        std::string name;
        /// The ResultInfo that all results of the source share.
        Vor::Object info;
    };
    /// As SetLimits has them. Replaced, not changed.
    using LimitTable = std::shared_ptr<const std::vector<Limits>>;

    LimitTable PresentLimits() const;
    void AddProfile(void* set, std::uint64_t now, const Frame& frame, std::uint64_t frameIndex) const;
    void AddValues(void* set, std::uint64_t now, const Frame& frame) const;

    RecordingKind kind;
    std::vector<Source> sources;
    mutable std::mutex limitsMutex; ///< guards `limits`. No lock is acquired under it.
    LimitTable limits;
};

} // namespace Sensor::Scan
