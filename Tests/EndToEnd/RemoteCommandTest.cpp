// The commands of the program for a sensor that runs: their output, their exit statuses.

#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/EndToEnd/Program.h"
#include "Tests/EndToEnd/VirtualSensor.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {
namespace {

using nlohmann::json;

class RemoteCommandTest : public testing::Test {
protected:
    Answer Run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), VirtualSensor::File());
        arguments.insert(arguments.end(), {"--url", client.Address()});
        return RunToEnd(arguments);
    }

    json Parameter(const std::string& name) const {
        return client.Get("/controls/ascii").body.at("parameters").at(name);
    }

    VirtualSensor sensor;
    HttpClient client = HttpClient::Of(sensor);
};

TEST_F(RemoteCommandTest, StatusPrintsWhatTheSensorDoes) {
    ASSERT_TRUE(sensor.Process().WaitForLine("Scanning."));
    const Answer status = Run({"status"});
    EXPECT_EQ(status.status, 0) << status.errors;
    EXPECT_TRUE(status.output.starts_with("vorsensor " VOR_VERSION "\nState: scanning, frame ")) << status.output;
    for (const char* text :
         {"\nJob:   demo.vrjob\n", "\nService  Enabled  Status ", "\nascii    yes      Running  tcp://",
          "\nmodbus   yes      Running  tcp://", "\nNo problems.\n"}) {
        EXPECT_NE(status.output.find(text), std::string::npos) << text << '\n' << status.output;
    }
    const Answer document = Run({"status", "--json"});
    EXPECT_EQ(document.status, 0) << document.errors;
    EXPECT_EQ(json::parse(document.output).at("job"), "demo.vrjob");
}

TEST_F(RemoteCommandTest, GetPrintsADocument) {
    const Answer plain = Run({"get", "/controls/ascii"});
    EXPECT_EQ(plain.status, 0) << plain.errors;
    const json document = json::parse(plain.output);
    EXPECT_EQ(document.at("id"), "ascii");
    EXPECT_FALSE(document.contains("_links"));
    EXPECT_NE(plain.output.find("\n    \"id\": \"ascii\""), std::string::npos) << "it is indented";
    EXPECT_EQ(json::parse(Run({"get", "/controls/ascii", "--links"}).output).at("_links").at("self").at("href"),
              "/controls/ascii");
    EXPECT_EQ(json::parse(Run({"get", "/sensor/scan?points=0"}).output).at("x"), json::array());
}

TEST_F(RemoteCommandTest, SetChangesMembers) {
    const Answer set = Run({"set", "/controls/ascii", "parameters.idleTimeout=31", "parameters.decimalSeparator=Comma",
                            "parameters.delimiter=;"});
    EXPECT_EQ(set.status, 0) << set.errors;
    EXPECT_EQ(set.output, "parameters.idleTimeout=31\nparameters.decimalSeparator=1\nparameters.delimiter=\";\"\n");
    EXPECT_EQ(Parameter("idleTimeout"), 31);
    EXPECT_EQ(Parameter("delimiter"), ";");
    EXPECT_NE(Run({"status"}).output.find("demo.vrjob, modified"), std::string::npos);
    EXPECT_EQ(Run({"set", "/controls/ascii", "enabled=false"}).output, "enabled=false\n");
    EXPECT_NE(Run({"status"}).output.find("\nascii    no       Stopped\n"), std::string::npos);
}

TEST_F(RemoteCommandTest, WhatIsRefusedEndsWithStatus2AndItsReasons) {
    const Answer missing = Run({"get", "/controls/nothing"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.output, "");
    EXPECT_EQ(missing.errors,
              "vorsensor: /controls/nothing: Not found (404): Control protocol type not recognized: 'nothing'.\n");

    const Answer refused = Run({"set", "/controls/ascii", "parameters.port=65536", "parameters.maxConnections=-1"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.output, "");
    EXPECT_TRUE(refused.errors.starts_with("vorsensor: /controls/ascii: Unprocessable content (422): "))
        << refused.errors;
    for (const char* place : {"\n  /parameters/port: port: ", "\n  /parameters/maxConnections: maxConnections: "}) {
        EXPECT_NE(refused.errors.find(place), std::string::npos) << refused.errors;
    }
    EXPECT_EQ(Parameter("maxConnections"), 32) << "nothing is set";

    const Answer wrong = Run({"set", "/controls/ascii", "enabled=perhaps"});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.errors, "vorsensor: set enabled=perhaps: expected true or false.\n");
    EXPECT_EQ(Run({"set", "/controls/ascii", "id=x"}).errors, "vorsensor: set id=x: \"id\" can only be read.\n");
    EXPECT_EQ(Run({"set", "/controls/ascii"}).status, 2);
    EXPECT_EQ(Run({"get", "/sensor/jobs/demo/file"}).status, 2);
    EXPECT_EQ(RunToEnd({VirtualSensor::File(), "status", "--url", "ftp://x"}).status, 2);
}

TEST_F(RemoteCommandTest, NothingThatAnswersEndsWithStatus1) {
    const std::string address = client.Address();
    ExpectEndWell(sensor.Process());
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"status"}, {"get", "/sensor"}, {"set", "/controls/ascii", "enabled=true"}}) {
        const Answer answer = Run(command);
        EXPECT_EQ(answer.status, 1);
        EXPECT_EQ(answer.output, "");
        EXPECT_EQ(answer.errors, "vorsensor: Nothing answers at " + address.substr(0, address.size() - 1) +
                                     " (Connection refused). Expected a sensor that runs; --url says where.\n");
    }
}

TEST(RemoteCommand, AnAsciiClientReadsTheSameResource) {
    VirtualSensor sensor({"--set", "ascii.allowRead=true"});
    const std::uint16_t port = sensor.WaitForAsciiPort();
    const HttpClient client = HttpClient::Of(sensor);
    const Answer answer =
        RunToEnd({"sh", "-c",
                  "printf 'READ /controls/modbus#/parameters\\nVERSION\\n' | nc -N 127.0.0.1 " + std::to_string(port)});
    ASSERT_TRUE(answer.output.starts_with("OK,{")) << answer.output;
    const std::size_t end = answer.output.find("\r\n");
    EXPECT_EQ(json::parse(answer.output.substr(3, end - 3)), client.Get("/controls/modbus").body.at("parameters"));
    EXPECT_TRUE(answer.output.substr(end + 2).starts_with("OK,\""));
}

} // namespace
} // namespace Tests
