#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace Vor {

/// One argument of Format: its value and its width. Texts are borrowed for the call.
class FormatArg {
public:
    enum class Kind { Signed, Unsigned, Bool, Floating, Text, Pointer };

    template <std::integral T>
    FormatArg(T value) // NOLINT(google-explicit-constructor): arguments convert as they are passed
        : kind(std::is_same_v<T, bool> ? Kind::Bool : (std::is_signed_v<T> ? Kind::Signed : Kind::Unsigned))
        , bytes(sizeof(T) < sizeof(int) ? sizeof(int) : sizeof(T))
        , integer(static_cast<std::uint64_t>(value)) {}
    template <typename T>
        requires std::is_enum_v<T>
    FormatArg(T value)
        : FormatArg(static_cast<std::underlying_type_t<T>>(value)) {}
    template <std::floating_point T>
    FormatArg(T value)
        : kind(Kind::Floating)
        , floating(static_cast<double>(value)) {}
    FormatArg(const char* value)
        : kind(Kind::Text)
        , text(value == nullptr ? std::string_view("(null)") : std::string_view(value)) {}
    FormatArg(const std::string& value)
        : kind(Kind::Text)
        , text(value) {}
    FormatArg(std::string_view value)
        : kind(Kind::Text)
        , text(value) {}
    FormatArg(const void* value)
        : kind(Kind::Pointer)
        , bytes(sizeof(value))
        , integer(reinterpret_cast<std::uintptr_t>(value)) {}

    Kind ValueKind() const { return kind; }
    /// The width of an integer after promotion, in bytes: 4 or 8.
    std::size_t Bytes() const { return bytes; }
    /// The bits of an integer, sign-extended to 64.
    std::uint64_t Integer() const { return integer; }
    double Floating() const { return floating; }
    std::string_view Text() const { return text; }

private:
    Kind kind;
    std::size_t bytes = sizeof(std::uint64_t);
    std::uint64_t integer = 0;
    double floating = 0;
    std::string_view text;
};

/// Fills the conversions of a printf-style text, for any text and any arguments, without undefined cases:
/// - "%s", "%-8.3f", "%*d" use the next argument, "%2$s" uses the second; one text may contain both forms;
/// - "%%" is one per cent sign;
/// - an invalid conversion ("%$1s", "%n", a "%" at the end), one whose argument is missing, and one wider than 4096
///   are copied unchanged;
/// - the argument's own type decides how it is read: "h" and "hh" cut it, other lengths change nothing, and an
///   argument of another type than the conversion's is converted.
std::string FormatArgs(const char* format, std::span<const FormatArg> args);

template <typename... Args>
std::string Format(const char* format, const Args&... args) {
    const std::array<FormatArg, sizeof...(Args)> list{FormatArg(args)...};
    return FormatArgs(format, list);
}

} // namespace Vor
