#include "Sensor/Jobs/JobTool.h"

#include "Sensor/StartError.h"
#include "Tests/Sensor/Jobs/MadeDemoJobs.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ArchiveFile.h"
#include "yApi/yFault.h"

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

namespace Sensor::Jobs {
namespace {

using nlohmann::json;
using VorCommon::ArchiveFile;
using Action = JobCommand::Action;

ArchiveFile::Content Bytes(const std::string& text) {
    return std::make_shared<const std::vector<unsigned char>>(text.begin(), text.end());
}

/// A data folder with the job "demo".
class JobToolTest : public ::testing::Test {
protected:
    JobToolTest() { jobs.Write("demo", PathOf("demo")); }
    ~JobToolTest() override { yFault_Clear(); }

    std::string PathOf(const std::string& name) const { return data.File("jobs/" + name + ".vrjob"); }

    std::string Run(const JobCommand& command) const {
        std::ostringstream out;
        JobTool(data.Path(), out).Run(command);
        return out.str();
    }

    std::string Refusal(const JobCommand& command) const {
        std::ostringstream out;
        try {
            JobTool(data.Path(), out).Run(command);
        } catch (const StartError& error) {
            EXPECT_EQ(out.str(), "");
            return error.what();
        }
        return "(done)";
    }

    std::vector<std::string> JobFiles() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(data.Path() / "jobs")) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    const DemoJobs jobs = MadeDemoJobs();
    Tests::TempFolder data;
    Tests::TempFolder elsewhere;
};

TEST_F(JobToolTest, ListsEachJobWithItsTimeAndSize) {
    ArchiveFile(PathOf("a longer name")).Write({{"a", Bytes("1")}});
    Tests::WriteWholeFile(PathOf("broken"), "no archive");
    Tests::WriteWholeFile(data.File("jobs/.hidden.vrjob"), "");
    Tests::WriteWholeFile(data.File("jobs/note.txt"), "");
    const std::string size = std::to_string(std::filesystem::file_size(PathOf("a longer name")));
    const std::string list = Run({.action = Action::List});
    EXPECT_EQ(list, "Name           Modified                   Size\n"
                    "a longer name  " +
                        ModificationTime(PathOf("a longer name")) + "  " + size + "\nbroken         " +
                        ModificationTime(PathOf("broken")) + "  10\ndemo           " +
                        ModificationTime(PathOf("demo")) + "  " +
                        std::to_string(std::filesystem::file_size(PathOf("demo"))) + "\n");
}

TEST_F(JobToolTest, ListsJson) {
    ArchiveFile(PathOf("a\x1b[31m")).Write({{"a", Bytes("1")}});
    const auto entry = [this](const std::string& name) {
        return json{{"name", name},
                    {"file", PathOf(name)},
                    {"size", std::filesystem::file_size(PathOf(name))},
                    {"modified", ModificationTime(PathOf(name))}};
    };
    EXPECT_EQ(json::parse(Run({.action = Action::List, .format = "json"})),
              json::array({entry("a\x1b[31m"), entry("demo")}));
    std::filesystem::remove_all(data.Path() / "jobs");
    EXPECT_EQ(Run({.action = Action::List, .format = "json"}), "[]\n");
}

TEST_F(JobToolTest, ShowsTheLimitsOfTools) {
    ArchiveFile(PathOf("demo"))
        .Write({{"sensor/tools.json",
                 Bytes(R"({"version":"1","tools":{"profile-max":{"low":1,"high":2.5},"profile-new":{}}})")}});
    const std::string text = Run({.action = Action::Show, .name = "demo"});
    const std::string expected = "Tool profile-max:\n  high = 2.5\n  low = 1\nTool profile-new:\n";
    EXPECT_TRUE(text.ends_with(expected)) << text;
    EXPECT_EQ(json::parse(Run({.action = Action::Show, .name = "demo", .format = "json"})).at("tools"),
              (json{{"profile-max", {{"low", 1}, {"high", 2.5}}}, {"profile-new", json::object()}}));
}

TEST_F(JobToolTest, AnImportRefusesAWrongEntryOfTools) {
    ArchiveFile(PathOf("demo")).Write({{"sensor/tools.json", Bytes(R"({"version":"2","tools":{}})")}});
    EXPECT_EQ(
        Refusal({.action = Action::Import, .name = "other", .file = PathOf("demo")}),
        "jobs import " + PathOf("demo") + " other: Archive '" + PathOf("demo") +
            "': Entry 'sensor/tools.json': version: expected the text \"1\". Expected a whole job of the sensor.");
}

TEST_F(JobToolTest, TimesHaveTheirZone) {
    EXPECT_TRUE(std::regex_match(ModificationTime(PathOf("demo")),
                                 std::regex(R"(20\d\d-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d\d:\d\d)")))
        << ModificationTime(PathOf("demo"));
    EXPECT_EQ(ModificationTime(PathOf("gone")), "");
}

TEST_F(JobToolTest, AnExportReplacesRegularFilesOnly) {
    Tests::WriteWholeFile(elsewhere.File("target"), "");
    std::filesystem::create_symlink(elsewhere.File("target"), elsewhere.File("link"));
    std::filesystem::create_directory(elsewhere.File("folder"));
    for (const std::string& file : {std::string("/dev/null"), elsewhere.File("link"), elsewhere.File("folder")}) {
        for (const bool force : {false, true}) {
            EXPECT_EQ(Refusal({.action = Action::Export, .name = "demo", .file = file, .force = force}),
                      "jobs export demo " + file + ": '" + file + "' is not a regular file, and isn't replaced.");
        }
    }
    const std::string nameTooLong = elsewhere.File(std::string(300, 'x'));
    EXPECT_EQ(Refusal({.action = Action::Export, .name = "demo", .file = nameTooLong})
                  .find("jobs export demo " + nameTooLong + ": "),
              0U);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_TRUE(std::filesystem::is_symlink(elsewhere.File("link")));
}

TEST_F(JobToolTest, TellsAFolderWithoutJobs) {
    std::ostringstream out;
    JobTool(elsewhere.Path(), out).Run({.action = Action::List});
    EXPECT_EQ(out.str(), "No jobs in " + elsewhere.File("jobs") + "\n");
}

TEST_F(JobToolTest, AFolderThatCannotBeReadIsNamed) {
    Tests::WriteWholeFile(elsewhere.File("jobs"), "");
    std::ostringstream out;
    try {
        JobTool(elsewhere.Path(), out).Run({.action = Action::List});
        ADD_FAILURE() << "listed a file";
    } catch (const StartError& error) {
        EXPECT_EQ(error.what(), "jobs list: " + elsewhere.File("jobs") + ": Not a directory.");
    }
}

TEST_F(JobToolTest, AControlCharacterInANameIsNotPrinted) {
    ArchiveFile(PathOf("a\x1b[31m")).Write({{"a", Bytes("1")}});
    const std::string list = Run({.action = Action::List});
    EXPECT_NE(list.find("a\\x1b[31m  "), std::string::npos) << list;
}

TEST_F(JobToolTest, ShowsEntriesAndServices) {
    const auto size = [](const json& config) { return std::to_string(config.dump(-1, ' ').size()); };
    const auto parameters = [this](const char* service) {
        std::string lines;
        const json config = DemoConfig(jobs, service);
        for (const auto& [name, value] : config["vor:control"]["parameters"].items()) {
            lines += "  " + name + " = " + value.dump() + "\n";
        }
        return lines;
    };
    EXPECT_EQ(Run({.action = Action::Show, .name = "demo"}),
              "Job demo: " + PathOf("demo") + ", " + std::to_string(std::filesystem::file_size(PathOf("demo"))) +
                  " bytes, modified " + ModificationTime(PathOf("demo")) +
                  "\nEntries:\n"
                  "  controls/ascii/config.json   " +
                  size(DemoConfig(jobs, "ascii")) +
                  " bytes\n"
                  "  controls/modbus/config.json  " +
                  size(DemoConfig(jobs, "modbus")) +
                  " bytes\n"
                  "Service ascii: enabled, 7 blocks\n" +
                  parameters("ascii") + "Service modbus: enabled, 12 blocks\n" + parameters("modbus"));
}

TEST_F(JobToolTest, ShowsJson) {
    const json shown = json::parse(Run({.action = Action::Show, .name = "demo.vrjob", .format = "json"}));
    const json ascii = DemoConfig(jobs, "ascii");
    const json modbus = DemoConfig(jobs, "modbus");
    const auto entry = [](const char* name, const json& config) {
        return json{{"name", name}, {"size", config.dump(-1, ' ').size()}};
    };
    const auto service = [](std::size_t blocks, const json& config) {
        return json{{"enabled", true}, {"blocks", blocks}, {"parameters", config["vor:control"]["parameters"]}};
    };
    EXPECT_EQ(shown, (json{{"name", "demo"},
                           {"file", PathOf("demo")},
                           {"size", std::filesystem::file_size(PathOf("demo"))},
                           {"modified", ModificationTime(PathOf("demo"))},
                           {"entries", json::array({entry("controls/ascii/config.json", ascii),
                                                    entry("controls/modbus/config.json", modbus)})},
                           {"services", {{"ascii", service(7, ascii)}, {"modbus", service(12, modbus)}}},
                           {"tools", nullptr}}));
}

TEST_F(JobToolTest, ShowsWhatAForeignJobHoldsAsFarAsItCan) {
    ArchiveFile(PathOf("odd"))
        .Write({{"controls/a/config.json", Bytes("[]")},
                {"controls/b/config.json",
                 Bytes(R"({"vor:control":{"enabled":false,"registerAssemblyList":[1,{"blocks":2}]}})")},
                {"controls/c/config.json", Bytes(R"({"vor:control":{"registerAssemblyList":[{"blocks":[1]}]}})")},
                {"controls/c/d/config.json", Bytes("{}")},
                {"controls/config.json", Bytes("{}")},
                {"other/config.json", Bytes("{}")}});
    const std::string shown = Run({.action = Action::Show, .name = "odd"});
    EXPECT_NE(shown.find("Service a: not said whether enabled, 0 blocks\n"
                         "Service b: disabled, 0 blocks\n"
                         "Service c: not said whether enabled, 1 block\n"),
              std::string::npos)
        << shown;
    EXPECT_TRUE(shown.ends_with("1 block\n")) << shown;
}

TEST_F(JobToolTest, RefusesToShowWhatCannotBeLoaded) {
    EXPECT_EQ(Refusal({.action = Action::Show, .name = "gone"}),
              "jobs show gone: Archive '" + PathOf("gone") +
                  "': there is no such file. Expected a job that jobs list prints.");
    EXPECT_EQ(
        Refusal({.action = Action::Show, .name = "../demo"}),
        "jobs show ../demo: '../demo' is not a job name: it must be one file name that doesn't begin with a dot.");
    ArchiveFile(PathOf("bad")).Write({{"controls/a/config.json", Bytes("{")}});
    const std::string refusal = Refusal({.action = Action::Show, .name = "bad"});
    EXPECT_EQ(refusal.find("jobs show bad: Archive '" + PathOf("bad") +
                           "': entry 'controls/a/config.json' is no JSON: "
                           "Line 1, column 2: "),
              0U)
        << refusal;
    EXPECT_TRUE(refusal.ends_with(" Expected a whole job of the sensor.")) << refusal;
}

TEST_F(JobToolTest, CopiesAJob) {
    EXPECT_EQ(Run({.action = Action::Copy, .name = "demo", .newName = "second"}),
              "Copied to " + PathOf("second") + "\n");
    EXPECT_EQ(*ArchiveFile(PathOf("second")).Read().at("controls/modbus/config.json"),
              *ArchiveFile(PathOf("demo")).Read().at("controls/modbus/config.json"));
    EXPECT_EQ(JobFiles(), (std::vector<std::string>{"demo.vrjob", "second.vrjob"}));
}

TEST_F(JobToolTest, AnExistingJobIsReplacedByForceOnly) {
    ArchiveFile(PathOf("second")).Write({{"a", Bytes("1")}});
    EXPECT_EQ(Refusal({.action = Action::Copy, .name = "demo", .newName = "second"}),
              "jobs copy demo second: Archive '" + PathOf("second") +
                  "': it exists already. Expected a new name, or --force to replace it.");
    EXPECT_EQ(ArchiveFile(PathOf("second")).Read().count("a"), 1U);
    Run({.action = Action::Copy, .name = "demo", .newName = "second", .force = true});
    EXPECT_EQ(ArchiveFile(PathOf("second")).Read().count("a"), 0U);
}

TEST_F(JobToolTest, RenamesAJob) {
    const auto content = ArchiveFile(PathOf("demo")).Read();
    EXPECT_EQ(Run({.action = Action::Rename, .name = "demo", .newName = "second"}),
              "Renamed to " + PathOf("second") + "\n");
    EXPECT_EQ(JobFiles(), std::vector<std::string>{"second.vrjob"});
    EXPECT_EQ(*ArchiveFile(PathOf("second")).Read().at("controls/modbus/config.json"),
              *content.at("controls/modbus/config.json"));
    EXPECT_EQ(Refusal({.action = Action::Rename, .name = "second", .newName = "second.vrjob", .force = true}),
              "jobs rename second second.vrjob: the job has this name already.");
    ArchiveFile(PathOf("third")).Write({{"a", Bytes("1")}});
    EXPECT_EQ(Refusal({.action = Action::Rename, .name = "second", .newName = "third"}),
              "jobs rename second third: Archive '" + PathOf("third") +
                  "': it exists already. Expected a new name, or --force to replace it.");
    EXPECT_EQ(Refusal({.action = Action::Rename, .name = "gone", .newName = "fourth"}),
              "jobs rename gone fourth: Archive '" + PathOf("gone") +
                  "': there is no such file. Expected a job that jobs list prints.");
    EXPECT_EQ(JobFiles(), (std::vector<std::string>{"second.vrjob", "third.vrjob"}));
    Run({.action = Action::Rename, .name = "second", .newName = "third", .force = true});
    EXPECT_EQ(JobFiles(), std::vector<std::string>{"third.vrjob"});
}

TEST_F(JobToolTest, DeletesAJob) {
    EXPECT_EQ(Refusal({.action = Action::Delete, .name = "gone"}),
              "jobs delete gone: Archive '" + PathOf("gone") +
                  "': there is no such file. Expected a job that jobs list prints.");
    EXPECT_EQ(Run({.action = Action::Delete, .name = "demo"}), "Deleted " + PathOf("demo") + "\n");
    EXPECT_TRUE(JobFiles().empty());
}

TEST_F(JobToolTest, ExportsAndImportsAJob) {
    const std::string file = elsewhere.File("a file");
    EXPECT_EQ(Run({.action = Action::Export, .name = "demo", .file = file}), "Exported to " + file + "\n");
    EXPECT_NE(Refusal({.action = Action::Export, .name = "demo", .file = file}), "(done)");
    Run({.action = Action::Export, .name = "demo", .file = file, .force = true});
    EXPECT_EQ(Run({.action = Action::Import, .file = file}), "Imported to " + PathOf("a file") + "\n");
    Run({.action = Action::Import, .name = "third", .file = file});
    EXPECT_NE(Refusal({.action = Action::Import, .name = "third", .file = file}), "(done)");
    Run({.action = Action::Import, .name = "third", .file = file, .force = true});
    EXPECT_EQ(*ArchiveFile(PathOf("third")).Read().at("controls/modbus/config.json"),
              *ArchiveFile(PathOf("demo")).Read().at("controls/modbus/config.json"));
    EXPECT_EQ(JobFiles(), (std::vector<std::string>{"a file.vrjob", "demo.vrjob", "third.vrjob"}));
}

TEST_F(JobToolTest, AnImportMakesTheFolder) {
    std::filesystem::rename(data.Path() / "jobs", elsewhere.Path() / "jobs");
    Run({.action = Action::Import, .file = elsewhere.File("jobs/demo.vrjob")});
    EXPECT_EQ(JobFiles(), std::vector<std::string>{"demo.vrjob"});
}

TEST_F(JobToolTest, WhatCouldNotBeLoadedIsNotImported) {
    const std::string file = elsewhere.File("part.vrjob");
    const JobCommand import{.action = Action::Import, .file = file};
    EXPECT_EQ(Refusal(import),
              "jobs import " + file + ": Archive '" + file + "': there is no such file. Expected the file of a job.");
    Tests::WriteWholeFile(file, std::string(600, 'x'));
    EXPECT_EQ(Refusal(import), "jobs import " + file + ": Archive '" + file +
                                   "': file is not a database. Expected a whole job of the sensor.");
    std::filesystem::remove(file);
    ArchiveFile(file).Write({{"controls/a/config.json", Bytes("\xFF")}});
    EXPECT_NE(Refusal(import).find("entry 'controls/a/config.json' is no JSON"), std::string::npos) << Refusal(import);
    ArchiveFile(file).Write({{"controls/a/config.json", Bytes(std::string(65, '[') + std::string(65, ']'))}});
    EXPECT_NE(Refusal(import).find("nested more than 64 levels deep"), std::string::npos) << Refusal(import);
    ArchiveFile(file).Write({{"controls/a/config.json", Bytes("{}")}});
    EXPECT_NE(Refusal({.action = Action::Import, .name = ".p", .file = file}).find("is not a job name"),
              std::string::npos);
    EXPECT_EQ(JobFiles(), std::vector<std::string>{"demo.vrjob"});
}

TEST_F(JobToolTest, NothingHalfDoneStays) {
    const std::string file = elsewhere.File("part.vrjob");
    ArchiveFile(file).Write({{"a", Bytes("1")}});
    yFault_Set("ArchiveFile_Commit", yERROR_FULL);
    EXPECT_EQ(Refusal({.action = Action::Import, .file = file}),
              "jobs import " + file + ": Archive '" + PathOf("part") + "': the disk failed.");
    EXPECT_EQ(JobFiles(), std::vector<std::string>{"demo.vrjob"});
    EXPECT_EQ(Refusal({.action = Action::Export, .name = "demo", .file = elsewhere.File("gone/x")}),
              "jobs export demo " + elsewhere.File("gone/x") + ": Archive '" + elsewhere.File("gone/x") +
                  "': its folder doesn't exist.");
}

} // namespace
} // namespace Sensor::Jobs
