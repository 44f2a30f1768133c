#include "Vor/Format.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <optional>

namespace Vor {

namespace {

constexpr int MaxWidth = 4096;

/// One conversion as written in the text, without its per cent sign.
struct Conversion {
    std::size_t position = 0; ///< from "n$", counted from 1; 0 is the next argument
    std::string flags;
    std::optional<int> width;
    bool widthFromArgument = false;
    std::optional<int> precision;
    bool precisionFromArgument = false;
    int cutToBytes = 0; ///< from "h" and "hh"
    char type = 0;
};

class Scanner {
public:
    explicit Scanner(const char* text)
        : text(text) {}

    /// Reads a conversion and moves past it. False when the text isn't one.
    bool Read(Conversion& out) {
        if (const char* mark = text; const auto number = Number()) {
            if (*text == '$' && *number > 0) {
                out.position = static_cast<std::size_t>(*number);
                ++text;
            } else {
                text = mark;
            }
        }
        while (*text != 0 && std::strchr("-+ #0", *text) != nullptr) {
            out.flags += *text++;
        }
        if (!Size(out.width, out.widthFromArgument)) {
            return false;
        }
        if (*text == '.') {
            ++text;
            if (!Size(out.precision, out.precisionFromArgument)) {
                return false;
            }
            if (!out.precision && !out.precisionFromArgument) {
                out.precision = 0;
            }
        }
        Length(out);
        out.type = *text;
        if (out.type == 0 || std::strchr("diuxXocsfFeEgGaAp%", out.type) == nullptr) {
            return false;
        }
        ++text;
        return true;
    }

    const char* Position() const { return text; }

private:
    std::optional<int> Number() {
        if (*text < '0' || *text > '9') {
            return std::nullopt;
        }
        int value = 0;
        while (*text >= '0' && *text <= '9') {
            value = value > MaxWidth ? value : value * 10 + (*text - '0');
            ++text;
        }
        return value;
    }

    bool Size(std::optional<int>& size, bool& fromArgument) {
        if (*text == '*') {
            fromArgument = true;
            ++text;
            return true;
        }
        size = Number();
        return !size || *size <= MaxWidth;
    }

    void Length(Conversion& out) {
        if (*text == 'h') {
            ++text;
            out.cutToBytes = 2;
            if (*text == 'h') {
                ++text;
                out.cutToBytes = 1;
            }
            return;
        }
        while (*text != 0 && std::strchr("lqjztL", *text) != nullptr) {
            ++text;
        }
    }

    const char* text;
};

template <typename T>
std::string Print(const std::string& spec, T value) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int size = std::snprintf(nullptr, 0, spec.c_str(), value);
    std::string out(size < 0 ? 0 : static_cast<std::size_t>(size), '\0');
    if (size > 0) {
        std::snprintf(out.data(), out.size() + 1, spec.c_str(), value);
    }
#pragma GCC diagnostic pop
    return out;
}

std::string Spec(const Conversion& conversion, const char* length, char type) {
    std::string spec = "%" + conversion.flags;
    if (conversion.width) {
        spec += std::to_string(*conversion.width);
    }
    if (conversion.precision) {
        spec += "." + std::to_string(*conversion.precision);
    }
    return spec + length + type;
}

long long AsSigned(const FormatArg& arg, int cutToBytes) {
    const std::uint64_t bits = arg.Integer();
    if (cutToBytes == 1) {
        return static_cast<std::int8_t>(bits);
    }
    if (cutToBytes == 2) {
        return static_cast<std::int16_t>(bits);
    }
    return arg.Bytes() == 4 ? static_cast<std::int32_t>(bits) : static_cast<std::int64_t>(bits);
}

unsigned long long AsUnsigned(const FormatArg& arg, int cutToBytes) {
    const std::uint64_t bits = arg.Integer();
    if (cutToBytes == 1) {
        return static_cast<std::uint8_t>(bits);
    }
    if (cutToBytes == 2) {
        return static_cast<std::uint16_t>(bits);
    }
    return arg.Bytes() == 4 ? static_cast<std::uint32_t>(bits) : bits;
}

bool IsInteger(const FormatArg& arg) {
    return arg.ValueKind() == FormatArg::Kind::Signed || arg.ValueKind() == FormatArg::Kind::Unsigned ||
           arg.ValueKind() == FormatArg::Kind::Bool;
}

std::string AsText(const FormatArg& arg) {
    switch (arg.ValueKind()) {
    case FormatArg::Kind::Signed:
        return std::to_string(AsSigned(arg, 0));
    case FormatArg::Kind::Unsigned:
        return std::to_string(AsUnsigned(arg, 0));
    case FormatArg::Kind::Bool:
        return arg.Integer() != 0 ? "true" : "false";
    case FormatArg::Kind::Floating:
        return Print("%g", arg.Floating());
    case FormatArg::Kind::Text:
        return std::string(arg.Text());
    case FormatArg::Kind::Pointer:
        return Print("%p", reinterpret_cast<void*>(arg.Integer())); // NOLINT(performance-no-int-to-ptr)
    }
    return {};
}

std::string FillText(const Conversion& conversion, std::string text) {
    if (conversion.precision && static_cast<std::size_t>(*conversion.precision) < text.size()) {
        text.resize(static_cast<std::size_t>(*conversion.precision));
    }
    const auto width = static_cast<std::size_t>(conversion.width.value_or(0));
    if (width > text.size()) {
        const bool left = conversion.flags.find('-') != std::string::npos;
        text.insert(left ? text.size() : 0, width - text.size(), ' ');
    }
    return text;
}

std::string FillInteger(const Conversion& conversion, const FormatArg& arg) {
    if (arg.ValueKind() == FormatArg::Kind::Floating) {
        if (std::abs(arg.Floating()) < 9.2e18) {
            const FormatArg whole(static_cast<std::int64_t>(arg.Floating()));
            return FillInteger(conversion, whole);
        }
        return FillText(conversion, AsText(arg));
    }
    if (arg.ValueKind() == FormatArg::Kind::Text) {
        return FillText(conversion, AsText(arg));
    }
    if (conversion.type == 'd' || conversion.type == 'i') {
        return Print(Spec(conversion, "ll", 'd'), AsSigned(arg, conversion.cutToBytes));
    }
    return Print(Spec(conversion, "ll", conversion.type), AsUnsigned(arg, conversion.cutToBytes));
}

std::string FillFloating(const Conversion& conversion, const FormatArg& arg) {
    if (arg.ValueKind() == FormatArg::Kind::Floating) {
        return Print(Spec(conversion, "", conversion.type), arg.Floating());
    }
    if (IsInteger(arg)) {
        const double value = arg.ValueKind() == FormatArg::Kind::Signed ? static_cast<double>(AsSigned(arg, 0))
                                                                        : static_cast<double>(AsUnsigned(arg, 0));
        return Print(Spec(conversion, "", conversion.type), value);
    }
    return FillText(conversion, AsText(arg));
}

std::string Fill(const Conversion& conversion, const FormatArg& arg) {
    switch (conversion.type) {
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
    case 'o':
        return FillInteger(conversion, arg);
    case 'c':
        return FillText(conversion, IsInteger(arg) ? std::string(1, static_cast<char>(arg.Integer())) : AsText(arg));
    case 's':
        return FillText(conversion, AsText(arg));
    case 'p':
        return FillText(conversion, IsInteger(arg) ? Print("%#llx", AsUnsigned(arg, 0)) : AsText(arg));
    default:
        return FillFloating(conversion, arg);
    }
}

/// The arguments of one text, in order and by position.
class Arguments {
public:
    explicit Arguments(std::span<const FormatArg> list)
        : list(list) {}

