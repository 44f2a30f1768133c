#include "Sensor/DataSources.h"

#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/ResultSetMaker.h"

#include <array>
#include <string>
#include <string_view>

namespace Sensor {

namespace {

using VorPipe::PipeDataType;

/// A data source with a display name.
struct Known {
    std::string_view name;
    const char* displayName;
    PipeDataType type;
};

constexpr std::array<Known, 8> Sources = {{{"profile/max", "Maximum Height", PipeDataType::Measurement},
                                           {"profile/min", "Minimum Height", PipeDataType::Measurement},
                                           {"profile/mean", "Mean Height", PipeDataType::Measurement},
                                           {"profile/width", "Width", PipeDataType::Measurement},
                                           {"profile/points", "Number of Points", PipeDataType::Measurement},
                                           {"profile/text", "Text", PipeDataType::String},
                                           {"profile/stamp", "Stamp", PipeDataType::Stamp},
                                           {"values/stamp", "Stamp", PipeDataType::Stamp}}};

VorPipe::PipeOutput OutputOf(const std::string& name) {
    const std::size_t slash = name.find('/');
    const char* const owner = name.starts_with("profile/") ? "Profile" : "Values";
    for (const Known& known : Sources) {
        if (known.name == name) {
            return {name, owner, known.displayName, {known.type, false}};
        }
    }
    return {name, owner, name.substr(slash + 1), {PipeDataType::Measurement, false}};
}

} // namespace

std::vector<VorPipe::PipeOutput> DataSourcesOf(const Scan::Recording& recording) {
    std::vector<VorPipe::PipeOutput> outputs;
    for (const std::string& name : Scan::ResultSetMaker::DataSources(recording)) {
        outputs.push_back(OutputOf(name));
    }
    return outputs;
}

} // namespace Sensor
