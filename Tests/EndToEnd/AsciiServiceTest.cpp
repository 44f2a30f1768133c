// The ASCII service of the started program, with the usual clients.

#include "Tests/EndToEnd/AsciiSensor.h"
#include "Tests/Services/Ascii/TextClient.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/Threads.h"
#include "VorCommon/ArchiveStore.h"

#include <algorithm>
#include <sstream>

namespace Tests {
namespace {

using Services::Ascii::TextClient;
using Texts = std::vector<std::string>;

const std::string UnknownCommand = "ERROR,-998,\"unknown command; HELP lists the commands\"";

/// Sends `text`, formatted by printf, with nc, and returns the lines that nc receives.
Texts Netcat(std::uint16_t port, const std::string& text, const std::string& pipe = "") {
    const Answer answer = RunToEnd({"sh", "-c",
                                    "printf '" + text + "' | nc " + (pipe.empty() ? "-N " : "") + "-w 10 127.0.0.1 " +
                                        std::to_string(port) + pipe});
    EXPECT_EQ(answer.status, 0) << answer.errors;
    Texts lines;
    std::istringstream stream(answer.output);
    for (std::string line; std::getline(stream, line);) {
        EXPECT_TRUE(line.ends_with('\r')) << line;
        line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

bool HasNetcat() {
    return RunToEnd({"sh", "-c", "command -v nc"}).status == 0;
}

/// The field of a line; "(none)" when the line has fewer.
std::string Field(const std::string& line, std::size_t index, char delimiter = ',') {
    std::istringstream stream(line);
    std::string field;
    for (std::size_t i = 0; i <= index; ++i) {
        if (!std::getline(stream, field, delimiter)) {
            return "(none)";
        }
    }
    return field;
}

/// Repeats a request until its answer isn't `former` any more, and returns the answer.
std::string WaitForChange(TextClient& client, const std::string& request, const std::string& former) {
    std::string answer;
    WaitUntil([&] { return (answer = client.Ask(request)) != former; });
    return answer;
}

TEST(AsciiService, IsDrivenWithNetcat) {
    if (!HasNetcat()) {
        GTEST_SKIP() << "there is no nc";
    }
    AsciiSensor sensor({}, {"--no-scan"});
    const std::uint16_t port = sensor.WaitForPort();
    EXPECT_EQ(Netcat(port, "RESULT height\\r\\nSTATE\\r\\n"),
              (Texts{"OK,INVALID", "OK,READY,UNALIGNED,IDLE,\"line.vrjob\""}));
    EXPECT_EQ(
        Netcat(port, "START\\nSTATE\\nALIGN\\nSTATE\\n"),
        (Texts{"OK", "OK,SCANNING,UNALIGNED,IDLE,\"line.vrjob\"", "OK", "OK,SCANNING,ALIGNED,IDLE,\"line.vrjob\""}));
    TextClient client(port);
    EXPECT_NE(WaitForChange(client, "RESULT height", "OK,INVALID"), "OK,INVALID");
    const Texts results = Netcat(port, "STOP\\nRESULT 0\\nRESULT height width\\nRESULT 6\\nSTAMP\\nRESULT 5\\n");
    ASSERT_EQ(results.size(), 6u);
    EXPECT_EQ(results[0], "OK");
    EXPECT_EQ(results[1].substr(0, 3), "OK,");
    EXPECT_EQ(Field(results[2], 1), Field(results[1], 1)) << "the same value by name and by number";
    EXPECT_EQ(Field(results[2], 2), "26.000");
    EXPECT_EQ(results[3], "OK,\"frame " + Field(results[4], 1) + ": max " + Field(results[1], 1) + " mm\"");
    EXPECT_EQ(results[5], results[4]);
    EXPECT_EQ(Netcat(port, "RESULT nothing\\nDANCE\\n"),
              (Texts{"ERROR,-999,\"there is no output nothing\"", UnknownCommand}));
    ExpectEndWell(sensor.Process());
}

TEST(AsciiService, PushesFramesToNetcat) {
    if (!HasNetcat()) {
        GTEST_SKIP() << "there is no nc";
    }
    AsciiSensor sensor({}, {"--frame-rate", "100"});
    const std::uint16_t port = sensor.WaitForPort();
    const Texts lines = Netcat(port, "PUSH ON height 5\\n", " | head -n 21");
    ASSERT_EQ(lines.size(), 21u);
    EXPECT_EQ(lines[0], "OK");
    for (std::size_t i = 2; i < lines.size(); ++i) {
        EXPECT_EQ(Field(lines[i], 0), "DATA");
        EXPECT_EQ(std::stoi(Field(lines[i], 1)), std::stoi(Field(lines[i - 1], 1)) + 1) << "each frame, once";
        EXPECT_EQ(std::stoi(Field(lines[i], 3)), std::stoi(Field(lines[i - 1], 3)) + 1) << "with its own stamp";
    }
    ExpectEndWell(sensor.Process());
}

TEST(AsciiService, TakesTheHabitsOfTelnet) {
    AsciiSensor sensor({}, {"--no-scan"});
    TextClient client(sensor.WaitForPort());
    const std::string negotiation = "\xFF\xFD\x03\xFF\xFB\x18\xFF\xFB\x1F\xFF\xFA\x1F";
    client.Send(negotiation + std::string("\0\x50\0\x18\xFF\xF0", 6) + "START\r\n");
    EXPECT_EQ(client.Line(), "OK");
    client.Send(std::string("STOP\r\0START\r\0", 13));
    EXPECT_EQ(client.Line(), "OK");
    EXPECT_EQ(client.Line(), "OK");
    client.Send("VERSION\n");
    EXPECT_EQ(client.Line().substr(0, 3), "OK,");
    for (const char character : std::string("ST\xFF\xFC\x01OP\r\n")) {
        client.Send(std::string(1, character));
    }
    EXPECT_EQ(client.Line(), "OK");
    client.Send("RESU");
    client.Send("LT heigh");
    client.Send("t\r");
    EXPECT_EQ(client.Line().substr(0, 3), "OK,");
    client.Send("\nQUIT\r\n");
    EXPECT_EQ(client.Line(), "OK") << "the line feed behind the carriage return is no line of its own";
    EXPECT_EQ(client.Line(), "(closed)");
    ExpectEndWell(sensor.Process());
}

TEST(AsciiService, IsDrivenByTheProgramOfItsPage) {
    if (RunToEnd({"python3", "--version"}).status != 0) {
        GTEST_SKIP() << "there is no python3";
    }
    AsciiSensor sensor({}, {"--no-scan", "--frame-rate", "100"});
    const std::string port = std::to_string(sensor.WaitForPort());
    const auto frameBehind = [](const std::string& output, const std::string& words) {
        const std::size_t at = output.rfind(words);
        return at == std::string::npos ? -1 : std::stoi(output.substr(at + words.size()));
    };
    for (int run = 0; run < 2; ++run) { // each scan counts its frames from 0
        const Answer answer = RunToEnd({"python3", SourceFile("Docs/examples/ascii-measure.py"), port});
        EXPECT_EQ(answer.status, 0) << answer.errors;
        EXPECT_EQ(std::ranges::count(answer.output, '\n'), 11) << answer.output;
        EXPECT_NE(answer.output.find(" mm high, 26.000 mm wide\n"), std::string::npos) << answer.output;
        const int lastFrame = frameBehind(answer.output, "\nframe ");
        EXPECT_GE(lastFrame, 9) << answer.output;
        EXPECT_GE(frameBehind(answer.output, "\nstopped at frame "), lastFrame) << answer.output;
    }
    ExpectEndWell(sensor.Process());
}

TEST(AsciiService, ServesTheOthersWhileOneReadsSlowly) {
    AsciiSensor sensor({}, {"--frame-rate", "1000"});
    const std::uint16_t port = sensor.WaitForPort();
    TextClient deaf(port, 1024);
    EXPECT_EQ(deaf.Ask("PUSH ON"), "OK");
    TextClient flood(port, 1024);
    for (int refusals = 0; refusals < 10;) {
        refusals += flood.SendSome("HELP\nOUTPUTS\n") == 0 ? 1 : 0;
    }
    TextClient quick(port);
    EXPECT_EQ(quick.Ask("PUSH ON stamp"), "OK");
    int last = std::stoi(Field(quick.Line(), 1));
    for (int i = 0; i < 2000; ++i) {
        const int frame = std::stoi(Field(quick.Line(), 1));
        ASSERT_EQ(frame, last + 1) << "a quick reader gets each frame";
        last = frame;
    }
    EXPECT_EQ(TextClient(port).Ask("STOP"), "OK") << "commands are taken";
    ExpectEndWell(sensor.Process());
}

TEST(AsciiService, WritesInvalidValuesAsItsJobSays) {
    const TempFolder folder;
    WriteWholeFile(folder.File("below.csv"), "frame,x,z\n1,0,-1.25\n1,1,-2.5\n");
    AsciiSensor sensor({{"delimiter", ";"}, {"decimalSeparator", 1}, {"decimals", 2}, {"invalidText", "n/a"}},
                       {"--recording", folder.File("below.csv"), "--once"});
    TextClient client(sensor.WaitForPort());
    ASSERT_TRUE(sensor.Process().WaitForLine("stands still behind the last frame"));
    EXPECT_EQ(WaitForChange(client, "RESULT height", "OK;n/a"), "OK;-1,25");
    EXPECT_EQ(client.Ask("RESULT width;lowest;3"), "OK;n/a;-2,50;n/a;n/a") << "a width needs a point above 0";
    EXPECT_EQ(client.Ask("RESULT text"), "OK;\"frame 0: max -1.250 mm\"") << "a text is as the tool made it";
    ExpectEndWell(sensor.Process());
}

TEST(AsciiService, FollowsTheMapOfAJobThatItsClientLoads) {
    AsciiSensor sensor;
    TextClient client(sensor.WaitForPort());
    sensor.WriteJob("second", AsciiSensor::Config({{"port", 0}}, {{"MeasurementValue", "profile/min"}},
                                                  {{"bottom", "profile/min"}, {"say", "profile/text"}}));
    EXPECT_EQ(client.Ask("LOADJOB nowhere"), "ERROR,0,\"the job couldn't be loaded; the former one goes on\"");
    EXPECT_EQ(client.Ask("JOB"), "OK,\"line.vrjob\"");
    EXPECT_EQ(client.Ask("LOADJOB second"), "OK") << "the connection stays";
    EXPECT_EQ(client.Ask("JOB"), "OK,\"second.vrjob\"");
    const std::string list = "OK,0,\"profile/min\",\"bottom\",\"profile/min\",\"say\",\"profile/text\"";
    EXPECT_EQ(client.Ask("OUTPUTS"), list) << "its map is there as soon as the load has ended";
    EXPECT_EQ(client.Ask("START"), "OK");
    const std::string result = WaitForChange(client, "RESULT 0 bottom", "OK,INVALID,INVALID");
    EXPECT_EQ(Field(result, 1), Field(result, 2));
    EXPECT_EQ(client.Ask("RESULT height"), "ERROR,-999,\"there is no output height\"");
    ExpectEndWell(sensor.Process());
}

TEST(AsciiService, IsStartedByItsUserAlthoughTheJobLeavesItDisabled) {
    const TempFolder data;
    VorCommon::ArchiveStore job(data.File("jobs/bare.vrjob"));
    const std::string disabled = R"({"version":"1","vor:control":{"enabled":false}})";
    job.Write("/controls/ascii/config.json", disabled.data(), disabled.size());
    job.Commit();
    Program sensor(VirtualSensor::Command(data.Path().string(), {"--job", "bare", "--enable", "ascii", "--set",
                                                                 "ascii.port=0", "--set", "ascii.delimiter=;"}));
    const std::string line = sensor.WaitForLine("Service ascii (e-ascii):").value_or("none");
    TextClient client(VirtualSensor::PortOf(line, sensor));
    EXPECT_EQ(client.Ask("JOB"), "OK;\"bare.vrjob\"");
    const Answer unknown = RunToEnd(VirtualSensor::Command(TempFolder().Path().string(), {"--enable", "telex"}));
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.errors.find("--enable telex: unknown service."), std::string::npos) << unknown.errors;
}

TEST(AsciiService, IsStartedByTheDemoJob) {
    VirtualSensor sensor;
    const std::string line = sensor.Process().WaitForLine("Service ascii").value_or("none");
    EXPECT_TRUE(line.starts_with("Service ascii (e-ascii): Running at tcp://127.0.0.1:")) << line;
    EXPECT_NE(sensor.WaitForPort(), 0);
}

} // namespace
} // namespace Tests
