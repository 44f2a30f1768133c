#include "Sensor/SensorTools.h"

#include "Sensor/Jobs/ToolsEntry.h"
#include "Sensor/PrintableText.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorCommon/IPersistRegistrar.h"
#include "VorCommon/IPersistStore.h"
#include "VorPipe/PipeOutput.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <exception>
#include <set>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

namespace Sensor {

using VorCommon::PersistDomain;

namespace {

constexpr const char* LogTitle = "VorSensor";
constexpr std::size_t MaxNamed = 10;    ///< unknown tools in one entry of the log
constexpr std::size_t MaxNameSize = 80; ///< bytes

} // namespace

SensorTools::SensorTools(const Scan::Recording& recording, Apply apply, VorCommon::IPersistRegistrar& registrar)
    : apply(std::move(apply))
    , registrar(registrar) {
    for (const VorPipe::PipeOutput& output : DataSourcesOf(recording)) {
        if (std::string id = ToolOf(output.name); !id.empty()) {
            tools.push_back({.id = std::move(id),
                             .source = output.name,
                             .displayName = output.displayName,
                             .unit = UnitOf(output.name)});
            places.push_back(sourceCount);
        }
        ++sourceCount;
    }
    handler = registrar.Register(*this, "");
}

SensorTools::~SensorTools() {
    Vor::CleanUp([this] { registrar.Deregister(handler); });
}

const Tool* SensorTools::Find(const std::string& id) const {
    const auto found = std::ranges::find(tools, id, &Tool::id);
    return found == tools.end() ? nullptr : &*found;
}

void SensorTools::SetLimits(const std::string& id, const ToolLimits& limits) {
    const auto tool = std::ranges::find(tools, id, &Tool::id);
    if (tool == tools.end()) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no tool '%s'.", id);
    }
    if (tool->limits == limits) {
        return;
    }
    tool->limits = limits;
    ++tool->revision;
    ApplyLimits();
    registrar.Announce(*this, PersistDomain::Job, 0);
    changedEvent.Raise(tool->id);
}

void SensorTools::InitPersistDomain(PersistDomain domain, VorCommon::IPersistStore&) {
    if (domain == PersistDomain::Job) {
        SetAll(std::vector<ToolLimits>(tools.size()));
    }
}

void SensorTools::LoadPersistDomain(PersistDomain domain, const VorCommon::IPersistStore& store) {
    if (domain != PersistDomain::Job) {
        return;
    }
    std::vector<ToolLimits> limits(tools.size());
    try {
        limits = Loaded(store);
    } catch (const std::exception& e) {
        Vor::LogUser(Vor::UserError, LogTitle, "The limits of the tools weren't loaded, so every value is accepted. %s",
                     e.what());
        registrar.Announce(*this, domain, 0);
    }
    SetAll(limits);
}

std::vector<ToolLimits> SensorTools::Loaded(const VorCommon::IPersistStore& store) const {
    const Jobs::ToolsEntry entry = Jobs::ToolsEntry::Read(store);
    std::vector<ToolLimits> limits;
    limits.reserve(tools.size());
    for (const Tool& tool : tools) {
        limits.push_back(entry.LimitsOf(tool.id));
    }
    ReportUnknown(entry);
    return limits;
}

void SensorTools::ReportUnknown(const Jobs::ToolsEntry& entry) const {
    std::set<std::string_view> known;
    for (const Tool& tool : tools) {
        known.insert(tool.id);
    }
    std::string names;
    std::size_t count = 0;
    for (const auto& item : entry.Tools().items()) {
        if (!known.contains(item.key()) && ++count <= MaxNamed) {
            names += (names.empty() ? "" : ", ") + AbridgedText(item.key(), MaxNameSize);
        }
    }
    if (count > MaxNamed) {
        names += " and " + std::to_string(count - MaxNamed) + " more";
    }
    if (count > 0) {
        Vor::LogUser(Vor::UserWarning, LogTitle,
                     "The job has limits of tools that the sensor doesn't have, and keeps them: %s.", names);
    }
}

void SensorTools::SavePersistDomain(PersistDomain domain, VorCommon::IPersistStore& store) {
    if (domain != PersistDomain::Job) {
        return;
    }
    Jobs::ToolsEntry entry;
    try {
        entry = Jobs::ToolsEntry::Read(store);
    } catch (const Vor::Exception&) {
        entry = Jobs::ToolsEntry(); // what can't be read is replaced
    }
    for (const Tool& tool : tools) {
        entry.SetLimits(tool.id, tool.limits);
    }
    entry.Write(store);
}

void SensorTools::SetAll(const std::vector<ToolLimits>& limits) {
    bool hasChanged = false;
    for (std::size_t i = 0; i < tools.size(); ++i) {
        if (tools[i].limits != limits[i]) {
            tools[i].limits = limits[i];
            ++tools[i].revision;
            hasChanged = true;
        }
    }
    if (hasChanged) {
        ApplyLimits();
        changedEvent.RaiseToAll("");
    }
}

void SensorTools::ApplyLimits() const {
    std::vector<Scan::Limits> limits(sourceCount);
    for (std::size_t i = 0; i < tools.size(); ++i) {
        limits[places[i]] = tools[i].limits.ForDecision();
    }
    apply(std::move(limits));
}

} // namespace Sensor
