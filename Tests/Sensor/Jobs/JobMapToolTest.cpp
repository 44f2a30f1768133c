#include "Sensor/Jobs/JobMapTool.h"

#include "Sensor/Jobs/JobTemplate.h"
#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/StartError.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/TempFolder.h"
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
class JobMapToolTest : public ::testing::Test {
protected:
    JobMapToolTest() { JobTemplate::Write("demo", Scan::GeneratePart(), PathOf("demo")); }

    std::string PathOf(const std::string& name) const { return data.File("jobs/" + name + ".vrjob"); }

    std::string Run(const JobCommand& command, const std::string& plugins = Tests::BuiltFile("plugins")) {
        std::ostringstream out;
        notes.str("");
        JobMapTool(data.Path(), {plugins}, out, notes).Run(command);
        return out.str();
    }
    std::string Refusal(const JobCommand& command) {
        try {
            return "(done) " + Run(command);
        } catch (const StartError& error) {
            return error.what();
        }
    }
    static JobCommand Map(const std::string& format = "table", const std::string& name = "demo") {
        return {.action = Action::Map, .name = name, .serviceId = "modbus", .format = format};
    }
    static JobCommand Edit(const std::string& command, const std::string& document, const std::string& name = "demo") {
        return {.action = Action::Edit, .name = name, .serviceId = "modbus", .edit = command, .document = document};
    }
    json Stored() const {
        const auto bytes = ArchiveFile(PathOf("demo")).Read().at("controls/modbus/config.json");
        return json::parse(bytes->begin(), bytes->end());
    }

    Tests::TempFolder data;
    std::ostringstream notes;
};

TEST_F(JobMapToolTest, ShowsTheMapAsATable) {
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
                          "1300     10         Scanner                        Sensor Group State\n");
    EXPECT_EQ(notes.str(), "");
}

TEST_F(JobMapToolTest, ShowsTheMapToPrograms) {
    const std::string csv = Run(Map("csv"));
    EXPECT_EQ(csv.find("assembly,outputId,registerCount,type,dataSource,displayName\r\n"
                       "registerAssembly-0,0,3,Measurement,profile/max,Maximum Height\r\n"),
              0U)
        << csv;
    const json document = json::parse(Run(Map("json")));
    EXPECT_EQ(document.at("service"), "modbus");
    EXPECT_EQ(
        document.at("assemblies").at(0).at("blocks"),
        JobTemplate::ModbusConfig("demo", Scan::GeneratePart())["vor:control"]["registerAssemblyList"][0]["blocks"]);
    EXPECT_FALSE(document.contains("outputs"));
}

TEST_F(JobMapToolTest, AnEditChangesTheMapAndNothingElse) {
    json expected = Stored();
    EXPECT_EQ(Run(Edit("update", R"({"outputId":0,"newParams":{"outputId":100}})")), "Edited " + PathOf("demo") + "\n");
    json& blocks = expected["vor:control"]["registerAssemblyList"][0]["blocks"];
    json moved = blocks[0];
    moved["outputId"] = 100;
    blocks.erase(0);
    blocks.insert(blocks.begin() + 6, moved);
    EXPECT_EQ(Stored(), expected);
}

TEST_F(JobMapToolTest, TellsWhatIsWrongWithAnEdit) {
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

TEST_F(JobMapToolTest, TellsWhatIsNotThere) {
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

TEST_F(JobMapToolTest, IsForTheCommandsThatNeedServices) {
    EXPECT_TRUE(JobMapTool::IsFor({.action = Action::Map}));
    EXPECT_TRUE(JobMapTool::IsFor({.action = Action::Edit}));
    EXPECT_FALSE(JobMapTool::IsFor({.action = Action::Show}));
}

} // namespace
} // namespace Sensor::Jobs
