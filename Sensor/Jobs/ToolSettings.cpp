#include "Sensor/Jobs/ToolSettings.h"

#include "Sensor/DataSources.h"
#include "Sensor/Jobs/ListedNames.h"
#include "Sensor/Jobs/ToolsEntry.h"
#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/ResultSetMaker.h"
#include "Sensor/StartError.h"
#include "Sensor/ToolLimits.h"
#include "Vor/DocumentErrors.h"
#include "Vor/Exception.h"
#include "Vor/JsonText.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace Sensor::Jobs {

namespace {

constexpr std::string_view Prefix = "tool.";

std::vector<std::string> ToolsOfProfiles() {
    std::vector<std::string> tools;
    for (const std::string& source : Scan::ResultSetMaker::DataSources({})) {
        if (std::string tool = ToolOf(source); !tool.empty()) {
            tools.push_back(std::move(tool));
        }
    }
    return tools;
}

/// Whether some input has it.
bool IsTool(const std::string& tool) {
    const std::string ofValues = "values-";
    if (tool.starts_with(ofValues)) {
        const std::string name = tool.substr(ofValues.size());
        return !name.empty() && ToolOf("values/" + name) == tool;
    }
    const auto ofProfiles = ToolsOfProfiles();
    return std::ranges::find(ofProfiles, tool) != ofProfiles.end();
}

} // namespace

ToolSettings::ToolSettings(std::string command)
    : command(std::move(command)) {}

bool ToolSettings::Has(const std::string& text) {
    return text.starts_with(Prefix);
}

// A limit has no dot and a value no equals sign; a tool may have both.
void ToolSettings::Add(const std::string& text) {
    const auto refuse = [&](const std::string& reason) {
        throw StartError(command + " " + text + ": " + reason + ".");
    };
    const std::size_t equals = text.rfind('=');
    const std::size_t dot = equals == std::string::npos ? equals : text.rfind('.', equals);
    if (dot == std::string::npos || dot <= Prefix.size() || dot + 1 == equals) {
        refuse("expected tool.TOOL.LIMIT=VALUE");
    }
    const std::string tool = text.substr(Prefix.size(), dot - Prefix.size());
    const std::string limit = text.substr(dot + 1, equals - dot - 1);
    if (!IsTool(tool)) {
        refuse("there is no tool \"" + tool + "\". Expected one of: " + Listed(ToolsOfProfiles()) +
               "; recordings of named values have values-NAME");
    }
    if (std::ranges::none_of(LimitMembers, [&](const LimitMember& member) { return member.name == limit; })) {
        refuse("a tool has no limit \"" + limit + "\". Expected low or high");
    }
    try {
        changes[tool][limit] = Vor::ParseJson(text.substr(equals + 1));
    } catch (const Vor::Exception&) {
        refuse("the value isn't a number");
    }
}

void ToolSettings::Apply(VorCommon::IPersistStore& store) const {
    if (changes.empty()) {
        return;
    }
    ToolsEntry entry = ToolsEntry::Read(store);
    for (const auto& [tool, change] : changes) {
        ToolLimits limits = entry.LimitsOf(tool);
        Vor::DocumentErrors errors;
        ChangeLimits(limits, change, "", errors);
        try {
            errors.ThrowIfAny();
        } catch (const Vor::Exception& e) {
            throw StartError(command + " tool." + tool + ": " + e.what());
        }
        entry.SetLimits(tool, limits);
    }
    entry.Write(store);
}

} // namespace Sensor::Jobs
