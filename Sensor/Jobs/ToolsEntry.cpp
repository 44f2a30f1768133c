#include "Sensor/Jobs/ToolsEntry.h"

#include "Sensor/Jobs/JobFormat.h"
#include "Vor/DocumentErrors.h"
#include "Vor/Exception.h"
#include "VorCommon/IPersistStore.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <utility>

namespace Sensor::Jobs {

namespace {

using nlohmann::json;

constexpr const char* VersionKey = "version";
constexpr const char* Version = "1";

[[noreturn]] void Refuse(const std::string& reason) {
    Vor::Throw(yERROR_FORMAT, "Entry '%s': %s", ToolsEntry::Name, reason);
}

bool IsLimit(const std::string& name) {
    return std::ranges::any_of(LimitMembers, [&](const LimitMember& member) { return member.name == name; });
}

} // namespace

ToolsEntry::ToolsEntry()
    : document{{VersionKey, Version}, {ToolsKey, json::object()}} {}

ToolsEntry ToolsEntry::Read(const VorCommon::IPersistStore& store) {
    ToolsEntry entry;
    if (!store.Exists(Path)) {
        return entry;
    }
    try {
        entry.document = JobFormat::Read(store, Path);
    } catch (const Vor::Exception& e) {
        Refuse(e.what());
    }
    if (!entry.document.is_object()) {
        Refuse("expected an object with a version and tools.");
    }
    if (entry.document.value(VersionKey, json()) != Version) {
        Refuse(std::string(VersionKey) + ": expected the text \"" + Version + "\".");
    }
    if (!entry.document.value(ToolsKey, json()).is_object()) {
        Refuse(std::string(ToolsKey) + ": expected an object with the tools that have limits.");
    }
    return entry;
}

const json& ToolsEntry::Tools() const {
    return document.at(ToolsKey);
}

ToolLimits ToolsEntry::LimitsOf(const std::string& tool) const {
    ToolLimits limits;
    const auto found = Tools().find(tool);
    if (found == Tools().end()) {
        return limits;
    }
    const json::json_pointer place = json::json_pointer() / ToolsKey / tool;
    Vor::DocumentErrors errors;
    ChangeLimits(limits, *found, place.to_string(), errors);
    try {
        errors.ThrowIfAny();
    } catch (const Vor::Exception& e) {
        Refuse(e.what());
    }
    for (const auto& member : found->items()) {
        if (!IsLimit(member.key())) {
            Refuse((place / member.key()).to_string().substr(1) + ": expected no other member than low and high.");
        }
    }
    return limits;
}

void ToolsEntry::SetLimits(const std::string& tool, const ToolLimits& limits) {
    json& tools = document.at(ToolsKey);
    ToolLimits before;
    try {
        before = LimitsOf(tool);
    } catch (const Vor::Exception&) {
        tools.erase(tool);
    }
    if (limits == before) {
        return;
    }
    json entry = tools.value(tool, json::object());
    const ToolLimits defaults;
    for (const LimitMember& member : LimitMembers) {
        const double value = limits.*member.value;
        if (value == before.*member.value) {
            continue;
        }
        if (value == defaults.*member.value) {
            entry.erase(member.name);
        } else {
            entry[member.name] = value;
        }
    }
    if (entry.empty()) {
        tools.erase(tool);
    } else {
        tools[tool] = std::move(entry);
    }
}

void ToolsEntry::Write(VorCommon::IPersistStore& store) const {
    if (!Tools().empty() || store.Exists(Path)) {
        JobFormat::Write(store, Path, document);
    }
}

} // namespace Sensor::Jobs
