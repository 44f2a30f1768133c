#include "Sensor/Resources/ToolsResource.h"

#include "Sensor/Resources/DocumentMembers.h"
#include "Sensor/SensorTools.h"
#include "Vor/DocumentErrors.h"
#include "Vor/Exception.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorApi/Path.h"
#include "yApi/yStatus.h"

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

namespace {

class ToolProperties : public Vor::Params::Group {
public:
    explicit ToolProperties(const Tool& tool) {
        RegisterReadOnly(*this, "id", id, "Id");
        RegisterReadOnly(*this, "source", source, "Data source");
        RegisterReadOnly(*this, "displayName", displayName, "Name");
        RegisterReadOnly(*this, "unit", unit, "Unit");
        RegisterReadOnly(*this, "decimals", decimals, "Decimals");
        id = tool.id;
        source = tool.source;
        displayName = tool.displayName;
        unit = tool.unit.name;
        decimals = tool.unit.decimals;
    }

    Vor::Params::Value<std::string> id;
    Vor::Params::Value<std::string> source;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<std::string> unit;
    Vor::Params::Value<unsigned int> decimals;
};

/// Parameters can't have a number with a fraction.
void AddLimits(const Tool& tool, bool withSchema, VorApi::VorDataTree& data) {
    for (const LimitMember& member : LimitMembers) {
        data[member.name].Set(tool.limits.*member.value);
        if (withSchema) {
            VorApi::VorDataTree schema = data["_schema"]["properties"][member.name];
            schema["type"].Set("number");
            schema["title"].Set(member.title);
            if (*tool.unit.name != '\0') {
                schema["units"].Set(tool.unit.name);
            }
            schema["minimum"].Set(-ToolLimits::Range);
            schema["maximum"].Set(ToolLimits::Range);
            schema["default"].Set(ToolLimits().*member.value);
        }
    }
}

} // namespace

std::string ToolsResource::PathOf(const std::string& tool) {
    return VorApi::Path::Format("/sensor/tools/:tool", {tool});
}

const Tool& ToolsResource::RequiredTool(const VorApi::RequestInfo& request) const {
    const std::string* const id = request.FindKey("tool");
    if (id == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "The path names no tool.");
    }
    const Tool* const tool = tools.Find(*id);
    if (tool == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no tool '%s'.", *id);
    }
    return *tool;
}

void ToolsResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                             VorApi::VorDataTree& data) {
    if (request.FindKey("tool") == nullptr) {
        for (const Tool& tool : tools.All()) {
            response.Embed("item", PathOf(tool.id), true, VorApi::VorDataTree());
        }
        return;
    }
    const Tool& tool = RequiredTool(request);
    NodeToVorDataTree(ToolProperties(tool), request, data, true);
    AddLimits(tool, request.WantsSchema(), data);
}

void ToolsResource::UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) {
    const Tool& tool = RequiredTool(request);
    ToolLimits limits = tool.limits;
    Vor::DocumentErrors errors;
    ChangeLimits(limits, json, "", errors);
    errors.ThrowIfAny();
    tools.SetLimits(tool.id, limits);
}

} // namespace Sensor::Resources
