#include "Services/Ascii/Request.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Ascii {
namespace {

/// The words, quoted ones with their quotation marks; "refused" when they can't be parsed.
std::vector<std::string> Words(const std::string& rest, const std::string& delimiter = ",") {
    const auto arguments = ParseArguments(rest, delimiter);
    if (!arguments) {
        return {"refused"};
    }
    std::vector<std::string> words;
    for (const Argument& argument : *arguments) {
        words.push_back(argument.isQuoted ? "\"" + argument.text + "\"" : argument.text);
    }
    return words;
}

using Texts = std::vector<std::string>;

TEST(Request, CutsTheCommandFromTheRest) {
    const Request request = Request::Parse("LOADJOB  my job", ",");
    EXPECT_EQ(request.command, "LOADJOB");
    EXPECT_EQ(request.rest, "my job");
    EXPECT_EQ(Request::Parse("START", ",").command, "START");
    EXPECT_EQ(Request::Parse("START", ",").rest, "");
    EXPECT_EQ(Request::Parse("RESULT,1,2", ",").command, "RESULT");
    EXPECT_EQ(Request::Parse("RESULT,1,2", ",").rest, "1,2");
    EXPECT_EQ(Request::Parse("RESULT::1::2", "::").rest, "1::2");
    EXPECT_EQ(Request::Parse("RESULT\t1", ",").rest, "1");
    EXPECT_EQ(Request::Parse("RESULT;1", ",").command, "RESULT;1") << "another character is no delimiter";
}

TEST(Request, CutsArgumentsAtBlanksAndDelimiters) {
    EXPECT_EQ(Words("1 2,3 , 4\t5"), (Texts{"1", "2", "3", "4", "5"}));
    EXPECT_EQ(Words(""), Texts());
    EXPECT_EQ(Words(" , ,"), Texts());
    EXPECT_EQ(Words("1::2:3", "::"), (Texts{"1", "2:3"}));
}

TEST(Request, TakesTextsInQuotationMarksWhole) {
    EXPECT_EQ(Words("\"my height\",2"), (Texts{"\"my height\"", "2"}));
    EXPECT_EQ(Words("\"say \"\"hi\"\"\" x"), (Texts{"\"say \"hi\"\"", "x"}));
    EXPECT_EQ(Words("\"\""), (Texts{"\"\""}));
}

TEST(Request, RefusesAQuotationMarkThatIsMissingOrInTheWrongPlace) {
    EXPECT_EQ(Words("\"my height"), (Texts{"refused"}));
    EXPECT_EQ(Words("\"a\"b"), (Texts{"refused"}));
    EXPECT_EQ(Words("a\"b\""), (Texts{"refused"}));
    EXPECT_EQ(Words("\""), (Texts{"refused"}));
}

TEST(Request, TakesTheRestAsOneText) {
    EXPECT_EQ(ParseText("my job, second"), "my job, second");
    EXPECT_EQ(ParseText("\"my \"\"job\"\"\""), "my \"job\"");
    EXPECT_EQ(ParseText(""), "");
    EXPECT_EQ(ParseText("\"my job\" x"), std::nullopt);
    EXPECT_EQ(ParseText("\"my job"), std::nullopt);
}

} // namespace
} // namespace Services::Ascii
