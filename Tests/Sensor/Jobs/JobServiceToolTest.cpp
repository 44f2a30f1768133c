#include "Sensor/Jobs/JobServiceTool.h"

#include "Sensor/StartError.h"
#include "Tests/Sensor/Jobs/MadeDemoJobs.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ArchiveFile.h"

#include <initializer_list>
#include <memory>
#include <sstream>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Jobs {
namespace {

using nlohmann::json;
using VorCommon::ArchiveFile;
using Action = JobCommand::Action;

/// A data folder with the job "demo", and the real services.
class JobServiceToolTest : public ::testing::Test {
protected:
    JobServiceToolTest() {
        const Vor::MainLoop loop(Vor::MainLoop::Mode::Manual);
        MadeDemoJobs().Write("demo", PathOf("demo"));
    }

    std::string PathOf(const std::string& name) const { return data.File("jobs/" + name + ".vrjob"); }

    std::string Run(const JobCommand& command, const std::string& plugins = Tests::BuiltFile("plugins")) {
        std::ostringstream out;
        notes.str("");
        JobServiceTool(data.Path(), {plugins}, out, notes).Run(command);
        return out.str();
    }
    std::string Refusal(const JobCommand& command) {
        try {
            return "(done) " + Run(command);
        } catch (const StartError& error) {
            return error.what();
        }
    }
    static JobCommand Set(const std::vector<std::string>& settings) {
        return {.action = Action::Set, .name = "demo", .settings = settings};
    }
    static JobCommand Map(const std::string& format = "table", const std::string& name = "demo") {
        return {.action = Action::Map, .name = name, .serviceId = "modbus", .format = format};
    }
    static JobCommand Edit(const std::string& command, const std::string& document, const std::string& name = "demo") {
        return {.action = Action::Edit, .name = name, .serviceId = "modbus", .edit = command, .document = document};
    }
    json StoredEntry(const std::string& entry) const {
        const auto bytes = ArchiveFile(PathOf("demo")).Read().at(entry);
        return json::parse(bytes->begin(), bytes->end());
    }
    json Stored(const std::string& service = "modbus") const {
        return StoredEntry("controls/" + service + "/config.json");
    }
    void StoreTools(const std::string& text) const {
        ArchiveFile(PathOf("demo"))
            .Write(
                {{"sensor/tools.json", std::make_shared<const std::vector<unsigned char>>(text.begin(), text.end())}});
    }

