// The started program: what it prints, what it refuses, how it ends.

#include "Tests/EndToEnd/VirtualSensor.h"

#include "Tests/Support/BuildFolders.h"
#include "VorCommon/ArchiveStore.h"

#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace Tests {
namespace {

/// The program, and a data folder that the test prepares.
class PreparedSensor : public ::testing::Test {
protected:
    std::string JobFile(const std::string& name) const { return data.File("jobs/" + name + ".vrjob"); }

    void Enable(const std::string& job, const std::vector<std::string>& services) const {
        VorCommon::ArchiveStore store(JobFile(job));
        store.Open();
        const std::string config = R"({"version":"1","vor:control":{"enabled":true}})";
        for (const std::string& service : services) {
            store.Write("/controls/" + service + "/config.json", config.data(), config.size());
        }
        store.Commit();
    }

    std::vector<std::string> Command(std::vector<std::string> arguments) const {
        return VirtualSensor::Command(data.Path().string(), std::move(arguments));
    }

    TempFolder data;
};

TEST_F(PreparedSensor, TellsItsOptionsAndItsVersion) {
    const Answer help = RunToEnd({VirtualSensor::File(), "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("--recording"), std::string::npos);
    EXPECT_EQ(help.errors, "");
    const Answer version = RunToEnd({VirtualSensor::File(), "--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output.find("vorsensor "), 0U);
}

TEST_F(PreparedSensor, SaysThatItsOutputCannotBeWritten) {
    for (const std::string arguments : {"--help", "--version", "jobs list", "jobs list --json"}) {
        const Answer answer = RunToEnd(
            {"sh", "-c",
             "exec " + VirtualSensor::File() + " --data " + data.Path().string() + " " + arguments + " > /dev/full"});
        EXPECT_EQ(answer.status, 2) << arguments;
        EXPECT_EQ(answer.errors, "vorsensor: the output can't be written.\n") << arguments;
    }
}

TEST_F(PreparedSensor, RefusesInOneSentence) {
    WriteWholeFile(data.File("bad.csv"), "frame,x,z\n0,1,2\n0,1,two\n");
    const std::string bad = data.File("bad.csv");
    const std::vector<std::pair<std::vector<std::string>, std::string>> refusals = {
        {{"--recording", bad}, bad + ", line 3: z \"two\" isn't a number."},
        {{"--recording", "/no/such"}, "/no/such: the recording can't be opened (No such file or directory)."},
        {{"--set", "nope.x=1"}, "--set nope.x=1: unknown service \"nope\", known: ascii, modbus."},
        {{"--set", "modbus.port=abc"},
         "--set modbus.port=abc: \"abc\" is no value of parameter \"port\", which is a number."},
        {{"--set", "modbus.unitId=256"},
         "--set modbus.unitId=256: the value isn't taken (Unit Identifier is set to be greater than its maximum)."},
        {{"--frame-rate", "0"}, "--frame-rate: must be above 0 and at most 100000."},
        {{"--job", "demo-values"},
         "--job demo-values: doesn't exist yet and is made from a recording of named values; "
         "give one with --recording FILE."},
        {{"--job", "second"},
         "--job second: there is no file " + JobFile("second") +
             ", and only the jobs demo and demo-values are made here."},
        {{"--plugins", "/no/such"},
         "--plugins /no/such: Plug-in folder \"/no/such\" can't be read: No such file or directory."},
    };
    for (const auto& [arguments, text] : refusals) {
        const Answer answer = RunToEnd(Command(arguments));
        EXPECT_EQ(answer.status, 2) << text;
        EXPECT_EQ(answer.errors, "vorsensor: " + text + "\n");
    }
    EXPECT_FALSE(std::filesystem::exists(data.Path() / "jobs"));
}

TEST_F(PreparedSensor, RefusesAJobThatIsNoArchiveAndLeavesItAlone) {
    std::filesystem::create_directories(data.Path() / "jobs");
    const std::string garbage(5000, 'x');
    WriteWholeFile(JobFile("broken"), garbage);
    const Answer answer = RunToEnd(Command({"--job", "broken"}));
    EXPECT_EQ(answer.status, 2);
    EXPECT_NE(answer.errors.find(JobFile("broken")), std::string::npos) << answer.errors;
    EXPECT_EQ(ReadWholeFile(JobFile("broken")), garbage);
}

TEST_F(PreparedSensor, RefusesASettingWithWhichAServiceCannotStart) {
    const std::vector<std::tuple<std::vector<std::string>, std::string, std::string>> refusals = {
        {{"--set", "ascii.address=1.2.3"}, "--set ascii.address=1.2.3", "ascii"},
        {{"--set", "ascii.port=0", "--set", "modbus.unitId=7", "--set", "ascii.address=somewhere"},
         "--set ascii.port=0, --set ascii.address=somewhere",
         "ascii"},
        {{"--set", "modbus.address=somewhere"}, "--set modbus.address=somewhere, --modbus-port 0", "modbus"},
    };
    for (const auto& [arguments, settings, service] : refusals) {
        std::vector<std::string> all = {"--modbus-port", "0"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const Answer answer = RunToEnd(Command(all));
        EXPECT_EQ(answer.status, 2) << answer.output;
        EXPECT_EQ(answer.errors.find("vorsensor: " + settings + ": service \"" + service + "\" can't start ("),
                  answer.errors.rfind("vorsensor: "))
            << answer.errors;
        EXPECT_NE(answer.errors.find("is not an IP address).\n"), std::string::npos) << answer.errors;
    }
}

TEST_F(PreparedSensor, RefusesAJobWithADamagedEntry) {
    const std::string entry = "controls/modbus/config.json";
    for (const auto& [content, reason] : {std::pair<std::string, std::string>("{\"version\":", "is no JSON: "),
                                          {"", "is no JSON: "},
                                          {"{}", "holds no settings of version 1."}}) {
        std::filesystem::remove(JobFile("part"));
        VorCommon::ArchiveStore store(JobFile("part"));
        store.Write("/" + entry, content.data(), content.size());
        store.Commit();
        const Answer answer = RunToEnd(Command({"--job", "part"}));
        EXPECT_EQ(answer.status, 2) << answer.output;
        EXPECT_EQ(answer.errors.find("vorsensor: Archive '" + JobFile("part") + "': entry '" + entry + "' " + reason),
                  0U)
            << answer.errors;
        EXPECT_EQ(std::count(answer.errors.begin(), answer.errors.end(), '\n'), 1) << answer.errors;
    }
}

TEST_F(PreparedSensor, TellsTheUserOnceThatAPortIsTakenAndRunsOn) {
    VirtualSensor other;
    const std::string port = std::to_string(other.WaitForPort());
    Program program(Command({"--modbus-port", port, "--set", "ascii.port=0"}));
    const std::string reason = "port " + port + " on 127.0.0.1 is in use";
    EXPECT_TRUE(program.WaitForLine("Service modbus (Modbus TCP): Failed To Start: " + reason));
    EXPECT_TRUE(program.WaitForLine("Scanning.")) << program.Errors();
    ExpectEndWell(program);
    EXPECT_NE(program.Errors().find("warning: Modbus TCP can't start: " + reason +
                                    ". The sensor tries again every 5 seconds.\n"),
              std::string::npos)
        << program.Errors();
}

TEST_F(PreparedSensor, NeverWritesAnExistingJobUnasked) {
    std::string before;
    for (const std::string value : {"0", "7"}) {
        Program program(Command({"--modbus-port", "0", "--set", "modbus.unitId=" + value}));
        ASSERT_TRUE(program.WaitForLine("Scanning."));
        ExpectEndWell(program);
        const std::string after = ReadWholeFile(JobFile("demo"));
        EXPECT_FALSE(after.empty());
        if (!before.empty()) {
            EXPECT_EQ(after, before);
        }
        before = after;
    }
    EXPECT_FALSE(std::filesystem::exists(data.File("workspace.vrdata")));
}

TEST_F(PreparedSensor, NamesTheSourcesThatTheInputLacks) {
    WriteWholeFile(data.File("values.csv"), "frame,name,value\n0,gap,1\n");
    Program program(
        Command({"--modbus-port", "0", "--recording", data.File("values.csv"), "--job", "demo", "--no-scan"}));
    EXPECT_TRUE(program.WaitForLine("Warning: the input has no data source profile/max: the registers at 0-2 "));
    EXPECT_TRUE(program.WaitForLine("Warning: the input has no data source profile/text: the registers at 40-55 "));
    EXPECT_TRUE(program.WaitForLine("Not scanning."));
    ExpectEndWell(program, SIGINT);
}

TEST_F(PreparedSensor, RunsOnWhenAStartThrowsNoException) {
    Enable("test", {"startThrowsInt", "typeNameFree"});
    Enable("bare", {"typeNameFree"});
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--job", "test"}, {"--job", "bare", "--enable", "startThrowsInt"}}) {
        std::vector<std::string> command = Command(arguments);
        command.insert(command.end(), {"--plugins", BuiltFile("test-plugins")});
        Program program(command);
        EXPECT_TRUE(program.WaitForLine("(Fixture startThrowsInt): Failed To Start: unknown exception"));
        EXPECT_TRUE(program.WaitForLine("(Fixture typeNameFree): Running"));
        EXPECT_TRUE(program.WaitForLine("Scanning.")) << program.Errors();
        ExpectEndWell(program);
    }
}

TEST_F(PreparedSensor, ShowsAServiceThatFailsToStartWithTheReasonAndStartsTheOthers) {
    Enable("test", {"startFails", "startThrowsException", "stopHangs"});
    Program program(Command({"--job", "test", "--plugins", BuiltFile("test-plugins")}));
    ASSERT_TRUE(program.WaitForLine("Scanning.")) << program.Errors();
    const std::string output = program.Output();
    EXPECT_NE(output.find("startFails (Fixture startFails): Failed To Start: the port is taken\n"), std::string::npos)
        << output;
    EXPECT_NE(output.find("(Fixture startThrowsException): Failed To Start: the cable is cut\n"), std::string::npos)
        << output;
    EXPECT_NE(output.find("Service stopHangs (Fixture stopHangs): Running\n"), std::string::npos) << output;
}

TEST_F(PreparedSensor, NamesPlugInsThatAreLeftOut) {
    Program program(Command({"--plugins", BuiltFile("test-plugins")}));
    ASSERT_TRUE(program.WaitForLine("Scanning.")) << program.Errors();
    const std::string plugins = BuiltFile("test-plugins/");
    EXPECT_NE(program.Output().find("Service startThrowsException of " + plugins +
                                    "TypeNameTaken.so is left out: the type name is taken by " + plugins +
                                    "StartThrowsException.so\n"),
              std::string::npos)
        << program.Output();
    for (const char* file : {"FactoryThrows.so", "FactoryThrowsInt.so", "FactoryGivesNothing.so"}) {
        EXPECT_NE(program.Errors().find(plugins + file + " is left out"), std::string::npos) << program.Errors();
    }
}

TEST_F(PreparedSensor, EndsInTimeWhenAServiceDoesntStop) {
    Enable("test", {"stopHangs"});
    Program program(Command({"--job", "test", "--plugins", BuiltFile("test-plugins")}));
    ASSERT_TRUE(program.WaitForLine("Service stopHangs (Fixture stopHangs): Running"));
    ASSERT_TRUE(program.WaitForLine("Scanning."));
    ExpectEndWell(program);
    EXPECT_NE(program.Errors().find("a service doesn't stop"), std::string::npos) << program.Errors();
}

} // namespace
} // namespace Tests
