#include "Services/Ascii/AsciiParams.h"

#include "Services/Common/Translate.h"
#include "Vor/Exception.h"

#include <algorithm>
#include <cctype>

namespace Services::Ascii {

using Common::Translate;

namespace {

constexpr unsigned short DefaultPort = 8190;
constexpr unsigned int DefaultIdleTimeout = 300; ///< seconds
constexpr std::size_t MaxSymbolSize = 4;
constexpr std::size_t MaxInvalidTextSize = 32;
constexpr unsigned short MaxDecimals = 9;

bool IsPrintable(char character) {
    return character >= ' ' && character <= '~';
}

/// No character that numbers, words or quoted texts contain.
bool IsDelimiter(const std::string& value) {
    return !value.empty() && value.size() <= MaxSymbolSize && std::ranges::all_of(value, [](char character) {
        return character == '\t' ||
               (IsPrintable(character) && std::isalnum(static_cast<unsigned char>(character)) == 0 &&
                std::string_view("\"+-_").find(character) == std::string_view::npos);
    });
}

bool IsTerminator(const std::string& value) {
    return !value.empty() && value.size() <= MaxSymbolSize && std::ranges::all_of(value, [](char character) {
        return std::iscntrl(static_cast<unsigned char>(character)) != 0 && character != '\0' && character != '\t';
    });
}

bool IsInvalidText(const std::string& value) {
    return value.size() <= MaxInvalidTextSize &&
           std::ranges::all_of(value, [](char character) { return IsPrintable(character) && character != '"'; });
}

} // namespace

AsciiParams::AsciiParams()
    : delimiter(IsDelimiter, "%1$s must be 1 to 4 characters, each a tab, a space or a printable one of ASCII that is "
                             "neither a letter nor a "
                             "digit nor \" + - _.")
    , terminator(IsTerminator, "%1$s must be 1 to 4 control characters of ASCII other than NUL and tab.")
    , invalidText(IsInvalidText, "%1$s must be at most 32 printable characters of ASCII without quotation marks.") {
    RegisterPlace();
    Register("delimiter", delimiter, Translate("Delimiter"), 100);
    Register("terminator", terminator, Translate("Line Terminator"), 100);
    Register("decimalSeparator", decimalSeparator, Translate("Decimal Separator"), 100);
    Register("numberFormat", numberFormat, Translate("Number Format"), 100);
    Register("decimals", decimals, Translate("Decimals"), 100);
    Register("invalidText", invalidText, Translate("Text of an Invalid Value"), 100);
    RegisterLimits(
        "A client that sends no whole line in this time is closed, unless frames are sent to it and it takes "
        "them. 0 leaves it open.",
        "Networks or single addresses whose clients may command the sensor, too. Other clients can only read.");
    triggerTimeout.RegisterIn(*this);
    Register("allowRead", allowRead, Translate("Allow Reading Resources"), 100);

    delimiter.EnableDescription(true);
    Describe(delimiter, "Stands between the fields of a line.");
    terminator.EnableDescription(true);
    Describe(terminator, "Ends each line that is sent. A line that is received ends with any of its characters, too.");
    decimalSeparator.EnableDescription(true);
    Describe(decimalSeparator, "Stands between the whole part of a number and its fraction.");
    decimalSeparator.AddOption(DecimalSeparator::Point, Translate("Point"));
    decimalSeparator.AddOption(DecimalSeparator::Comma, Translate("Comma"));
    numberFormat.EnableDescription(true);
    Describe(numberFormat, "How measured values are written.");
    numberFormat.AddOption(Notation::Fixed, Translate("Fixed"));
    numberFormat.AddOption(Notation::Scientific, Translate("Scientific"));
    numberFormat.AddOption(Notation::Shortest, Translate("Shortest"));
    decimals.EnableDescription(true);
    Describe(decimals, "Digits behind the decimal separator, fixed and scientific.");
    decimals.EnableMaximum(true);
    decimals.SetMaximum(MaxDecimals);
    invalidText.EnableDescription(true);
    Describe(invalidText, "Stands in each field that has no value.");
    allowRead.EnableDescription(true);
    Describe(allowRead, "Whether clients that may command the sensor can read the resources of its services and of its "
                        "scan.");
    Reset();
}

void AsciiParams::Reset() {
    const LineFormat format;
    ResetPlace(DefaultPort);
    delimiter = format.delimiter;
    terminator = format.terminator;
    decimalSeparator = DecimalSeparator::Point;
    numberFormat = format.notation;
    decimals = static_cast<unsigned short>(format.decimals);
    invalidText = format.invalidText;
    ResetLimits(DefaultIdleTimeout);
    triggerTimeout.Reset();
    allowRead = false;
}

Net::TcpServerSettings AsciiParams::Settings() {
    Net::TcpServerSettings settings = TcpServerParams::Settings();
    const LineFormat format = Format();
    if (format.delimiter.find(format.decimalSeparator) != std::string::npos) {
        Vor::Throw(yERROR_PARAMETER, "the delimiter \"%s\" has the decimal separator in it", format.delimiter);
    }
    if (format.invalidText.find(format.delimiter) != std::string::npos) {
        Vor::Throw(yERROR_PARAMETER, "the text of an invalid value, \"%s\", has the delimiter in it",
                   format.invalidText);
    }
    return settings;
}

LineFormat AsciiParams::Format() const {
    return {.delimiter = delimiter.Get(),
            .terminator = terminator.Get(),
            .decimalSeparator = decimalSeparator.Get() == DecimalSeparator::Comma ? ',' : '.',
            .notation = numberFormat.Get(),
            .decimals = decimals.Get(),
            .invalidText = invalidText.Get()};
}

} // namespace Services::Ascii