    /// The argument of a position counted from 1; null when it is missing.
    const FormatArg* At(std::size_t position) const { return position <= list.size() ? &list[position - 1] : nullptr; }

    /// Null when there are no more.
    const FormatArg* Next() {
        const FormatArg* const arg = At(next + 1);
        next += arg != nullptr ? 1 : 0;
        return arg;
    }

    /// Nothing when the argument is missing, no integer or out of range.
    std::optional<int> NextSize() {
        const FormatArg* const arg = Next();
        if (arg == nullptr || !IsInteger(*arg)) {
            return std::nullopt;
        }
        const long long size = AsSigned(*arg, 0);
        if (size > MaxWidth || size < -MaxWidth) {
            return std::nullopt;
        }
        return static_cast<int>(size);
    }

private:
    std::span<const FormatArg> list;
    std::size_t next = 0;
};

/// Replaces "*" sizes by arguments. False when one is missing or out of range.
bool ReadSizes(Conversion& conversion, Arguments& arguments) {
    if (conversion.widthFromArgument) {
        conversion.width = arguments.NextSize();
        if (!conversion.width) {
            return false;
        }
        if (*conversion.width < 0) {
            conversion.flags += '-';
            conversion.width = -*conversion.width;
        }
    }
    if (conversion.precisionFromArgument) {
        conversion.precision = arguments.NextSize();
        if (!conversion.precision) {
            return false;
        }
        if (*conversion.precision < 0) {
            conversion.precision.reset();
        }
    }
    return true;
}

} // namespace

std::string FormatArgs(const char* format, std::span<const FormatArg> args) {
    std::string out;
    if (format == nullptr) {
        return out;
    }
    Arguments arguments(args);
    const char* text = format;
    while (const char* sign = std::strchr(text, '%')) {
        out.append(text, sign);
        text = sign + 1;
        Scanner scanner(text);
        Conversion conversion;
        if (!scanner.Read(conversion)) {
            out += '%';
            continue;
        }
        if (conversion.type == '%') {
            const bool plain = scanner.Position() == text + 1;
            out.append(plain ? text : sign, scanner.Position());
            text = scanner.Position();
            continue;
        }
        Arguments before = arguments;
        const FormatArg* arg = nullptr;
        if (ReadSizes(conversion, arguments)) {
            arg = conversion.position > 0 ? arguments.At(conversion.position) : arguments.Next();
        }
        if (arg == nullptr) {
            arguments = before;
            out.append(sign, scanner.Position());
        } else {
            out += Fill(conversion, *arg);
        }
        text = scanner.Position();
    }
    return out += text;
}

} // namespace Vor
