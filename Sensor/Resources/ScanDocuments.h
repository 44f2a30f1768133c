#pragma once

#include "Sensor/Scan/ScanHistory.h"
#include "VorApi/Object.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace Sensor {

class VirtualSensor;

namespace Resources {

/// The documents of the scan's last frame and of the latest ones. They have numbers and null, which parameters can't
/// have, so they are made as JSON. Main loop only.
class ScanDocuments {
public:
    /// A history with more data sources has fewer frames, so that the document isn't larger.
    static constexpr std::size_t MaxHistoryValues = 120'000;

    /// The frames from now on. The sensor outlives this.
    explicit ScanDocuments(VirtualSensor& sensor);

    /// Looks for a new frame. Returns how many were found by now, which aren't all; 0 before the first.
    std::uint64_t Update();

    /// The frame of the last Update with so many of its points.
    nlohmann::json Last(std::size_t points) const;
    static nlohmann::json LastSchema();

    /// The values of so many of the latest frames, of the data sources of these names, each once; without names of all
    /// measurements. Throws `yERROR_FORMAT` for a name that no measurement has.
    nlohmann::json History(std::size_t frames, const std::vector<std::string>& names) const;
    static nlohmann::json HistorySchema();

private:
    struct Source {
        std::string name;
        std::string displayName;
        std::string unit;
        bool isMeasurement = false;
        bool isStamp = false;
    };

    static std::vector<Source> SourcesOf(const VirtualSensor& sensor);
    std::vector<std::size_t> MeasurementsOf(const std::vector<std::string>& names) const;

    const VirtualSensor& sensor;
    const std::vector<Source> sources;
    Scan::ScanHistory history;
    Vor::Object last; ///< the set of the frame
    std::uint64_t found = 0;
};

} // namespace Resources
} // namespace Sensor
