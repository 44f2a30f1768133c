#include "Sensor/Resources/SourcesResource.h"

#include "Sensor/DataSources.h"
#include "Sensor/Resources/DocumentMembers.h"
#include "Sensor/Resources/ToolsResource.h"
#include "Sensor/VirtualSensor.h"
#include "VorApi/Params/Array.h"
#include "VorApi/Params/Value.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Sensor::Resources {

namespace {

const char* TextOf(VorPipe::PipeDataType type) {
    switch (type) {
    case VorPipe::PipeDataType::Stamp:
        return "stamp";
    case VorPipe::PipeDataType::String:
        return "text";
    default:
        return "measurement";
    }
}

class SourceProperties : public Vor::Params::Group {
public:
    SourceProperties() {
        RegisterReadOnly(*this, "source", source, "Data source");
        RegisterReadOnly(*this, "displayName", displayName, "Name");
        RegisterReadOnly(*this, "tool", tool, "Tool");
        RegisterReadOnly(*this, "type", type, "Type, measurement, text or stamp");
        RegisterReadOnly(*this, "unit", unit, "Unit");
        RegisterReadOnly(*this, "decimals", decimals, "Decimals");
    }

    void Populate(const VorPipe::PipeOutput& output) {
        source = output.name;
        displayName = output.displayName;
        tool = ToolOf(output.name);
        type = TextOf(output.format.type);
        const ValueUnit valueUnit = UnitOf(output.name);
        unit = valueUnit.name;
        decimals = valueUnit.decimals;
    }

    Vor::Params::Value<std::string> source;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<std::string> tool;
    Vor::Params::Value<std::string> type;
    Vor::Params::Value<std::string> unit;
    Vor::Params::Value<unsigned int> decimals;
};

class SourcesProperties : public Vor::Params::Group {
public:
    SourcesProperties() { RegisterReadOnly(*this, "items", items, "Data sources"); }

    Vor::Params::Array<SourceProperties> items;
};

} // namespace

void SourcesResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                               VorApi::VorDataTree& data) {
    const std::vector<VorPipe::PipeOutput> outputs = DataSourcesOf(sensor.Input());
    SourcesProperties document;
    document.items.Resize(outputs.size());
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        document.items.At(i).Populate(outputs[i]);
        if (const std::string& tool = document.items.At(i).tool.Get(); !tool.empty()) {
            response.Link("vor:tool", ToolsResource::PathOf(tool), true, VorApi::VorDataTree());
        }
    }
    NodeToVorDataTree(document, request, data, true);
}

} // namespace Sensor::Resources
