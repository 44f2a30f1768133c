#pragma once

#include "VorApi/DocumentResourceBase.h"

#include <string>

namespace Sensor {

class SensorTools;
struct Tool;

namespace Resources {

/// The tools of the sensor, each with its limits, which an update changes.
class ToolsResource : public VorApi::DocumentResourceBase {
public:
    /// The tools outlive this.
    explicit ToolsResource(SensorTools& tools)
        : tools(tools) {}

    /// The path of a tool.
    static std::string PathOf(const std::string& tool);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    void UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) override;
    bool IsUpdatable() const override { return true; }

private:
    /// The tool at the path, which exists.
    const Tool& RequiredTool(const VorApi::RequestInfo& request) const;

    SensorTools& tools;
};

} // namespace Resources
} // namespace Sensor
