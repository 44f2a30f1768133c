#include "Sensor/Scan/RecordingParser.h"

#include "Tests/Support/BuildFolders.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

namespace Sensor::Scan {
namespace {

Recording Parse(std::string_view text) {
    return RecordingParser::Parse(text, "part.csv");
}

std::string Refusal(std::string_view text) {
    try {
        Parse(text);
    } catch (const StartError& error) {
        return error.what();
    }
    return "";
}

TEST(RecordingParser, RowsOfAFrameFormOneProfile) {
    const Recording recording = Parse("frame,x,z\n0,1.5,-2\n0,2,3e1\n1,-.5,0.25\n");

    EXPECT_EQ(recording.kind, RecordingKind::Profiles);
    EXPECT_TRUE(recording.names.empty());
    ASSERT_EQ(recording.frames.size(), 2U);
    ASSERT_EQ(recording.frames[0].points.size(), 2U);
    EXPECT_EQ(recording.frames[0].points[0].x, 1.5);
    EXPECT_EQ(recording.frames[0].points[0].z, -2.0);
    EXPECT_EQ(recording.frames[0].points[1].z, 30.0);
    ASSERT_EQ(recording.frames[1].points.size(), 1U);
    EXPECT_EQ(recording.frames[1].points[0].x, -0.5);
    EXPECT_EQ(recording.RowCount(), 3U);
}

TEST(RecordingParser, NamesAreInOrderOfFirstAppearance) {
    const Recording recording = Parse("frame,name,value\n0,width,1\n0,angle,2\n1,angle,3\n1,Öffnung,4\n");

    EXPECT_EQ(recording.kind, RecordingKind::Values);
    EXPECT_EQ(recording.names, (std::vector<std::string>{"width", "angle", "Öffnung"}));
    ASSERT_EQ(recording.frames.size(), 2U);
    ASSERT_EQ(recording.frames[1].values.size(), 2U);
    EXPECT_EQ(recording.frames[1].values[0].name, 1U);
    EXPECT_EQ(recording.frames[1].values[0].value, 3.0);
    EXPECT_EQ(recording.frames[1].values[1].name, 2U);
    EXPECT_EQ(recording.RowCount(), 4U);
}

TEST(RecordingParser, FrameNumbersMaySkip) {
    EXPECT_EQ(Parse("frame,x,z\n4,0,0\n9,0,0\n").frames.size(), 2U);
}

TEST(RecordingParser, TakesOtherLineEndsAMarkAndAMissingLastLineEnd) {
    const Recording recording = Parse("\xEF\xBB\xBF"
                                      "frame,x,z\r\n0,1,2\r\n1,3,4");
    ASSERT_EQ(recording.frames.size(), 2U);
    EXPECT_EQ(recording.frames[1].points[0].z, 4.0);
}

TEST(RecordingParser, RefusesAnUnknownHeader) {
    EXPECT_EQ(Refusal("frame,x,y\n0,1,2\n"),
              "part.csv, line 1: unknown header \"frame,x,y\", expected \"frame,x,z\" or \"frame,name,value\".");
    EXPECT_NE(Refusal(""), "");
    EXPECT_NE(Refusal("0,1,2\n"), "");
}

TEST(RecordingParser, RefusesARecordingWithoutFrames) {
    EXPECT_EQ(Refusal("frame,x,z\n"), "part.csv, line 1: the recording holds no frame.");
}

TEST(RecordingParser, RefusesWhatIsNoNumber) {
    EXPECT_EQ(Refusal("frame,x,z\n0,1,2\n0,abc,2\n"), "part.csv, line 3: x \"abc\" isn't a number.");
    EXPECT_EQ(Refusal("frame,x,z\n0,1,2mm\n"), "part.csv, line 2: z \"2mm\" isn't a number.");
    EXPECT_EQ(Refusal("frame,name,value\n0,a,\n"), "part.csv, line 2: value \"\" isn't a number.");
    for (const char* text : {"nan", "inf", "-inf", "1e999", " 1", "1 ", "0x1p3", "1;5", "--1"}) {
        EXPECT_NE(Refusal(std::string("frame,x,z\n0,") + text + ",0\n"), "") << text;
    }
}

TEST(RecordingParser, RefusesABadFrame) {
    EXPECT_EQ(Refusal("frame,x,z\n-1,0,0\n"), "part.csv, line 2: frame \"-1\" isn't a whole number from 0.");
    for (const char* text : {"", "1.0", "a", "99999999999999999999", "+1"}) {
        EXPECT_NE(Refusal(std::string("frame,x,z\n") + text + ",0,0\n"), "") << text;
    }
}

TEST(RecordingParser, RefusesAFrameThatGoesBackwards) {
    EXPECT_EQ(Refusal("frame,x,z\n0,0,0\n2,0,0\n1,0,0\n"),
              "part.csv, line 4: frame 1 goes backwards, the row before has frame 2.");
}

TEST(RecordingParser, RefusesAnotherNumberOfFields) {
    for (const char* row : {"0,1", "0,1,2,3", "", "0"}) {
        EXPECT_EQ(Refusal(std::string("frame,x,z\n") + row + "\n0,1,2\n"), "part.csv, line 2: a row has three fields.")
            << row;
    }
}

TEST(RecordingParser, RefusesANameTwiceInAFrame) {
    EXPECT_EQ(Refusal("frame,name,value\n3,a,1\n3,b,1\n3,a,1\n"),
              "part.csv, line 4: name \"a\" stands twice in frame 3.");
}

TEST(RecordingParser, RefusesBadNames) {
    EXPECT_EQ(Refusal("frame,name,value\n0,,1\n"), "part.csv, line 2: the name is empty.");
    EXPECT_EQ(Refusal("frame,name,value\n0,stamp,1\n"),
              "part.csv, line 2: the name \"stamp\" is taken, each frame has a stamp of its own.");
    EXPECT_EQ(Refusal("frame,name,value\n0,\xC3\x28,1\n"), "part.csv, line 2: name \"?(\" isn't text in UTF-8.");
    EXPECT_EQ(Refusal("frame,name,value\n0,a\tb,1\n"), "part.csv, line 2: name \"a?b\" isn't text in UTF-8.");
    EXPECT_EQ(Refusal("frame,name,value\n0," + std::string(RecordingParser::MaxNameBytes, 'n') + ",1\n"), "");
    EXPECT_NE(Refusal("frame,name,value\n0," + std::string(RecordingParser::MaxNameBytes + 1, 'n') + ",1\n"), "");
}

TEST(RecordingParser, RefusesTooManyNames) {
    std::ostringstream text;
    text << "frame,name,value\n";
    for (std::size_t name = 0; name < RecordingParser::MaxNames; ++name) {
        text << "0,n" << name << ",1\n";
    }
    EXPECT_EQ(Refusal(text.str()), "");
    text << "1,onemore,1\n";
    EXPECT_EQ(Refusal(text.str()), "part.csv, line 1026: more than 1024 different names.");
}

TEST(RecordingParser, RefusesTooManyFrames) {
    std::string text = "frame,x,z\n";
    for (std::size_t frame = 0; frame <= RecordingParser::MaxFrames; ++frame) {
        text += std::to_string(frame) + ",0,0\n";
    }
    EXPECT_EQ(Refusal(text), "part.csv, line 1000002: more than 1000000 frames.");
}

TEST(RecordingParser, RefusesALineThatIsTooLong) {
    const std::string zeros(RecordingParser::MaxLineBytes, '0');
    EXPECT_EQ(Refusal("frame,x,z\n0,0," + zeros + "\n"), "part.csv, line 2: the line is longer than 1024 bytes.");
}

TEST(RecordingParser, CutsALongFieldInTheMessage) {
    EXPECT_EQ(Refusal("frame,x,z\n0," + std::string(100, 'a') + ",0\n"),
              "part.csv, line 2: x \"" + std::string(40, 'a') + "...\" isn't a number.");
}

TEST(RecordingParser, NamesAFileThatCantBeRead) {
    const std::string missing = ::testing::TempDir() + "no-such-recording.csv";
    try {
        RecordingParser::ReadFile(missing);
        FAIL() << "a missing file was read";
    } catch (const StartError& error) {
        EXPECT_EQ(error.what(), missing + ": the recording can't be opened (No such file or directory).");
    }
    EXPECT_THROW(RecordingParser::ReadFile(::testing::TempDir()), StartError);
}

TEST(RecordingParser, ReadsAFile) {
    const std::string path = ::testing::TempDir() + "recording-parser-test.csv";
    std::ofstream(path, std::ios::binary) << "frame,x,z\n0,1,2\n";
    EXPECT_EQ(RecordingParser::ReadFile(path).RowCount(), 1U);
    std::filesystem::remove(path);
}

TEST(RecordingParser, ReadsTheRealRecordings) {
    const std::filesystem::path folder = Tests::RecordingsFolder();
    if (!std::filesystem::exists(folder / "sweeps.csv")) {
        GTEST_SKIP() << "no recordings in " << folder;
    }
    const Recording sweeps = RecordingParser::ReadFile(folder / "sweeps.csv");
    EXPECT_EQ(sweeps.frames.size(), 150U);
    EXPECT_EQ(sweeps.RowCount(), 17166U);
    EXPECT_EQ(RecordingParser::ReadFile(folder / "boxes.csv").RowCount(), 361U);
    const Recording diameters = RecordingParser::ReadFile(folder / "diameters.csv");
    EXPECT_EQ(diameters.frames.size(), 120U);
    EXPECT_EQ(diameters.names, std::vector<std::string>{"diameter"});
}

} // namespace
} // namespace Sensor::Scan
