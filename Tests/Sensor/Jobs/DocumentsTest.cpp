// The tables of the documents agree with what the services themselves report.

#include "Sensor/Jobs/OfflineServices.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/MarkdownTable.h"
#include "Tests/Support/ServiceProperties.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/JsonSerializer.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ICommandTarget.h"
#include "VorCommon/IMetricsSource.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorPlugin/PluginManager.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Jobs {
namespace {

using nlohmann::json;
using Tests::MarkdownCells;
using Tests::MarkdownTable;
using Tests::WithoutTicks;
using Vor::Properties::JsonSerializer;

constexpr const char* AssemblyId = "registerAssembly-0";

/// Service, page.
class Documents : public ::testing::TestWithParam<std::pair<const char*, const char*>> {
protected:
    Documents() {
        plugins.LoadFolder(Tests::BuiltFile("plugins"));
        services.emplace(plugins);
    }

    static std::set<std::string> Names(const std::map<std::string, MarkdownCells>& rows) {
        std::set<std::string> names;
        for (const auto& row : rows) {
            names.insert(row.first);
        }
        return names;
    }
    static std::set<std::string> Names(const json& object) {
        std::set<std::string> names;
        for (const auto& item : object.items()) {
            names.insert(item.key());
        }
        return names;
    }

    VorControl::IControlInstance& Service() { return services->Get(GetParam().first); }
    static std::string Page() { return GetParam().second; }

    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    VorPlugin::PluginManager plugins;
    std::optional<OfflineServices> services;
};

TEST_P(Documents, ListTheParametersWithTheirDefaultsAndRanges) {
    const json values = JsonSerializer::Serialize(*Service().Params());
    const json schema = JsonSerializer::SerializeSchema(*Service().Params()).at("properties");
    const auto rows = MarkdownTable(Page(), {"Name", "Default"});
    EXPECT_EQ(Names(rows), Names(values));
    for (const auto& [name, cells] : rows) {
        const std::string text = WithoutTicks(cells.at(1));
        const json shown = json::parse(text, nullptr, false);
        EXPECT_TRUE(shown == values.at(name) || json(text) == values.at(name))
            << name << ": " << text << ", but it is " << values.at(name);
        std::string rest;
        for (std::size_t i = 2; i < cells.size(); ++i) {
            rest += cells[i] + " ";
        }
        const json& keywords = schema.at(name);
        if (keywords.contains("maximum")) {
            const std::string range = keywords.at("minimum").dump() + " to " + keywords.at("maximum").dump();
            EXPECT_NE(rest.find(range), std::string::npos) << name << ": " << range << " isn't in " << rest;
        }
        for (const json& option : keywords.value("enum", json::array())) {
            EXPECT_NE(rest.find(option.is_string() ? option.get<std::string>() : option.dump()), std::string::npos)
                << name << ": " << option << " isn't in " << rest;
        }
    }
}

TEST_P(Documents, ListThePropertiesAndTheStatuses) {
    auto rows = MarkdownTable(Page(), {"Name", "Content"});
    rows.erase("latency"); // a metric only, as the page says
    EXPECT_EQ(Names(rows), Names(Tests::PropertiesOf(Service())));
    Service().NonPersistentPropertiesBeginLock();
    const json status = JsonSerializer::SerializeSchema(Service().Properties()).at("properties").at("status");
    Service().NonPersistentPropertiesEndLock();
    ASSERT_EQ(status.at("enum").size(), 6U);
    for (std::size_t i = 0; i < status.at("enum").size(); ++i) {
        std::string text = status.at("enum")[i].dump() + " " + status.at("enumText")[i].get<std::string>();
        std::transform(text.begin(), text.end(), text.begin(),
                       [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
        EXPECT_NE(rows.at("status").at(1).find(text), std::string::npos) << text;
    }
}

TEST_P(Documents, ListTheMetrics) {
    auto rows = MarkdownTable(Page(), {"Name", "Content"});
    if (auto dropped = rows.extract("dropped")) { // the one that has another name, as the page says
        dropped.key() = "dropCount";
        rows.insert(std::move(dropped));
    }
    std::set<std::string> figures = Names(rows);
    for (const char* const other : {"status", "address", "failure"}) {
        figures.erase(other);
    }
    EXPECT_EQ(Names(JsonSerializer::Serialize(Service().MetricsSource().GetMetrics())), figures);
}

TEST_P(Documents, ListTheTypesOfBlocks) {
    auto rows = MarkdownTable(Page(), {"Type", "Registers"});
    const bool hasRegisters = !rows.empty();
    if (!hasRegisters) {
        rows = MarkdownTable(Page(), {"Type of block"});
    }
    std::set<std::string> types;
    const auto assembly = Service().RegisterAssembly(AssemblyId);
    const VorControl::ControlProtocol::AssemblyLock lock(*assembly);
    for (const auto& type : assembly->SupportedRegisterBlockTypes()) {
        types.insert(type->Type());
        if (hasRegisters && rows.contains(type->Type())) {
            const std::string count = std::to_string(type->DefaultRegisterCount());
            EXPECT_EQ(rows.at(type->Type()).at(1).find(count), 0U) << type->Type() << " has " << count;
        }
    }
    EXPECT_EQ(Names(rows), types);
}

TEST_P(Documents, NameTheCommandsThatEditMaps) {
    const std::string page = Tests::ReadWholeFile(Tests::SourceFile("README.md"));
    VorCommon::ICommandTarget& target = Service().HasOutputsCommandTarget()
                                            ? Service().OutputsCommandTarget()
                                            : Service().RegisterAssemblyCommandTarget(AssemblyId);
    ASSERT_FALSE(target.ListCommands().empty());
    for (const VorCommon::CommandInfo& command : target.ListCommands()) {
        EXPECT_TRUE(page.find("`" + command.Id() + "`") != std::string::npos ||
                    page.find("jobs edit second modbus " + command.Id()) != std::string::npos)
            << command.Id();
    }
}

INSTANTIATE_TEST_SUITE_P(EachService, Documents,
                         ::testing::Values(std::pair("modbus", "Docs/modbus.md"), std::pair("ascii", "Docs/ascii.md")),
                         [](const auto& service) { return std::string(service.param.first); });

} // namespace
} // namespace Sensor::Jobs
