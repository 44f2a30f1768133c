#include "VorApi/Path.h"

#include "Tests/Support/Failure.h"

#include <gtest/gtest.h>

using VorApi::Path;

TEST(PathTest, FormatPutsTheValuesInPlaceOfTheParametersInOrder) {
    EXPECT_EQ(Path::Format("/controls/:protocol/commands/:command", {"modbus", "add"}),
              "/controls/modbus/commands/add");
    EXPECT_EQ(Path::Format("/controls", {}), "/controls");
    EXPECT_EQ(Path::Format("/", {}), "/");
}

TEST(PathTest, FormatCodesWhatIsNoPlainText) {
    EXPECT_EQ(Path::Format("/x/:y", {"a/b c%\xC3\xA9:"}), "/x/a%2Fb%20c%25%C3%A9%3A");
    EXPECT_EQ(Path::Format("/x/:y", {"aZ09-._~"}), "/x/aZ09-._~");
}

TEST(PathTest, FormatNeedsOneValueForEachParameter) {
    EXPECT_FAILURE(Path::Format("/x/:y/:z", {"1"}), yERROR_PARAMETER,
                   "The path /x/:y/:z has more parameters than the 1 values.");
    EXPECT_FAILURE(Path::Format("/x/:y", {"1", "2"}), yERROR_PARAMETER,
                   "The path /x/:y has fewer parameters than the 2 values.");
}

TEST(PathTest, SplitKeepsEmptyStepsExceptBehindASlashAtTheEnd) {
    using Steps = std::vector<std::string_view>;
    EXPECT_EQ(Path::Split("/"), Steps{});
    EXPECT_EQ(Path::Split("/a/b"), (Steps{"a", "b"}));
    EXPECT_EQ(Path::Split("/a/b/"), (Steps{"a", "b"}));
    EXPECT_EQ(Path::Split("/a//b"), (Steps{"a", "", "b"}));
    EXPECT_EQ(Path::Split("//"), Steps{""});
    EXPECT_EQ(Tests::StatusOf([] { Path::Split("a"); }), yERROR_PARAMETER);
    EXPECT_EQ(Tests::StatusOf([] { Path::Split(""); }), yERROR_PARAMETER);
}

TEST(PathTest, DecodeIsTheInverseOfEncode) {
    for (const std::string text : {"modbus", "a/b c%", "\xC3\xA9\xE2\x82\xAC", ":x", ""}) {
        EXPECT_EQ(Path::Decode(Path::Encode(text)), text);
    }
    EXPECT_EQ(Path::Decode("%2f%2F+"), "//+");
}

TEST(PathTest, DecodeRefusesBadCodesAndWhatIsNoPrintableText) {
    for (const char* const bad : {"%", "a%4", "%zz", "%+1", "% 1", "%-1", "%0x"}) {
        EXPECT_EQ(Tests::StatusOf([&] { Path::Decode(bad); }), yERROR_FORMAT) << bad;
    }
    for (const char* const bad : {"a%00b", "%0A", "%7F", "%FF", "%C0%80", "\xC3"}) {
        EXPECT_EQ(Tests::StatusOf([&] { Path::Decode(bad); }), yERROR_FORMAT) << bad;
    }
    EXPECT_FAILURE(Path::Decode("a%0Ab"), yERROR_FORMAT, "The step a%0Ab of the path is no printable UTF-8.");
}
