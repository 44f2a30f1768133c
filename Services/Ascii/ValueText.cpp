#include "Services/Ascii/ValueText.h"

#include "Vor/Utf8.h"
#include "VorMsg/ResultInfo.h"
#include "VorMsg/VvArrayMsg.h"
#include "VorMsg/VvDataMsg.h"
#include "VorMsg/VvMeasureMsg.h"
#include "VorMsg/VvStampMsg.h"
#include "VorMsg/VvStringMsg.h"
#include "yApi/yMsgInfo.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Services::Ascii {

namespace {

constexpr std::size_t StampFields = 5;
/// The largest double has 309 digits before the separator.
constexpr std::size_t NumberSize = 400;

/// The message of an item, or its first element if it is an array; null when there is none.
VvMsg MessageOf(ResultItem item) {
    if (item == nullptr) {
        return nullptr;
    }
    VvMsg message = yMsgInfo_Message(ResultItem_MsgInfo(item));
    if (message != nullptr && yObject_Is(message, yType_VvArrayMsg)) {
        message = VvArrayMsg_Count(message) == 0 ? nullptr : VvArrayMsg_At(message, 0);
    }
    return message;
}

void AppendInvalid(std::string& line, const LineFormat& format, std::size_t fields) {
    for (std::size_t i = 0; i < fields; ++i) {
        if (i > 0) {
            line += format.delimiter;
        }
        line += format.invalidText;
    }
}

template <class Integer>
void AppendInteger(std::string& line, Integer value) {
    std::array<char, 24> digits;
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    line.append(digits.data(), end);
}

void AppendMeasurement(std::string& line, const LineFormat& format, ValueKind kind, VvMsg message) {
    const double value = VvMeasureMsg_Value(message);
    const bool isValid = std::isfinite(value);
    if (kind != ValueKind::Decision) {
        if (isValid) {
            AppendNumber(line, format, value);
        } else {
            line += format.invalidText;
        }
    }
    if (kind == ValueKind::Measurement) {
        line += format.delimiter;
    }
    if (kind == ValueKind::Measurement || kind == ValueKind::Decision) {
        if (isValid) {
            AppendInteger(line, static_cast<unsigned>(VvMeasureMsg_Decision(message)));
        } else {
            line += format.invalidText;
        }
    }
}

void AppendStamp(std::string& line, const LineFormat& format, VvMsg message) {
    const yStamp* const stamp = VvMsg_StampAt(message, 0);
    if (stamp == nullptr) {
        AppendInvalid(line, format, StampFields);
        return;
    }
    const bool isData = yObject_Is(message, yType_VvDataMsg);
    AppendInteger(line, stamp->frameIndex);
    line += format.delimiter;
    AppendInteger(line, isData ? VvDataMsg_Time(message) : stamp->time);
    line += format.delimiter;
    AppendInteger(line, isData ? VvDataMsg_Encoder(message) : stamp->encoder);
    line += format.delimiter;
    AppendInteger(line, stamp->encoderAtZ);
    line += format.delimiter;
    AppendInteger(line, (stamp->inputs | stamp->inputs >> 4) & 3);
}

std::string_view TextOf(VvMsg message) {
    std::string_view text(VvStringMsg_Value(message), VvStringMsg_Length(message));
    if (text.size() > MaxTextSize) {
        std::size_t size = MaxTextSize;
        while (size > MaxTextSize - 4 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) {
            --size;
        }
        text = text.substr(0, size);
    }
    return text;
}

std::size_t FieldsOf(ValueKind kind) {
    return kind == ValueKind::Measurement ? 2 : kind == ValueKind::Stamp ? StampFields : 1;
}

/// Writes round(value * 10^decimals) with its separator, half away from zero, as register services round. From 2^53 on
/// the product has no fraction, and the digits of the value itself are written.
char* WriteFixed(char* begin, char* end, double value, int decimals) {
    constexpr double FirstWithoutFraction = 9007199254740992.0;
    double scale = 1;
    for (int i = 0; i < decimals; ++i) {
        scale *= 10;
    }
    const double scaled = std::round(value * scale);
    if (!(std::abs(scaled) < FirstWithoutFraction)) {
        return std::to_chars(begin, end, value, std::chars_format::fixed, decimals).ptr;
    }
    const auto number = static_cast<long long>(scaled);
    const auto unit = static_cast<long long>(scale);
    if (number < 0) {
        *begin++ = '-';
    }
    begin = std::to_chars(begin, end, std::abs(number / unit)).ptr;
    if (decimals == 0) {
        return begin;
    }
    // The leading 1 keeps the zeros of the fraction; the separator replaces it.
    std::array<char, 24> fraction;
    const char* const fractionEnd =
        std::to_chars(fraction.data(), fraction.data() + fraction.size(), unit + std::abs(number % unit)).ptr;
    fraction.front() = '.';
    return std::copy(fraction.cbegin(), fractionEnd, begin);
}

} // namespace

void AppendNumber(std::string& line, const LineFormat& format, double value) {
    std::array<char, NumberSize> digits;
    char* const begin = digits.data();
    char* const end = begin + digits.size();
    const char* const textEnd =
        format.notation == Notation::Fixed ? WriteFixed(begin, end, value, format.decimals)
        : format.notation == Notation::Scientific
            ? std::to_chars(begin, end, value, std::chars_format::scientific, format.decimals).ptr
            : std::to_chars(begin, end, value).ptr;
    std::string_view text(begin, static_cast<std::size_t>(textEnd - begin));
    // A value that is rounded to 0 has no sign.
    const std::size_t mantissa = std::min(text.find('e'), text.size());
    if (text.front() == '-' && text.substr(0, mantissa).find_first_not_of("-0.") == std::string_view::npos) {
        text.remove_prefix(1);
    }
    const std::size_t place = line.size();
    line += text;
    if (format.decimalSeparator != '.') {
        std::replace(line.begin() + static_cast<std::ptrdiff_t>(place), line.end(), '.', format.decimalSeparator);
    }
}

void AppendQuoted(std::string& line, std::string_view text) {
    const bool isUtf8 = Vor::IsUtf8(text);
    line += '"';
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7F) {
            line += ' ';
        } else if (byte >= 0x80 && !isUtf8) {
            line += '?';
        } else {
            line += character;
            if (character == '"') {
                line += '"';
            }
        }
    }
    line += '"';
}

void AppendValue(std::string& line, const LineFormat& format, ValueKind kind, ResultItem item) {
    const VvMsg message = MessageOf(item);
    const bool isAny = kind == ValueKind::Any;
    if (message == nullptr) {
        AppendInvalid(line, format, FieldsOf(kind));
        return;
    }
    const bool wantsMeasurement =
        kind == ValueKind::Measurement || kind == ValueKind::Value || kind == ValueKind::Decision;
    if ((isAny || wantsMeasurement) && yObject_Is(message, yType_VvMeasureMsg)) {
        AppendMeasurement(line, format, kind, message);
    } else if ((isAny || kind == ValueKind::Text) && yObject_Is(message, yType_VvStringMsg)) {
        AppendQuoted(line, TextOf(message));
    } else if (kind == ValueKind::Stamp ||
               (isAny && ResultInfo_Type(ResultItem_ResultInfo(item)) == ResultInfo_TypeStamp)) {
        AppendStamp(line, format, message);
    } else {
        AppendInvalid(line, format, FieldsOf(kind));
    }
}

} // namespace Services::Ascii
