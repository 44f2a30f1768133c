#include "Sensor/Resources/ResourceDescriptions.h"

#include "Sensor/Http/ExplanationsResource.h"
#include "Sensor/Io/OutputPort.h"
#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/LogHistory.h"
#include "Sensor/Resources/EventsResource.h"
#include "Sensor/Resources/JobProperties.h"
#include "Sensor/Resources/ListedProblemProperties.h"
#include "Sensor/Resources/LogEntryProperties.h"
#include "Sensor/Resources/OperationProperties.h"
#include "Sensor/Resources/ScanDocuments.h"
#include "Sensor/Resources/ToolsResource.h"
#include "Sensor/Scan/ScanHistory.h"
#include "Sensor/SensorTools.h"
#include "Sensor/ToolLimits.h"
#include "Vor/ArrayBase.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Structure.h"
#include "VorApi/Path.h"
#include "VorCommon/CommandInfo.h"
#include "VorCommon/ICommandTarget.h"
#include "VorCommon/PersistManager.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/IControlManager.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorControl/Protocol/ProtocolTypesProperties.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <utility>

namespace Sensor::Resources {

using VorApi::Path;
using VorControl::IControlInstance;

namespace {

using nlohmann::json;

/// Gives each array one element, so that the schema has that of its elements.
void FillArrays(Vor::Properties::Structure& structure) {
    for (const auto& member : structure.Members()) {
        Vor::Properties::Node& node = member.Target();
        if (auto* const array = dynamic_cast<Vor::Properties::Internal::ArrayBase*>(&node)) {
            array->Resize(1);
            FillArrays(array->ItemAt(0));
        } else if (auto* const part = dynamic_cast<Vor::Properties::Structure*>(&node)) {
            FillArrays(*part);
        }
    }
}

json SchemaOf(const Vor::Properties::Node& node) {
    return Vor::Properties::JsonSerializer::SerializeSchema(node);
}

/// Of a structure that is made for this.
json SchemaOfNew(Vor::Properties::Structure&& structure) {
    FillArrays(structure);
    return SchemaOf(structure);
}

json ObjectSchema(json properties) {
    return {{"type", "object"}, {"properties", std::move(properties)}};
}

json ListSchema(json items) {
    return {{"type", "array"}, {"items", std::move(items)}};
}

json Titled(json schema, const std::string& title) {
    schema["title"] = title;
    return schema;
}

json TextSchema() {
    return {{"type", "string"}};
}

json NumberSchema(std::uint64_t least, std::uint64_t greatest) {
    return {{"type", "integer"}, {"minimum", least}, {"maximum", greatest}};
}

void AddOnce(std::vector<json>& schemas, json schema) {
    if (std::ranges::find(schemas, schema) == schemas.end()) {
        schemas.push_back(std::move(schema));
    }
}

void AddCommand(const std::string& id, const json& parameters, Http::ResourceDescription& description) {
    AddOnce(description.arguments, Titled(parameters, id));
    AddOnce(description.documents, Titled(ObjectSchema({{"id", TextSchema()}, {"parameters", parameters}}), id));
}

json OperationSchema() {
    return Titled(SchemaOfNew(OperationProperties(Operation{})), "Operation");
}

json JobSchema() {
    return Titled(SchemaOfNew(JobProperties(SensorJobs::Job{})), "Job");
}

/// Calls `use(instance)` for each service. One that can't do it is left out.
template <class Use>
void ForEachService(VorControl::IControlManager& services, const Use& use) {
    for (const std::string& id : services.List()) {
        try {
            use(services.GetInstance(id));
        } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the others are described all the same
        }
    }
}

/// Calls `use(instance, id)` for the first register assembly of each service, which has the types of the others.
template <class Use>
void ForEachAssembly(VorControl::IControlManager& services, const Use& use) {
    ForEachService(services, [&](IControlInstance& instance) {
        if (!instance.HasRegisterAssemblyGroup()) {
            return;
        }
        const std::vector<std::string> ids = instance.RegisterAssemblyList();
        if (!ids.empty()) {
            use(instance, ids.front());
        }
    });
}

} // namespace

struct ResourceDescriptions::Row {
    const char* route;
    const char* tag;
    const char* one;
    const char* all;
    void (ResourceDescriptions::*add)(const std::string& route, Description& description);
};

