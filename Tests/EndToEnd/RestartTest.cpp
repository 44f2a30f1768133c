// The program and its jobs when a service requests a restart or a factory restore.

#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Support/BuildFolders.h"
#include "VorCommon/ArchiveStore.h"

#include <gtest/gtest.h>

namespace Tests {
namespace {

constexpr const char* ServiceConfig = R"({"version":"1","vor:control":{"enabled":true}})";

class RestartTest : public ::testing::Test {
protected:
    static void Write(const std::string& file, const std::string& path) {
        VorCommon::ArchiveStore store(file);
        store.Open();
        store.Write(path, ServiceConfig, std::string(ServiceConfig).size());
        store.Commit();
    }

    static std::vector<std::string> Entries(const std::string& file) {
        std::vector<std::string> names;
        for (const auto& entry : VorCommon::ArchiveFile(file).Read()) {
            names.push_back(entry.first);
        }
        return names;
    }

    std::string JobFile(const std::string& name) const { return data.File("jobs/" + name + ".vrjob"); }

    /// Enables a service in the job "test".
    void Enable(const std::string& service) const { Write(JobFile("test"), "/controls/" + service + "/config.json"); }

    std::vector<std::string> Command() const {
        return VirtualSensor::Command(data.Path().string(), {"--job", "test", "--plugins", BuiltFile("test-plugins")});
    }

    TempFolder data;
};

TEST_F(RestartTest, ARestartEndsTheProgramWithTheStatusOnWhichItIsStartedAgain) {
    Enable("restarts");
    const Answer answer = RunToEnd(Command());
    EXPECT_EQ(answer.status, 75) << answer.errors;
    EXPECT_NE(answer.output.find("\nRestart: the program ends with status 75.\n"), std::string::npos) << answer.output;
    EXPECT_TRUE(answer.output.ends_with("\nStopped, to be started again.\n")) << answer.output;
}

TEST_F(RestartTest, ARestartDoesntWaitForAServiceThatDoesntStop) {
    Enable("restarts");
    Enable("stopHangs");
    const Answer answer = RunToEnd(Command());
    EXPECT_EQ(answer.status, 75) << answer.errors;
    EXPECT_NE(answer.errors.find("a service doesn't stop"), std::string::npos) << answer.errors;
}

TEST_F(RestartTest, AFactoryRestoreLoadsAFreshDemoJobAndKeepsTheOthers) {
    Enable("restoresFactory");
    Write(JobFile("demo"), "/by/the/user");
    Write(data.File("workspace.vrdata"), "/by/the/user");
    std::vector<std::string> command = Command();
    command.insert(command.end(),
                   {"--plugins", BuiltFile("plugins"), "--set", "modbus.port=0", "--set", "ascii.port=0"});
    Program program(command);
    ASSERT_TRUE(program.WaitForLine("Factory restore: ")) << program.Errors();
    ASSERT_TRUE(program.WaitForLine("Loaded job: demo.vrjob")) << program.Errors();
    ExpectEndWell(program);
    EXPECT_EQ(Entries(JobFile("demo")),
              (std::vector<std::string>{"controls/ascii/config.json", "controls/modbus/config.json"}));
    EXPECT_EQ(Entries(JobFile("test")), std::vector<std::string>{"controls/restoresFactory/config.json"});
    EXPECT_FALSE(std::filesystem::exists(data.File("workspace.vrdata")));
}

} // namespace
} // namespace Tests
