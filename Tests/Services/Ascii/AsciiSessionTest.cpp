// The requests of one client and the answers to it.

#include "Services/Ascii/AsciiSession.h"

#include "Tests/Services/Ascii/FakeSensor.h"
#include "Tests/Support/MarkdownTable.h"
#include "Tests/Support/Results.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Ascii {
namespace {

using Tests::Results;
using Texts = std::vector<std::string>;

class AsciiSessionTest : public testing::Test {
protected:
    AsciiSessionTest() {
        outputs.Replace({{.id = "0", .isBlock = true, .kind = ValueKind::Measurement, .dataSource = "max"},
                         {.id = "1", .isBlock = true, .kind = ValueKind::Value, .dataSource = "min"},
                         {.id = "height", .dataSource = "max"},
                         {.id = "my height", .dataSource = "min"}});
        outputs.Process(Results().Measurement("max", 1.5).Measurement("min", -2).Get());
    }

    /// Passes bytes to the session as the server does; returns how many requests it answered.
    std::size_t Receive(AsciiSession& to, const std::string& text) {
        std::size_t answered = 0;
        std::size_t begin = 0;
        while (begin < text.size()) {
            const auto space = to.ReceiveSpace();
            const std::size_t size = std::min(space.size(), text.size() - begin);
            std::copy_n(text.begin() + static_cast<std::ptrdiff_t>(begin), size, space.begin());
            to.Received(size);
            begin += size;
            answered += to.Process();
            if (size == 0) {
                ADD_FAILURE() << "there is no room";
                break;
            }
        }
        return answered;
    }

    std::string ReadReplies(AsciiSession& from) {
        std::string all;
        for (auto replies = from.Replies(); !replies.empty(); replies = from.Replies()) {
            all.append(replies.begin(), replies.end());
            from.Sent(replies.size());
            from.Process();
        }
        return all;
    }

    std::string Ask(const std::string& request) {
        EXPECT_EQ(Receive(session, request + "\r\n"), 1u);
        std::string answer = ReadReplies(session);
        EXPECT_TRUE(answer.ends_with("\r\n")) << answer;
        answer.erase(answer.size() - std::min<std::size_t>(answer.size(), 2));
        return answer;
    }

