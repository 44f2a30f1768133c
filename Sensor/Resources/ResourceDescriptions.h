#pragma once

#include "Sensor/Http/ResourceDescription.h"
#include "Sensor/Resources/SensorProperties.h"
#include "VorRest/RequestProcessor.h"

#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace VorApi {
class ResourceRouter;
}

namespace VorCommon {
class ICommandTarget;
}

namespace Sensor::Resources {

/// What is at each route, with the schemas that the sensor and its services have at present. What isn't known here is
/// described by its path. Main loop only.
class ResourceDescriptions {
public:
    /// All of it outlives this.
    ResourceDescriptions(VorApi::ResourceRouter& router, const SensorEnviron& environ);

    Http::ResourceDescription Of(const std::string& route);

    /// The routes that are known here.
    static std::vector<std::string> Known();
    /// The tags, with a text for each.
    static const std::map<std::string, std::string>& Tags();

private:
    using Json = nlohmann::json;
    using Description = Http::ResourceDescription;
    struct Row;

    static const std::vector<Row>& Rows();

    // One for each kind of resource, each of which adds schemas and the like.
    void AddDocument(const std::string& route, Description& description);
    void AddEvents(const std::string& route, Description& description);
    void AddProblems(const std::string& route, Description& description);
    void AddLog(const std::string& route, Description& description);
    void AddScan(const std::string& route, Description& description);
    void AddScanHistory(const std::string& route, Description& description);
    void AddTool(const std::string& route, Description& description);
    void AddIo(const std::string& route, Description& description);
    void AddOperation(const std::string& route, Description& description);
    void AddSensorCommands(const std::string& route, Description& description);
    void AddJob(const std::string& route, Description& description);
    void AddJobCommands(const std::string& route, Description& description);
    void AddBytes(const std::string& route, Description& description);
    void AddJobChanges(const std::string& route, Description& description);
    void AddExplanation(const std::string& route, Description& description);
    void AddServiceTypes(const std::string& route, Description& description);
    void AddServices(const std::string& route, Description& description);
    void AddServiceCommands(const std::string& route, Description& description);
    void AddMetrics(const std::string& route, Description& description);
    void AddOutputs(const std::string& route, Description& description);
    void AddOutputCommands(const std::string& route, Description& description);
    void AddAssemblies(const std::string& route, Description& description);
    void AddAssemblyCommands(const std::string& route, Description& description);

    /// The schema of the document at a path.
    Json SchemaAt(const std::string& path);
    /// Adds the commands of a collection of the sensor.
    void AddCommandsAt(const std::string& path, Description& description);
    static void AddCommands(const VorCommon::ICommandTarget& target, Description& description);

    VorRest::RequestProcessor requests;
    const SensorEnviron environ;
};

} // namespace Sensor::Resources
