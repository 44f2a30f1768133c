#include "Services/Ascii/AsciiParams.h"

#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Services::Ascii {
namespace {

using nlohmann::json;
using Vor::Properties::JsonSerializer;

/// The text with which the parameters refuse the values; empty when they accept them.
std::string Refusal(const json& values) {
    AsciiParams params;
    try {
        JsonSerializer::Deserialize(params, values);
        params.Settings();
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_PARAMETER);
        return e.what();
    }
    return "";
}

TEST(AsciiParams, HasItsDefaults) {
    AsciiParams params;
    EXPECT_EQ(JsonSerializer::Serialize(params), json({{"address", "127.0.0.1"},
                                                       {"port", 8190},
                                                       {"delimiter", ","},
                                                       {"terminator", "\r\n"},
                                                       {"decimalSeparator", 0},
                                                       {"numberFormat", 0},
                                                       {"decimals", 3},
                                                       {"invalidText", "INVALID"},
                                                       {"maxConnections", 32},
                                                       {"maxConnectionsPerAddress", 16},
                                                       {"idleTimeout", 300},
                                                       {"readNetworks", {"0.0.0.0/0", "::/0"}},
                                                       {"writeNetworks", {"127.0.0.0/8", "::1/128"}},
                                                       {"triggerTimeout", 1000},
                                                       {"allowRead", false}}));
    JsonSerializer::Deserialize(params, {{"port", 1}, {"delimiter", ";"}, {"decimals", 0}, {"idleTimeout", 1}});
    params.Reset();
    EXPECT_EQ(JsonSerializer::Serialize(params), JsonSerializer::Serialize(AsciiParams()));
}

TEST(AsciiParams, GivesTheServerItsSettings) {
    AsciiParams params;
    JsonSerializer::Deserialize(params, {{"delimiter", " | "},
                                         {"terminator", "\x03"},
                                         {"decimalSeparator", 1},
                                         {"numberFormat", 2},
                                         {"decimals", 9},
                                         {"invalidText", "---"},
                                         {"maxConnectionsPerAddress", 3},
                                         {"idleTimeout", 7}});
    const LineFormat format = params.Format();
    EXPECT_EQ(format.delimiter, " | ");
    EXPECT_EQ(format.terminator, "\x03");
    EXPECT_EQ(format.decimalSeparator, ',');
    EXPECT_EQ(format.notation, Notation::Shortest);
    EXPECT_EQ(format.decimals, 9);
    EXPECT_EQ(format.invalidText, "---");
    EXPECT_EQ(params.Settings().port, 8190);
    EXPECT_EQ(params.Settings().maxConnectionsPerAddress, 3u);
    EXPECT_EQ(params.Settings().idleTimeOut, std::chrono::seconds(7));
}

TEST(AsciiParams, TakesWhatKeepsLinesReadable) {
    for (const char* delimiter : {";", "\t", " ", "::", "|", ", "}) {
        EXPECT_EQ(Refusal({{"delimiter", delimiter}}), "") << delimiter;
    }
    for (const char* terminator : {"\n", "\r", "\x03", "\x1E\n", "\x7F"}) {
        EXPECT_EQ(Refusal({{"terminator", terminator}}), "");
    }
    for (const char* text : {"", "NaN", "-999.999", "no value"}) {
        EXPECT_EQ(Refusal({{"invalidText", text}}), "") << text;
    }
}

TEST(AsciiParams, RefusesADelimiterThatStandsInValues) {
    for (const char* delimiter : {"", "a", "7", "\"", "-", "+", "_", "\n", "12345", ",,,,,", "ö"}) {
        EXPECT_EQ(
            Refusal({{"delimiter", delimiter}}),
            "Delimiter must be 1 to 4 characters, each a tab, a space or a printable one of ASCII that is neither a "
            "letter nor a digit nor \" + - _.")
            << delimiter;
    }
    EXPECT_EQ(Refusal({{"delimiter", "."}}), "the delimiter \".\" has the decimal separator in it");
    EXPECT_EQ(Refusal({{"decimalSeparator", 1}}), "the delimiter \",\" has the decimal separator in it");
    EXPECT_EQ(Refusal({{"decimalSeparator", 1}, {"delimiter", ";"}}), "");
}

TEST(AsciiParams, RefusesATerminatorThatStandsInLines) {
    for (const char* terminator : {"", ";", "\t", " ", "END", "\r\n\r\n\n"}) {
        EXPECT_EQ(Refusal({{"terminator", terminator}}),
                  "Line Terminator must be 1 to 4 control characters of ASCII other than NUL and tab.")
            << terminator;
    }
    EXPECT_EQ(Refusal({{"terminator", std::string("\0", 1)}}),
              "Line Terminator must be 1 to 4 control characters of ASCII other than NUL and tab.");
}

TEST(AsciiParams, RefusesAnInvalidTextThatCannotBeTold) {
    for (const char* text : {"\"", "a\nb", "ö", "123456789012345678901234567890123"}) {
        EXPECT_EQ(Refusal({{"invalidText", text}}),
                  "Text of an Invalid Value must be at most 32 printable characters of ASCII without quotation marks.")
            << text;
    }
    EXPECT_EQ(Refusal({{"invalidText", "a,b"}}), "the text of an invalid value, \"a,b\", has the delimiter in it");
}

TEST(AsciiParams, RefusesNumbersOutsideTheirLimits) {
    EXPECT_EQ(Refusal({{"decimals", 10}}), "Decimals is set to be greater than its maximum.");
    EXPECT_EQ(Refusal({{"decimalSeparator", 2}}), "Decimal Separator is set to a value outside of the enum.");
    EXPECT_EQ(Refusal({{"numberFormat", 3}}), "Number Format is set to a value outside of the enum.");
    EXPECT_EQ(Refusal({{"maxConnections", 0}}), "Maximum Connections is set to be less than its minimum.");
    EXPECT_EQ(Refusal({{"readNetworks", {"office"}}}),
              "\"office\" is not a network such as 192.168.1.0/24 or fd00::/8, nor an IP address");
}

TEST(AsciiParams, RefusesASymbolAsSoonAsADocumentIsChecked) {
    EXPECT_THROW(JsonSerializer::Validate(AsciiParams(), {{"delimiter", "x"}}), Vor::Exception);
    EXPECT_NO_THROW(JsonSerializer::Validate(AsciiParams(), {{"delimiter", ";"}}));
}

} // namespace
} // namespace Services::Ascii