const std::vector<ResourceDescriptions::Row>& ResourceDescriptions::Rows() {
    using Self = ResourceDescriptions;
    static const std::vector<Row> Table{
        {"/", "entry", "the entry, with links to all others", "", &Self::AddDocument},
        {"/healthz", "entry", "whether the sensor works", "", &Self::AddDocument},
        {"/openapi.json", "entry", "this description", "", nullptr},
        {"/metrics", "entry", "all figures, for Prometheus", "", nullptr},
        {"/sensor", "sensor", "the sensor as a whole", "", &Self::AddDocument},
        {"/sensor/problems", "sensor", "what is wrong at present", "", &Self::AddProblems},
        {"/sensor/log", "sensor", "the user's log", "", &Self::AddLog},
        {"/sensor/sources", "scan", "the data sources of the scan", "", &Self::AddDocument},
        {"/sensor/tools/:tool", "scan", "a tool with its limits", "the tools", &Self::AddTool},
        {"/sensor/scan", "scan", "the last frame", "", &Self::AddScan},
        {"/sensor/scan/history", "scan", "the values of the latest frames", "", &Self::AddScanHistory},
        {"/sensor/io", "scan", "the digital outputs", "", &Self::AddIo},
        {"/sensor/commands/:command", "sensor", "a command of the sensor", "the commands of the sensor",
         &Self::AddSensorCommands},
        {"/sensor/operations/:operation", "sensor", "an operation that a command has started", "the last operations",
         &Self::AddOperation},
        {"/sensor/jobs/:job", "jobs", "a job", "the jobs", &Self::AddJob},
        {"/sensor/jobs/:job/commands/:command", "jobs", "a command of a job", "the commands of a job",
         &Self::AddJobCommands},
        {"/sensor/jobs/:job/file", "jobs", "the file of a job", "", &Self::AddBytes},
        {"/sensor/jobs/loaded/changes", "jobs", "what differs between the loaded job and its file", "",
         &Self::AddJobChanges},
        {"/events/:stream", "events", "the topics of a stream", "the topics, or sends what happens as a stream",
         &Self::AddEvents},
        {Http::ProblemsRoute, "explanations", "a kind of refusal", "the kinds of refusals", &Self::AddExplanation},
        {Http::RelationsRoute, "explanations", "a relation",
         "the relations whose names begin with vor:", &Self::AddExplanation},
        {"/controlTypes", "services", "the types of service", "", &Self::AddServiceTypes},
        {"/controls/:protocol", "services", "a service", "the services", &Self::AddServices},
        {"/controls/:protocol/commands/:command", "services", "a command of a service", "the commands of a service",
         &Self::AddServiceCommands},
        {"/controls/:protocol/metrics", "services", "the figures of a service", "", &Self::AddMetrics},
        {"/controls/:protocol/outputs", "maps", "the output map of a service", "", &Self::AddOutputs},
        {"/controls/:protocol/outputs/commands/:command", "maps", "a command that edits an output map",
         "the commands that edit an output map", &Self::AddOutputCommands},
        {"/controls/:protocol/registerAssemblies/:registerAssembly", "maps", "a register assembly",
         "the register assemblies of a service", &Self::AddAssemblies},
        {"/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command", "maps",
         "a command that edits a register assembly", "the commands that edit a register assembly",
         &Self::AddAssemblyCommands},
        {"/controls/:protocol/availableDevices", "devices", "the devices that a service could use", "", nullptr},
        {"/controls/:protocol/devices/:device", "devices", "a device of a service", "the devices of a service",
         nullptr},
        {"/controls/:protocol/devices/:device/ports/:port", "devices", "a port of a device", "the ports of a device",
         nullptr},
        {"/controls/:protocol/devices/:device/ports/:port/commands/:command", "devices", "a command of a port",
         "the commands of a port", nullptr},
        {"/controls/:protocol/devices/:device/ports/:port/metrics", "devices", "the figures of a port", "", nullptr},
        {"/controls/:protocol/devices/:device/ports/:port/registerAssemblies/:registerAssembly", "devices",
         "a register assembly of a port", "the register assemblies of a port", nullptr},
        {"/controls/:protocol/devices/:device/ports/:port/registerAssemblies/:registerAssembly/commands/:command",
         "devices", "a command that edits a register assembly of a port",
         "the commands that edit a register assembly of a port", nullptr},
    };
    return Table;
}

const std::map<std::string, std::string>& ResourceDescriptions::Tags() {
    static const std::map<std::string, std::string> Texts{
        {"entry", "Where a client begins."},
        {"sensor", "The sensor: its state, its commands, what is wrong, its log."},
        {"scan", "What the sensor sees and measures."},
        {"jobs", "Files with the settings of the services."},
        {"events", "Streams of what happens."},
        {"explanations", "What refusals and relations mean."},
        {"services", "The services: their state, their parameters and their figures."},
        {"maps", "What clients of the services read where."},
        {"devices", "What a service drives: devices with digital outputs, and their ports."},
    };
    return Texts;
}

ResourceDescriptions::ResourceDescriptions(VorApi::ResourceRouter& router, const SensorEnviron& environ)
    : requests(router)
    , environ(environ) {}