    Common::ServiceCounters counters;
    Outputs outputs{counters};
    FakeSensor sensor;
    RequestHandler handler{outputs, sensor, counters, LineFormat()};
    AsciiSession session{handler, true};
};

TEST_F(AsciiSessionTest, RunsEachCommand) {
    const std::vector<std::pair<std::string, std::string>> commands = {{"START", "1 "},
                                                                       {"stop", "2 "},
                                                                       {"Trigger", "6 "},
                                                                       {"TRIGGER left", "6 left"},
                                                                       {"ALIGN", "3 "},
                                                                       {"ALIGN \"the left\"", "3 the left"},
                                                                       {"CLEARALIGN", "4 "},
                                                                       {"LOADJOB part 7, left", "5 part 7, left"},
                                                                       {"LOADJOB \"part 7\"", "5 part 7"},
                                                                       {"LOADJOB,part", "5 part"},
                                                                       {"USERDATA serial 4711", "9 serial 4711"}};
    for (const auto& [request, command] : commands) {
        EXPECT_EQ(Ask(request), "OK") << request;
        EXPECT_EQ(sensor.NewCommands(), (Texts{command})) << request;
    }
    EXPECT_EQ(counters.requests, commands.size());
    EXPECT_EQ(counters.failed, 0u);
}

TEST_F(AsciiSessionTest, TellsTheToolsHowMuchUserDataThereIs) {
    EXPECT_EQ(Ask("USERDATA Höhe"), "OK");
    EXPECT_EQ(sensor.commands.at(0).commandArgsSize, 5u);
    EXPECT_EQ(Ask("USERDATA " + std::string(468, 'x')), "OK");
    EXPECT_EQ(sensor.commands.at(1).commandArgsSize, 468u);
    EXPECT_EQ(Ask("USERDATA " + std::string(469, 'x')), "ERROR,-997,\"the text is longer than 468 bytes\"");
    EXPECT_EQ(Ask("USERDATA"), "ERROR,-997,\"the text is missing: USERDATA TEXT\"");
    EXPECT_EQ(sensor.commands.size(), 2u);
}

TEST_F(AsciiSessionTest, AnswersACommandWhenItEnds) {
    sensor.endsAtOnce = false;
    EXPECT_EQ(Receive(session, "ALIGN\r\n"), 0u);
    EXPECT_EQ(ReadReplies(session), "");
    EXPECT_TRUE(session.IsWorking());
    sensor.End(yOK);
    EXPECT_EQ(session.Process(), 1u);
    EXPECT_EQ(ReadReplies(session), "OK\r\n");
    EXPECT_FALSE(session.IsWorking());
}

TEST_F(AsciiSessionTest, SaysWhyACommandFailed) {
    const std::vector<std::pair<yStatus, std::string>> failures = {
        {yERROR, "ERROR,0,\"the sensor couldn't start to scan\""},
        {yERROR_STATE, "ERROR,-1000,\"the sensor's state doesn't allow this\""},
        {yERROR_NOT_FOUND, "ERROR,-999,\"not found\""},
        {yERROR_COMMAND, "ERROR,-998,\"the sensor doesn't know this command\""},
        {yERROR_PARAMETER, "ERROR,-997,\"bad argument\""},
        {yERROR_UNIMPLEMENTED, "ERROR,-996,\"the sensor can't do this\""},
        {yERROR_TIMEOUT, "ERROR,-993,\"the sensor didn't answer in time\""},
        {yERROR_VERSION, "ERROR,-989,\"unsupported version\""},
        {yERROR_FORMAT, "ERROR,-984,\"bad format\""},
        {yERROR_BUSY, "ERROR,-976,\"busy: another operation of the sensor is in progress\""},
        {-12345, "ERROR,-12345,\"failed\""}};
    sensor.endsAtOnce = false;
    for (const auto& [status, answer] : failures) {
        Receive(session, "START\n");
        sensor.End(status);
        session.Process();
        EXPECT_EQ(ReadReplies(session), answer + "\r\n");
    }
    EXPECT_EQ(counters.failed, failures.size());
}

TEST_F(AsciiSessionTest, ThePageListsTheErrors) {
    const auto rows = Tests::MarkdownTable("Docs/ascii.md", {"Code", "Text, such as"});
    std::set<std::string> documented;
    for (const auto& [code, cells] : rows) {
        documented.insert(code);
    }
    std::set<std::string> known = {std::to_string(yERROR_SIZE), std::to_string(yERROR_READ_ONLY)};
    for (const auto& [status, text] : RequestHandler::Failures()) {
        const std::string code = std::to_string(status);
        known.insert(code);
        ASSERT_TRUE(rows.contains(code)) << code;
        EXPECT_NE(rows.at(code).at(1).find('`' + std::string(text) + '`'), std::string::npos) << text;
    }
    EXPECT_EQ(documented, known);
}

TEST_F(AsciiSessionTest, SaysWhatACommandThatJustFailedWasAbout) {
    const std::vector<std::pair<std::string, std::string>> failures = {
        {"STOP", "the sensor couldn't stop"},
        {"TRIGGER", "the trigger wasn't taken; the sensor has to scan in triggered mode"},
        {"ALIGN", "the sensor couldn't be aligned"},
        {"CLEARALIGN", "the alignment couldn't be cleared"},
        {"LOADJOB x", "the job couldn't be loaded; the former one goes on"},
        {"USERDATA x", "the text couldn't be handed over"}};
    sensor.endsAtOnce = false;
    for (const auto& [request, text] : failures) {
        Receive(session, request + "\n");
        sensor.End(yERROR);
        session.Process();
        EXPECT_EQ(ReadReplies(session), "ERROR,0,\"" + text + "\"\r\n");
    }
    sensor.stateStatus = yERROR;
    EXPECT_EQ(Ask("STATE"), "ERROR,0,\"failed; the sensor's log says why\"");
}

TEST_F(AsciiSessionTest, LetsTheLinesBehindACommandWaitForItsEnd) {
    sensor.endsAtOnce = false;
    EXPECT_EQ(Receive(session, "START\nRESULT 1\nSTOP\nVERSION\n"), 0u);
    sensor.End(yOK);
    EXPECT_EQ(session.Process(), 2u);
    EXPECT_EQ(ReadReplies(session), "OK\r\nOK,-2.000\r\n");
    EXPECT_EQ(sensor.NewCommands(), (Texts{"1 ", "2 "}));
    sensor.End(yERROR_STATE);
    session.Process();
    EXPECT_EQ(ReadReplies(session),
              "ERROR,-1000,\"the sensor's state doesn't allow this\"\r\nOK,\"1.0.0.0\",\"0.1.0\"\r\n");
}

TEST_F(AsciiSessionTest, AnswersBusyWhileACommandOfAnotherClientRuns) {
    AsciiSession other(handler, true);
    sensor.endsAtOnce = false;
    Receive(session, "ALIGN\n");
    EXPECT_EQ(Receive(other, "START\nRESULT 1\n"), 2u);
    EXPECT_EQ(ReadReplies(other), "ERROR,-976,\"busy: another command is in progress\"\r\nOK,-2.000\r\n");
    sensor.End(yOK);
    session.Process();
    EXPECT_EQ(ReadReplies(session), "OK\r\n");
    Receive(other, "START\n");
    sensor.End(yOK);
    other.Process();
    EXPECT_EQ(ReadReplies(other), "OK\r\n");
}

TEST_F(AsciiSessionTest, LeavesACommandAloneWhenItsClientGoes) {
    sensor.endsAtOnce = false;
    {
        AsciiSession gone(handler, true);
        Receive(gone, "ALIGN\n");
    }
    EXPECT_EQ(Ask("START"), "ERROR,-976,\"busy: another command is in progress\"");
    sensor.End(yOK);
    sensor.endsAtOnce = true;
    EXPECT_EQ(Ask("START"), "OK");
}

TEST_F(AsciiSessionTest, RefusesCommandsOfAClientThatMayOnlyRead) {
    session.SetMayWrite(false);
    for (const char* request : {"START", "STOP", "TRIGGER", "ALIGN", "CLEARALIGN", "LOADJOB x", "USERDATA x"}) {
        EXPECT_EQ(Ask(request), "ERROR,-983,\"clients of your network may not command the sensor\"") << request;
    }
    EXPECT_EQ(sensor.NewCommands(), Texts());
    EXPECT_EQ(Ask("RESULT height"), "OK,1.500");
    EXPECT_EQ(Ask("PUSH ON"), "OK");
    EXPECT_EQ(Ask("PUSH OFF"), "OK");
    EXPECT_EQ(Ask("STATE"), "OK,SCANNING,ALIGNED,IDLE,\"demo \"\"1\"\".vrjob\"");
    session.SetMayWrite(true);
    EXPECT_EQ(Ask("START"), "OK");
}

TEST_F(AsciiSessionTest, TellsResultsByNumberAndByName) {
    EXPECT_EQ(Ask("RESULT"), "OK,1.500,1,-2.000");
    EXPECT_EQ(Ask("RESULT 1"), "OK,-2.000");
    EXPECT_EQ(Ask("RESULT height"), "OK,1.500");
    EXPECT_EQ(Ask("RESULT 1,height \"my height\""), "OK,-2.000,1.500,-2.000");
    EXPECT_EQ(Ask("RESULT width"), "ERROR,-999,\"there is no output width\"");
    EXPECT_EQ(Ask("RESULT 2"), "ERROR,-999,\"there is no output 2\"");
    EXPECT_EQ(Ask("RESULT \"my height"), "ERROR,-984,\"a quotation mark is missing, or stands within a word\"");
    EXPECT_EQ(Ask("STAMP"), "ERROR,-999,\"no output is a stamp\"");
    EXPECT_EQ(Ask("OUTPUTS"), "OK,0,\"max\",1,\"min\",\"height\",\"max\",\"my height\",\"min\"");
}

TEST_F(AsciiSessionTest, TellsAboutTheSensorAndItself) {
    EXPECT_EQ(Ask("STATE"), "OK,SCANNING,ALIGNED,IDLE,\"demo \"\"1\"\".vrjob\"");
    EXPECT_EQ(Ask("status"), "OK,SCANNING,ALIGNED,IDLE,\"demo \"\"1\"\".vrjob\"");
    EXPECT_EQ(Ask("JOB"), "OK,\"demo \"\"1\"\".vrjob\"");
    EXPECT_EQ(Ask("VERSION"), "OK,\"1.0.0.0\",\"" VOR_VERSION "\"");
    EXPECT_EQ(Ask("HELP"), "OK,START,STOP,TRIGGER,ALIGN,CLEARALIGN,LOADJOB,USERDATA,RESULT,STAMP,OUTPUTS,PUSH,STATE,"
                           "STATUS,JOB,READ,COUNTERS,VERSION,HELP,QUIT");
    EXPECT_EQ(Ask("HELP loadjob"), "OK,\"LOADJOB NAME\",\"Loads a job.\"");
    sensor.stateStatus = yERROR_TIMEOUT;
    EXPECT_EQ(Ask("STATE"), "ERROR,-993,\"the sensor didn't answer in time\"");
}

TEST_F(AsciiSessionTest, ReadsResourcesWhenThatIsAllowed) {
    EXPECT_EQ(Ask("READ /controls/ascii"), "ERROR,-996,\"READ is off; the parameter allowRead turns it on\"");
    handler.SetAllowsRead(true);
    EXPECT_EQ(Ask("READ /controls/ascii"), "OK,{\"a\":[1,2]}");
    EXPECT_EQ(Ask("read \"/sensor/scan#/values/0\""), "OK,{\"a\":[1,2]}");
    EXPECT_EQ(Ask("READ /controls/ascii#/a,b c"), "OK,{\"a\":[1,2]}") << "the rest of the line is one text";
    const Texts targets = {"/controls/ascii ", "/sensor/scan /values/0", "/controls/ascii /a,b c"};
    EXPECT_EQ(sensor.targets, targets);
    session.SetMayWrite(false);
    EXPECT_EQ(Ask("READ /controls/ascii"), "ERROR,-983,\"clients of your network may not read resources\"");
    session.SetMayWrite(true);
    EXPECT_EQ(Ask("READ"), "ERROR,-997,\"the path is missing: READ PATH[#/MEMBER]\"");
    EXPECT_EQ(Ask("READ \"/controls"), "ERROR,-984,\"a quotation mark is missing, or stands within a word\"");
    EXPECT_EQ(Ask("READ /sensor/jobs"),
              "ERROR,-997,\"READ reads /controls, /sensor/scan and what is below them, and nothing else\"");
    sensor.hasRoomForReads = false;
    EXPECT_EQ(Ask("READ /controls/ascii"), "ERROR,-976,\"busy: 8 reads wait already\"");
    EXPECT_EQ(sensor.targets, targets) << "what is refused isn't read";
}

TEST_F(AsciiSessionTest, SendsTheLongestDocument) {
    handler.SetAllowsRead(true);
    sensor.document = std::string(ResourceReader::MaxAnswerSize, '7');
    EXPECT_EQ(Receive(session, "READ /controls\nREAD /controls\nVERSION\n"), 2u) << "the third one has no room";
    const std::string answer = "OK," + sensor.document + "\r\n";
    EXPECT_EQ(ReadReplies(session), answer + answer + "OK,\"1.0.0.0\",\"" VOR_VERSION "\"\r\n");
}

TEST_F(AsciiSessionTest, CountsWhatItsClientsDo) {
    counters.connected = 2;
    counters.refused = 3;
    EXPECT_EQ(Ask("COUNTERS"), "OK,2,3,1,0,0,0");
    EXPECT_EQ(Ask("NOTHING").substr(0, 6), "ERROR,");
    const auto queue = std::make_shared<PushQueue>(1);
    outputs.Subscribe(queue, {});
    outputs.Process(Results().Measurement("max", 1).Get());
    counters.startTime = yTime_Monotonic() - std::uint64_t{3'700'000'000'000};
    EXPECT_EQ(Ask("COUNTERS"), "OK,2,3,3,1,1,3700");
    EXPECT_EQ(Ask("COUNTERS now"), "ERROR,-997,\"too many arguments\"");
    counters.Reset();
    EXPECT_EQ(Ask("COUNTERS"), "OK,0,0,1,0,0,0");
}

TEST_F(AsciiSessionTest, RefusesWhatItDoesNotUnderstand) {
    EXPECT_EQ(Ask("SELFDESTRUCT"), "ERROR,-998,\"unknown command; HELP lists the commands\"");
    EXPECT_EQ(Ask("HELP nothing"), "ERROR,-998,\"unknown command; HELP lists the commands\"");
    EXPECT_EQ(Ask("START now"), "ERROR,-997,\"too many arguments\"");
    EXPECT_EQ(Ask("ALIGN a b"), "ERROR,-997,\"too many arguments\"");
    EXPECT_EQ(Ask("ALIGN " + std::string(492, 'x')), "ERROR,-997,\"the name is too long\"");
    EXPECT_EQ(Ask("LOADJOB " + std::string(492, 'x')), "ERROR,-997,\"the name is too long\"");
    EXPECT_EQ(Ask("LOADJOB"), "ERROR,-997,\"the name of the job is missing: LOADJOB NAME\"");
    EXPECT_EQ(Ask("LOADJOB \"\""), "ERROR,-997,\"the name of the job is missing: LOADJOB NAME\"");
    EXPECT_EQ(Ask("PUSH maybe"), "ERROR,-997,\"PUSH takes ON, with outputs if you like, or OFF\"");
    EXPECT_EQ(Ask("PUSH OFF 1"), "ERROR,-997,\"PUSH takes ON, with outputs if you like, or OFF\"");
    EXPECT_EQ(Ask("PUSH ON width"), "ERROR,-999,\"there is no output width\"");
    EXPECT_EQ(Ask(std::string(1025, 'x')), "ERROR,-992,\"the line is longer than 1024 bytes\"");
    EXPECT_EQ(Ask("STA\x1BRT"), "ERROR,-984,\"the line has characters that aren't text\"");
    EXPECT_EQ(sensor.NewCommands(), Texts());
    EXPECT_EQ(counters.failed, counters.requests);
}

TEST_F(AsciiSessionTest, KeepsTheDelimiterOfAnAnswerOutOfItsTexts) {
    handler.SetFormat({.delimiter = "; ", .terminator = "\n"});
    Receive(session, "RESULT a\"b\nRESULT x;y\nHELP; JOB\n");
    EXPECT_EQ(ReadReplies(session), "ERROR; -984; \"a quotation mark is missing, or stands within a word\"\n"
                                    "ERROR; -999; \"there is no output x;y\"\n"
                                    "OK; \"JOB\"; \"Returns the loaded job.\"\n");
}

TEST_F(AsciiSessionTest, EndsLinesWithTheTerminatorThatIsSet) {
    handler.SetFormat({.terminator = "\x03"});
    Receive(session, "RESULT 1\x03VERSION\x03");
    EXPECT_EQ(ReadReplies(session), "OK,-2.000\x03OK,\"1.0.0.0\",\"0.1.0\"\x03");
}

TEST_F(AsciiSessionTest, SendsALineAFrameWhilePushIsOn) {
    EXPECT_EQ(Ask("PUSH"), "OK,OFF,0");
    EXPECT_EQ(Ask("PUSH ON height 1"), "OK");
    EXPECT_TRUE(session.IsSubscribed());
    EXPECT_EQ(Ask("PUSH"), "OK,ON,0");
    EXPECT_TRUE(outputs.Process(Results().Measurement("max", 3).Get()));
    EXPECT_EQ(session.Process(), 0u) << "a frame is no request";
    EXPECT_EQ(ReadReplies(session), "DATA,2,3.000,-2.000\r\n");
    outputs.Process(Results().Measurement("max", 4).Get());
    Receive(session, "PUSH OFF\r\n");
    EXPECT_EQ(ReadReplies(session), "OK\r\n") << "no frame comes behind the answer";
    EXPECT_FALSE(session.IsSubscribed());
    EXPECT_FALSE(outputs.Process(Results().Measurement("max", 5).Get()));
    EXPECT_EQ(session.Process(), 0u);
    EXPECT_EQ(ReadReplies(session), "");
}

TEST_F(AsciiSessionTest, TakesAnotherChoiceOfOutputsWhilePushIsOn) {
    EXPECT_EQ(Ask("PUSH ON height"), "OK");
    EXPECT_EQ(Ask("PUSH ON"), "OK");
    EXPECT_EQ(Ask("PUSH ON nothing"), "ERROR,-999,\"there is no output nothing\"") << "the former choice stays";
    outputs.Process(Results().Measurement("max", 3).Get());
    session.Process();
    EXPECT_EQ(ReadReplies(session), "DATA,2,3.000,1,-2.000\r\n");
}

TEST_F(AsciiSessionTest, DropsFramesForAClientThatDoesNotTakeThemAndCountsThem) {
    EXPECT_EQ(Ask("PUSH ON height"), "OK");
    constexpr std::uint64_t Frames = 20000;
    for (std::uint64_t i = 0; i < Frames; ++i) {
        outputs.Process(Results().Measurement("max", 3).Get());
        session.Process();
    }
    const std::uint64_t dropped = counters.linesDropped;
    EXPECT_GT(dropped, 0u);
    const std::string lines = ReadReplies(session);
    EXPECT_EQ(static_cast<std::uint64_t>(std::ranges::count(lines, '\n')), Frames - dropped);
    EXPECT_TRUE(lines.starts_with("DATA,2,3.000\r\n"));
    EXPECT_EQ(Ask("PUSH"), "OK,ON," + std::to_string(dropped));
    outputs.Process(Results().Measurement("max", 3).Get());
    session.Process();
    EXPECT_EQ(ReadReplies(session), "DATA," + std::to_string(Frames + 2) + ",3.000\r\n")
        << "the number shows what was lost";
}

TEST_F(AsciiSessionTest, TakesNoRequestsWhileAnswersFillItsBuffer) {
    std::string requests;
    for (int i = 0; i < 200; ++i) {
        requests += "HELP\n";
    }
    EXPECT_EQ(Receive(session, requests), 200u);
    std::size_t rounds = 0;
    for (; session.ReceiveSpace().size() > 5 && rounds < 100000; ++rounds) {
        const auto space = session.ReceiveSpace();
        std::copy_n("HELP\n", 5, space.begin());
        session.Received(5);
        session.Process();
    }
    EXPECT_LT(rounds, 100000u) << "it stops taking requests";
    const std::string answers = ReadReplies(session);
    EXPECT_EQ(std::ranges::count(answers, '\n'), static_cast<std::ptrdiff_t>(200 + rounds)) << "none is lost";
}

TEST_F(AsciiSessionTest, ClosesAfterTheAnswerToQuit) {
    Receive(session, "PUSH ON\nQUIT\nSTART\n");
    EXPECT_EQ(ReadReplies(session), "OK\r\nOK\r\n");
    EXPECT_TRUE(session.Broken());
    EXPECT_EQ(sensor.NewCommands(), Texts());
    EXPECT_FALSE(outputs.Process(Results().Get()));
}

TEST_F(AsciiSessionTest, ForgetsItsFramesWhenItGoes) {
    {
        AsciiSession gone(handler, true);
        Receive(gone, "PUSH ON\n");
    }
    EXPECT_FALSE(outputs.Process(Results().Get()));
}

TEST_F(AsciiSessionTest, AnswersTheSameHoweverTheStreamIsCut) {
    const std::string stream =
        "\xFF\xFD\x03RESULT height\r\nVERSION\r\n\r\nnonsense\n\xFF\xFB\x01STOP\rRESULT \"my height\"\n";
    const auto run = [&](std::size_t step) {
        AsciiSession each(handler, true);
        std::string all;
        for (std::size_t at = 0; at < stream.size(); at += step) {
            Receive(each, stream.substr(at, step));
            all += ReadReplies(each);
        }
        return all;
    };
    const std::string whole = run(stream.size());
    EXPECT_EQ(std::ranges::count(whole, '\n'), 5);
    for (std::size_t step = 1; step < stream.size(); ++step) {
        EXPECT_EQ(run(step), whole) << step;
    }
}

} // namespace
} // namespace Services::Ascii
