#include "Sensor/Jobs/JobServiceTool.h"

#include "Sensor/StartError.h"
#include "Tests/Sensor/Jobs/MadeDemoJobs.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ArchiveFile.h"

#include <sstream>

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
    json Stored(const std::string& service = "modbus") const {
        const auto bytes = ArchiveFile(PathOf("demo")).Read().at("controls/" + service + "/config.json");
        return json::parse(bytes->begin(), bytes->end());
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
