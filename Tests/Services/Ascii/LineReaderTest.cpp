#include "Services/Ascii/LineReader.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Ascii {
namespace {

/// The lines of a stream, and the other results in brackets.
std::vector<std::string> Lines(const std::string& stream, const std::string& terminator = "\r\n") {
    LineReader reader(terminator);
    std::vector<std::string> lines;
    for (const char character : stream) {
        switch (reader.Feed(static_cast<unsigned char>(character))) {
        case LineReader::Status::Incomplete:
            break;
        case LineReader::Status::Line:
            lines.emplace_back(reader.Line());
            break;
        case LineReader::Status::TooLong:
            lines.emplace_back("[too long]");
            break;
        case LineReader::Status::Invalid:
            lines.emplace_back("[invalid]");
            break;
        }
    }
    return lines;
}

using Texts = std::vector<std::string>;

TEST(LineReader, EndsALineAtEachHabitOfLineEnds) {
    EXPECT_EQ(Lines("START\r\nSTOP\r\n"), (Texts{"START", "STOP"}));
    EXPECT_EQ(Lines("START\nSTOP\n"), (Texts{"START", "STOP"}));
    EXPECT_EQ(Lines("START\rSTOP\r"), (Texts{"START", "STOP"}));
    EXPECT_EQ(Lines(std::string("START\r\0STOP\r\0", 12)), (Texts{"START", "STOP"}));
    EXPECT_EQ(Lines("START\n\rSTOP\n\r"), (Texts{"START", "STOP"}));
}

TEST(LineReader, KeepsALineThatHasNotEnded) {
    EXPECT_EQ(Lines("STA"), Texts());
    EXPECT_EQ(Lines("STA\nRT"), (Texts{"STA"}));
}

TEST(LineReader, PassesOverEmptyLinesAndBlanksAtTheEnds) {
    EXPECT_EQ(Lines("\r\n\r\n \t \r\n  START \t\r\n"), (Texts{"START"}));
    EXPECT_EQ(Lines("RESULT 1\t2\n"), (Texts{"RESULT 1\t2"})) << "blanks inside stay";
}

TEST(LineReader, EndsALineAtEachCharacterOfTheTerminatorToo) {
    EXPECT_EQ(Lines("START\x03STOP\n", "\x03"), (Texts{"START", "STOP"}));
    EXPECT_EQ(Lines("START\x03\x04STOP\x04", "\x03\x04"), (Texts{"START", "STOP"}));
    EXPECT_EQ(Lines("START\x03\n"), (Texts{"[invalid]"})) << "otherwise it is a control character";
}

TEST(LineReader, SwallowsWhatATelnetClientNegotiates) {
    EXPECT_EQ(Lines("\xFF\xFD\x03\xFF\xFB\x18START\r\n"), (Texts{"START"}));
    EXPECT_EQ(Lines("STA\xFF\xFC\x22RT\r\n"), (Texts{"START"})) << "inside a line";
    EXPECT_EQ(Lines("\xFF\xF1START\r\n"), (Texts{"START"})) << "a command of two bytes";
    EXPECT_EQ(Lines("\xFF\xFA\x18\nSTOP\r\n\xFF\xFFx\xFF\xF0START\r\n"), (Texts{"START"})) << "a subnegotiation";
    EXPECT_EQ(Lines("\xFF\xFB\nSTART\n"), (Texts{"START"})) << "an option that looks like a line end";
}

TEST(LineReader, RefusesALineWithAnEscapedByteOf255) {
    EXPECT_EQ(Lines("ST\xFF\xFF\nSTOP\n"), (Texts{"[invalid]", "STOP"}));
}

TEST(LineReader, RefusesControlCharactersAndWhatIsNotUtf8) {
    EXPECT_EQ(Lines("ST\x1BRT\nSTOP\n"), (Texts{"[invalid]", "STOP"}));
    EXPECT_EQ(Lines("ST\x7FRT\nSTOP\n"), (Texts{"[invalid]", "STOP"}));
    EXPECT_EQ(Lines("ST\xC0\x80\nSTOP\n"), (Texts{"[invalid]", "STOP"}));
    EXPECT_EQ(Lines("LOADJOB Höhe\n"), (Texts{"LOADJOB Höhe"}));
}

TEST(LineReader, TellsALineThatIsTooLongOnceAndGoesOnBehindIt) {
    const std::string longest(LineReader::MaxLineSize, 'x');
    EXPECT_EQ(Lines(longest + "\nSTOP\n"), (Texts{longest, "STOP"}));
    EXPECT_EQ(Lines(longest + "y\nSTOP\n"), (Texts{"[too long]", "STOP"}));
    EXPECT_EQ(Lines(longest + longest + longest + "\r\nSTOP\n"), (Texts{"[too long]", "STOP"}));
    EXPECT_EQ(Lines(longest + "\xFF\xF1\nSTOP\n"), (Texts{longest, "STOP"})) << "a Telnet command takes no room";
}

TEST(LineReader, TakesAnotherTerminatorFromTheNextByteOn) {
    LineReader reader("\x03");
    reader.Feed('A');
    reader.SetTerminator("\x04");
    EXPECT_EQ(reader.Feed(4), LineReader::Status::Line);
    EXPECT_EQ(reader.Line(), "A");
}

} // namespace
} // namespace Services::Ascii