Http::ResourceDescription ResourceDescriptions::Of(const std::string& route) {
    const auto row = std::ranges::find(Rows(), route, &Row::route);
    if (row == Rows().end()) {
        return {};
    }
    Description description{.tag = row->tag, .one = row->one, .all = row->all};
    if (row->add != nullptr) {
        (this->*row->add)(route, description);
    }
    return description;
}

std::vector<std::string> ResourceDescriptions::Known() {
    std::vector<std::string> routes;
    for (const Row& row : Rows()) {
        routes.emplace_back(row.route);
    }
    return routes;
}

json ResourceDescriptions::SchemaAt(const std::string& path) {
    VorApi::VorDataTree arguments;
    arguments["schema"].Set(true);
    return requests.Read(path, arguments, "").ToJson().at("_schema");
}

void ResourceDescriptions::AddDocument(const std::string& route, Description& description) {
    description.documents.push_back(SchemaAt(route));
}

void ResourceDescriptions::AddEvents(const std::string&, Description& description) {
    description.documents.push_back(SchemaAt("/events"));
    description.updates.push_back(SchemaOf(TopicsUpdate()));
    description.listQuery.push_back(
        {"topic", "A topic of the stream; perhaps several times.", ListSchema(TextSchema())});
    description.isListStream = true;
}

void ResourceDescriptions::AddProblems(const std::string& route, Description& description) {
    json schema = SchemaAt(route);
    schema["properties"]["items"]["items"] = SchemaOf(ListedProblemProperties());
    description.documents.push_back(std::move(schema));
}

void ResourceDescriptions::AddLog(const std::string& route, Description& description) {
    json schema = SchemaAt(route);
    schema["properties"]["items"]["items"] = SchemaOf(LogEntryProperties());
    description.documents.push_back(std::move(schema));
    description.query = {
        {"n", "At most so many entries.", NumberSchema(1, LogHistory::Capacity)},
        {"before", "Only entries with a lower number.", {{"type", "integer"}, {"minimum", 1}}},
        {"level",
         "Only entries of this level and more serious ones.",
         {{"type", "string"}, {"enum", {"info", "warning", "error"}}}},
        {"q", "Only entries with this text.", TextSchema()},
    };
}

