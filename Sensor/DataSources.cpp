#include "Sensor/DataSources.h"

#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/ResultSetMaker.h"

#include <algorithm>
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
    ValueUnit unit;
};

constexpr std::array<Known, 8> Sources = {{{"profile/max", "Maximum Height", PipeDataType::Measurement, {"mm", 3}},
                                           {"profile/min", "Minimum Height", PipeDataType::Measurement, {"mm", 3}},
                                           {"profile/mean", "Mean Height", PipeDataType::Measurement, {"mm", 3}},
                                           {"profile/width", "Width", PipeDataType::Measurement, {"mm", 3}},
                                           {"profile/points", "Number of Points", PipeDataType::Measurement, {"", 0}},
                                           {"profile/text", "Text", PipeDataType::String, {"", 0}},
                                           {"profile/stamp", "Stamp", PipeDataType::Stamp, {"", 0}},
                                           {"values/stamp", "Stamp", PipeDataType::Stamp, {"", 0}}}};

/// Null for a named value.
const Known* Find(const std::string& name) {
    const auto* const found = std::ranges::find(Sources, name, &Known::name);
    return found == Sources.end() ? nullptr : found;
}

VorPipe::PipeOutput OutputOf(const std::string& name) {
    const char* const owner = name.starts_with("profile/") ? "Profile" : "Values";
    if (const Known* const known = Find(name)) {
        return {name, owner, known->displayName, {known->type, false}};
    }
    return {name, owner, name.substr(name.find('/') + 1), {PipeDataType::Measurement, false}};
}

} // namespace

std::vector<VorPipe::PipeOutput> DataSourcesOf(const Scan::Recording& recording) {
    std::vector<VorPipe::PipeOutput> outputs;
    for (const std::string& name : Scan::ResultSetMaker::DataSources(recording)) {
        outputs.push_back(OutputOf(name));
    }
    return outputs;
}

ValueUnit UnitOf(const std::string& dataSource) {
    const Known* const known = Find(dataSource);
    return known != nullptr ? known->unit : ValueUnit{"", 3};
}

std::string ToolOf(const std::string& dataSource) {
    const Known* const known = Find(dataSource);
    if (known != nullptr && known->type != PipeDataType::Measurement) {
        return "";
    }
    std::string tool = dataSource;
    tool.at(tool.find('/')) = '-'; // easier to type, and in paths
    return tool;
}

} // namespace Sensor