    Tests::TempFolder data;
    std::ostringstream notes;
};

TEST_F(JobServiceToolTest, ShowsTheMapAsATable) {
    EXPECT_EQ(Run(Map()), "Register Assembly 0 (registerAssembly-0)\n"
                          "Address  Registers  Type           Data Source     Name\n"
                          "0        3          Measurement    profile/max     Maximum Height\n"
                          "3        3          Measurement    profile/min     Minimum Height\n"
                          "6        3          Measurement    profile/mean    Mean Height\n"
                          "9        3          Measurement    profile/width   Width\n"
                          "12       3          Measurement    profile/points  Number of Points\n"
                          "16       18         Stamp          profile/stamp   Stamp\n"
                          "40       16         String         profile/text    Text\n"
                          "1000     65         ControlInput                   Command Input\n"
                          "1100     3          ControlOutput                  Command Output\n"
                          "1200     40         System                         System State\n"
                          "1300     10         Scanner                        Sensor Group State\n"
                          "1400     12         Diagnostics                    Diagnostics\n");
    EXPECT_EQ(notes.str(), "");
}

TEST_F(JobServiceToolTest, ShowsTheMapToPrograms) {
    const std::string csv = Run(Map("csv"));
    EXPECT_EQ(csv.find("assembly,outputId,registerCount,type,dataSource,displayName\r\n"
                       "registerAssembly-0,0,3,Measurement,profile/max,Maximum Height\r\n"),
              0U)
        << csv;
    const json document = json::parse(Run(Map("json")));
    EXPECT_EQ(document.at("service"), "modbus");
    EXPECT_EQ(document.at("assemblies").at(0).at("blocks"),
              Stored()["vor:control"]["registerAssemblyList"][0]["blocks"]);
    EXPECT_FALSE(document.contains("outputs"));
}

TEST_F(JobServiceToolTest, AnEditChangesTheMapAndNothingElse) {
    json expected = Stored();
    EXPECT_EQ(Run(Edit("update", R"({"outputId":0,"newParams":{"outputId":100}})")), "Edited " + PathOf("demo") + "\n");
    json& blocks = expected["vor:control"]["registerAssemblyList"][0]["blocks"];
    json moved = blocks[0];
    moved["outputId"] = 100;
    blocks.erase(0);
    blocks.insert(blocks.begin() + 6, moved);
    EXPECT_EQ(Stored(), expected);
}

TEST_F(JobServiceToolTest, TellsThatAnEditHasChangedNothing) {
    const std::string before = Tests::ReadWholeFile(PathOf("demo"));
    for (const char* command : {"add", "remove"}) {
        EXPECT_EQ(Run(Edit(command, "{}")), "Nothing was changed in " + PathOf("demo") + "\n") << command;
    }
    EXPECT_EQ(Run(Edit("update", R"({"outputId":0,"newParams":{"outputId":0}})")),
              "Nothing was changed in " + PathOf("demo") + "\n");
    EXPECT_EQ(Tests::ReadWholeFile(PathOf("demo")), before);
    EXPECT_EQ(Run(Edit("removeAll", "{}")), "Edited " + PathOf("demo") + "\n");
    EXPECT_EQ(Run(Edit("removeAll", "{}")), "Nothing was changed in " + PathOf("demo") + "\n");
}

TEST_F(JobServiceToolTest, WarnsOfADataSourceThatNoInputHas) {
    const std::string list = "profile/max, profile/min, profile/mean, profile/width, profile/points, profile/text, "
                             "profile/stamp; recordings of named values have values/NAME.\n";
    Run(Edit("add", R"({"blocks":[{"type":"Measurement","dataSource":"profile/maxx"}]})"));
    EXPECT_EQ(notes.str(), "Warning: no input has the data source 'profile/maxx'. Profiles have " + list);
    Run(Edit("add", R"({"blocks":[{"type":"Measurement","dataSource":"values/gap"}]})"));
    EXPECT_EQ(notes.str(), "") << "each edit names its own sources";
    JobCommand output = Edit("addAll", R"({"map":[{"outputId":"x","source":"nothing"}]})");
    output.serviceId = "ascii";
    output.outputs = true;
    Run(output);
    EXPECT_EQ(notes.str(), "Warning: no input has the data source 'nothing'. Profiles have " + list);
}

TEST_F(JobServiceToolTest, SetsLimitsOfTools) {
    const json modbus = Stored();
    EXPECT_EQ(Run(Set({"tool.profile-max.high=10.25", "tool.values-a.b=c.low=-1e-3", "tool.profile-max.low=1",
                       "modbus.idleTimeout=30"})),
              "Changed " + PathOf("demo") + "\n");
    EXPECT_EQ(StoredEntry("sensor/tools.json"),
              (json{{"version", "1"},
                    {"tools", {{"profile-max", {{"low", 1}, {"high", 10.25}}}, {"values-a.b=c", {{"low", -0.001}}}}}}));
    EXPECT_EQ(Stored()["vor:control"]["parameters"]["idleTimeout"], 30);
    Run(Set({"tool.profile-max.low=-1000000000"}));
    EXPECT_EQ(StoredEntry("sensor/tools.json").at("tools").at("profile-max"), (json{{"high", 10.25}}));
}

TEST_F(JobServiceToolTest, LimitsBelongTogether) {
    const std::string before = Tests::ReadWholeFile(PathOf("demo"));
    EXPECT_EQ(Refusal(Set({"tool.profile-max.low=5", "tool.profile-max.high=4", "modbus.idleTimeout=30"})),
              "jobs set demo tool.profile-max: low: expected at most 4.0, which is high, but got 5.0.");
    EXPECT_EQ(Tests::ReadWholeFile(PathOf("demo")), before);
    Run(Set({"tool.profile-max.low=5", "tool.profile-max.high=6"}));
    EXPECT_EQ(Refusal(Set({"tool.profile-max.high=4"})),
              "jobs set demo tool.profile-max: high: expected at least 5.0, which is low, but got 4.0.");
    Run(Set({"tool.profile-max.high=9", "tool.profile-max.low=8"}));
    EXPECT_EQ(StoredEntry("sensor/tools.json").at("tools").at("profile-max"), (json{{"low", 8}, {"high", 9}}));
}

TEST_F(JobServiceToolTest, RefusesWhatIsNoLimitOfATool) {
    const std::string before = Tests::ReadWholeFile(PathOf("demo"));
    const std::string tools =
        " Expected one of: profile-max, profile-min, profile-mean, profile-width, profile-points; "
        "recordings of named values have values-NAME.";
    for (const auto& [text, reason] : std::initializer_list<std::pair<std::string, std::string>>{
             {"tool.profile-max", " tool.profile-max: expected tool.TOOL.LIMIT=VALUE."},
             {"tool.profile-max=1", " tool.profile-max=1: expected tool.TOOL.LIMIT=VALUE."},
             {"tool..low=1", " tool..low=1: expected tool.TOOL.LIMIT=VALUE."},
             {"tool.profile-max.=1", " tool.profile-max.=1: expected tool.TOOL.LIMIT=VALUE."},
             {"tool.max.low=1", " tool.max.low=1: there is no tool \"max\"." + tools},
             {"tool.profile-text.low=1", " tool.profile-text.low=1: there is no tool \"profile-text\"." + tools},
             {"tool.values-.low=1", " tool.values-.low=1: there is no tool \"values-\"." + tools},
             {"tool.values-stamp.low=1", " tool.values-stamp.low=1: there is no tool \"values-stamp\"." + tools},
             {"tool.profile-max.least=1",
              " tool.profile-max.least=1: a tool has no limit \"least\". Expected low or high."},
             {"tool.profile-max.low=", " tool.profile-max.low=: the value isn't a number."},
             {"tool.profile-max.low=x", " tool.profile-max.low=x: the value isn't a number."},
             {"tool.profile-max.low=true",
              " tool.profile-max: low: expected a number from -1000000000 to 1000000000 but got a boolean."},
             {"tool.profile-max.low=1e10",
              " tool.profile-max: low: expected a number from -1000000000 to 1000000000 but got 10000000000.0."}}) {
        EXPECT_EQ(Refusal(Set({text})), "jobs set demo" + reason);
    }
    EXPECT_EQ(Tests::ReadWholeFile(PathOf("demo")), before);
}

TEST_F(JobServiceToolTest, LimitsThatCannotBeReadStayAndAreNamed) {
    StoreTools(R"({"version":"1","tools":{"profile-max":{"low":"x"},"profile-new":7}})");
    EXPECT_EQ(Refusal(Set({"tool.profile-max.high=4"})),
              "jobs set demo: Entry 'sensor/tools.json': tools/profile-max/low: expected a number from -1000000000 to "
              "1000000000 but got a string.");
    EXPECT_EQ(Run(Set({"tool.profile-min.high=4", "modbus.idleTimeout=30"})), "Changed " + PathOf("demo") + "\n");
    EXPECT_EQ(StoredEntry("sensor/tools.json").at("tools"),
              (json{{"profile-max", {{"low", "x"}}}, {"profile-min", {{"high", 4}}}, {"profile-new", 7}}));
}

TEST_F(JobServiceToolTest, TakesATextInQuotationMarksAsInJson) {
    for (const auto& [text, value] : {std::pair<std::string, std::string>(R"("\r\n")", "\r\n"),
                                      {R"("\n")", "\n"},
                                      {R"("\u0003")", "\x03"},
                                      {R"("\u007f")", "\x7f"},
                                      {"\r", "\r"}}) {
        EXPECT_EQ(Run(Set({"ascii.terminator=" + text})), "Changed " + PathOf("demo") + "\n") << text;
        EXPECT_EQ(Stored("ascii")["vor:control"]["parameters"]["terminator"], value);
    }
    EXPECT_EQ(Refusal(Set({R"(ascii.terminator="\x")"})),
              R"(jobs set demo ascii.terminator="\x": ""\x"" is no value of parameter "terminator", )"
              "which is a text, or one in quotation marks as in JSON.");
    EXPECT_NE(Refusal(Set({R"(ascii.terminator="\t")"})).find("control characters of ASCII"), std::string::npos);
}

TEST_F(JobServiceToolTest, TellsWhatIsWrongWithAnEdit) {
    const json before = Stored();
    const std::string head = "jobs edit demo modbus add: ";
    EXPECT_EQ(Refusal(Edit("add", "{")).find(head + "Line 1, column 2: "), 0U) << Refusal(Edit("add", "{"));
    EXPECT_EQ(Refusal(Edit("add", R"({"blocks":[{"type":"Nothing"}]})")).find(head + "No data sources were added. "),
              0U)
        << Refusal(Edit("add", R"({"blocks":[{"type":"Nothing"}]})"));
    EXPECT_EQ(Refusal(Edit("burn", "{}")), "jobs edit demo modbus burn: there is no command 'burn'. Expected one of: "
                                           "add, remove, removeAll, compact, update.");
    EXPECT_EQ(Stored(), before);
}

TEST_F(JobServiceToolTest, TellsWhatIsNotThere) {
    EXPECT_EQ(Refusal(Map("table", "gone"))
                  .find("jobs map gone modbus: Archive '" + PathOf("gone") + "': there is no such file."),
              0U)
        << Refusal(Map("table", "gone"));
    EXPECT_EQ(Refusal(Map("table", "../demo")).find("jobs map ../demo modbus: '../demo' is not a job name"), 0U);
    JobCommand unknown = Map();
    unknown.serviceId = "abacus";
    EXPECT_EQ(Refusal(unknown).find("jobs map demo abacus: there is no service 'abacus'. Expected one of: "), 0U)
        << Refusal(unknown);
    EXPECT_NE(Refusal(unknown).find("modbus"), std::string::npos);
    std::ostringstream out;
    EXPECT_THROW(Run(Map(), data.File("no plugins")), StartError);
}

TEST_F(JobServiceToolTest, SetsParametersOfSeveralServices) {
    json modbus = Stored();
    json ascii = Stored("ascii");
    EXPECT_EQ(Run(Set({"modbus.port=5020", "ascii.delimiter=;", "modbus.idleTimeout=5"})),
              "Changed " + PathOf("demo") + "\n");
    json& changed = modbus["vor:control"]["parameters"];
    changed["port"] = 5020;
    changed["idleTimeout"] = 5;
    EXPECT_EQ(Stored()["vor:control"], modbus["vor:control"]);
    EXPECT_EQ(Stored("ascii")["vor:control"]["parameters"]["delimiter"], ";");
    EXPECT_EQ(Stored("ascii")["vor:control"]["outputs"], ascii["vor:control"]["outputs"]);
}

TEST_F(JobServiceToolTest, SetsAllOrNothing) {
    const json before = Stored();
    EXPECT_EQ(Refusal(Set({"modbus.port=5020", "ascii.port=x"})),
              "jobs set demo ascii.port=x: \"x\" is no value of parameter \"port\", which is a number.");
    EXPECT_EQ(Refusal(Set({"modbus.port"})), "jobs set demo modbus.port: expected SERVICE.PARAMETER=VALUE.");
    EXPECT_EQ(Refusal(Set({"modbus.nothing=1"}))
                  .find("jobs set demo modbus.nothing=1: service \"modbus\" has no "
                        "parameter \"nothing\", known: address, "),
              0U);
    EXPECT_EQ(Refusal(Set({"abacus.port=1"})).find("jobs set demo: there is no service 'abacus'. Expected one of: "),
              0U);
    EXPECT_EQ(Stored(), before);
}

TEST_F(JobServiceToolTest, EnablesAndDisablesAService) {
    json expected = Stored();
    EXPECT_EQ(Run({.action = Action::Disable, .name = "demo", .serviceId = "modbus"}),
              "Disabled modbus in " + PathOf("demo") + "\n");
    expected["vor:control"]["enabled"] = false;
    EXPECT_EQ(Stored(), expected);
    EXPECT_EQ(Run({.action = Action::Enable, .name = "demo", .serviceId = "modbus"}),
              "Enabled modbus in " + PathOf("demo") + "\n");
    expected["vor:control"]["enabled"] = true;
    EXPECT_EQ(Stored(), expected);
}

TEST_F(JobServiceToolTest, AServiceWithoutAProviderGetsBlocksSettingsAndItsStart) {
    const std::string examples = Tests::BuiltFile("examples");
    JobCommand edit = Edit("add", R"({"blocks":[{"type":"MeasurementValue","dataSource":"profile/max"}]})");
    edit.serviceId = "sample";
    EXPECT_EQ(Run(edit, examples), "Edited " + PathOf("demo") + "\n");
    EXPECT_EQ(Stored("sample")["vor:control"]["enabled"], false);
    Run({.action = Action::Enable, .name = "demo", .serviceId = "sample"}, examples);
    Run(Set({"sample.keepAtStop=true"}), examples);
    Run(edit, examples);
    const json section = Stored("sample")["vor:control"];
    EXPECT_EQ(section["enabled"], true);
    EXPECT_EQ(section["parameters"]["keepAtStop"], true);
    const json& blocks = section["registerAssemblyList"][0]["blocks"];
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_EQ(blocks[0]["dataSource"], "profile/max");
    EXPECT_EQ(blocks[1]["outputId"], 4);
}

TEST_F(JobServiceToolTest, IsForTheCommandsThatNeedServices) {
    EXPECT_TRUE(JobServiceTool::IsFor({.action = Action::Map}));
    EXPECT_TRUE(JobServiceTool::IsFor({.action = Action::Edit}));
    EXPECT_TRUE(JobServiceTool::IsFor({.action = Action::Set}));
    EXPECT_TRUE(JobServiceTool::IsFor({.action = Action::Enable}));
    EXPECT_TRUE(JobServiceTool::IsFor({.action = Action::Disable}));
    EXPECT_FALSE(JobServiceTool::IsFor({.action = Action::Rename}));
    EXPECT_FALSE(JobServiceTool::IsFor({.action = Action::Show}));
}

} // namespace
} // namespace Sensor::Jobs