void ResourceDescriptions::AddScan(const std::string&, Description& description) {
    description.documents.push_back(ScanDocuments::LastSchema());
    description.query = {
        {"points", "At most so many points of the profile, of a stream 2000.", NumberSchema(0, 10'000)},
        {"rate", "Of a stream: at most so many documents a second.", NumberSchema(1, 25)},
    };
}

void ResourceDescriptions::AddScanHistory(const std::string&, Description& description) {
    description.documents.push_back(ScanDocuments::HistorySchema());
    description.query = {
        {"n", "At most so many frames.", NumberSchema(1, Scan::ScanHistory::Capacity)},
        {"source", "A measurement; perhaps several times.", ListSchema(TextSchema())},
    };
}

void ResourceDescriptions::AddTool(const std::string&, Description& description) {
    for (const Tool& tool : environ.tools.All()) {
        const json schema = SchemaAt(ToolsResource::PathOf(tool.id));
        json changeable = json::object();
        for (const LimitMember& member : LimitMembers) {
            changeable[member.name] = schema.at("properties").at(member.name);
        }
        AddOnce(description.documents, Titled(schema, tool.displayName));
        AddOnce(description.updates, Titled(ObjectSchema(std::move(changeable)), tool.displayName));
    }
}

void ResourceDescriptions::AddIo(const std::string& route, Description& description) {
    AddDocument(route, description);
    description.query = {
        {"edges", "At most so many of the latest edges of each port.", NumberSchema(0, Io::OutputPort::MaxEdges)}};
}

void ResourceDescriptions::AddOperation(const std::string&, Description& description) {
    description.documents.push_back(OperationSchema());
}

void ResourceDescriptions::AddSensorCommands(const std::string&, Description& description) {
    AddCommandsAt("/sensor/commands", description);
    description.results.push_back(OperationSchema());
}

void ResourceDescriptions::AddJob(const std::string&, Description& description) {
    description.documents.push_back(JobSchema());
}

// The loaded job has all commands.
void ResourceDescriptions::AddJobCommands(const std::string&, Description& description) {
    const std::string loaded = Jobs::JobFormat::JobNameOf(environ.persistence.LoadedJob());
    AddCommandsAt(Path::Format("/sensor/jobs/:job/commands", {loaded}), description);
    description.results.push_back(JobSchema());
    description.results.push_back(OperationSchema());
}

void ResourceDescriptions::AddBytes(const std::string&, Description& description) {
    description.documents.push_back({{"type", "binary"}});
}

void ResourceDescriptions::AddJobChanges(const std::string&, Description& description) {
    description.documents.push_back(SchemaOfNew(JobChangesProperties(Jobs::JobChanges())));
}

void ResourceDescriptions::AddExplanation(const std::string& route, Description& description) {
    const auto explanations = route == Http::ProblemsRoute ? Http::ExplainProblems() : Http::ExplainRelations();
    description.documents.push_back(SchemaOf(*explanations.front().document));
}

void ResourceDescriptions::AddServiceTypes(const std::string&, Description& description) {
    const json type = SchemaOf(VorControl::Protocol::ProtocolTypesProperties());
    description.documents.push_back(ObjectSchema({{"items", ListSchema(type)}}));
}

void ResourceDescriptions::AddServices(const std::string& route, Description& description) {
    ForEachService(environ.services, [&](const IControlInstance& instance) {
        const json schema = SchemaAt(Path::Format(route, {instance.Id()}));
        json changeable = json::object();
        for (const char* const name : {"enabled", "parameters"}) {
            if (const auto& properties = schema.at("properties"); properties.contains(name)) {
                changeable[name] = properties.at(name);
            }
        }
        description.documents.push_back(Titled(schema, instance.DisplayName()));
        description.updates.push_back(Titled(ObjectSchema(std::move(changeable)), instance.DisplayName()));
    });
}

void ResourceDescriptions::AddServiceCommands(const std::string&, Description& description) {
    ForEachService(environ.services, [&](IControlInstance& instance) {
        if (const VorCommon::ICommandTarget* const target = instance.CommandTarget()) {
            AddCommands(*target, description);
        }
    });
}

void ResourceDescriptions::AddMetrics(const std::string& route, Description& description) {
    ForEachService(environ.services, [&](const IControlInstance& instance) {
        description.documents.push_back(Titled(SchemaAt(Path::Format(route, {instance.Id()})), instance.DisplayName()));
    });
}

// A map can be large; the arguments of its command "addAll" are an empty one.
void ResourceDescriptions::AddOutputs(const std::string&, Description& description) {
    ForEachService(environ.services, [&](const IControlInstance& instance) {
        if (instance.HasOutputsCommandTarget()) {
            const auto map = instance.OutputsCommandTarget().GetCommandParams("addAll");
            FillArrays(*map);
            AddOnce(description.documents, Titled(SchemaOf(*map), "Output Map"));
        }
    });
}

void ResourceDescriptions::AddOutputCommands(const std::string&, Description& description) {
    ForEachService(environ.services, [&](const IControlInstance& instance) {
        if (instance.HasOutputsCommandTarget()) {
            AddCommands(instance.OutputsCommandTarget(), description);
        }
    });
}

void ResourceDescriptions::AddAssemblies(const std::string&, Description& description) {
    ForEachAssembly(environ.services, [&](const IControlInstance& instance, const std::string& id) {
        const auto assembly = instance.RegisterAssembly(id.c_str());
        json schema = Titled(SchemaOf(assembly->Properties()), instance.DisplayName());
        json& properties = schema["properties"];
        properties["attributes"] = SchemaOf(assembly->Attributes());
        json types = json::array();
        std::map<std::string, json> blocks; // by type
        VorControl::ControlProtocol::AssemblyLock lock(*assembly);
        if (!assembly->SupportedRegisterBlockTypes().empty()) {
            types.push_back(SchemaOf(*assembly->SupportedRegisterBlockTypes().front()));
        }
        for (const auto& block : assembly->AddedRegisterBlocks()) {
            if (!blocks.contains(block->Type())) {
                blocks.emplace(block->Type(), Titled(SchemaOf(*block), block->Type()));
            }
        }
        lock.Unlock();
        properties["supportedBlockTypes"] = ListSchema(std::move(types));
        properties["blocks"] = {{"type", "array"}};
        for (auto& [type, block] : blocks) {
            properties["blocks"]["items"]["anyOf"].push_back(std::move(block));
        }
        description.documents.push_back(std::move(schema));
    });
}

void ResourceDescriptions::AddAssemblyCommands(const std::string&, Description& description) {
    ForEachAssembly(environ.services, [&](const IControlInstance& instance, const std::string& id) {
        AddCommands(instance.RegisterAssemblyCommandTarget(id.c_str()), description);
    });
}

void ResourceDescriptions::AddCommandsAt(const std::string& path, Description& description) {
    VorRest::Request request{.path = path};
    requests.Run(request, [&](const VorRest::Answer& answer) {
        for (const auto& relation : answer.relations) {
            const json parameters = SchemaAt(relation.path).at("properties").at("parameters");
            AddCommand(std::string(Path::Split(relation.path).back()), parameters, description);
        }
    });
}

void ResourceDescriptions::AddCommands(const VorCommon::ICommandTarget& target, Description& description) {
    for (const VorCommon::CommandInfo& command : target.ListCommands()) {
        const auto parameters = target.GetCommandParams(command.Id());
        FillArrays(*parameters);
        AddCommand(command.Id(), SchemaOf(*parameters), description);
    }
}

} // namespace Sensor::Resources
