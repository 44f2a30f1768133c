#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace Services::Ascii {

/// Splits a stream of bytes into lines. CR, LF and each character of the terminator end a line, so CR LF, CR NUL and LF
/// all work. Blank lines, NULs and what a Telnet client negotiates (RFC 854) are ignored. Not thread-safe.
class LineReader {
public:
    static constexpr std::size_t MaxLineSize = 1024;

    enum class Status {
        Incomplete, ///< no line has ended
        Line,
        TooLong, ///< a line of more than MaxLineSize bytes has ended
        Invalid  ///< a line has ended that isn't UTF-8, or has control characters
    };

    /// `terminator` is a set of control characters.
    explicit LineReader(std::string_view terminator = {}) { SetTerminator(terminator); }
    void SetTerminator(std::string_view terminator);

    Status Feed(unsigned char byte);
    /// The last line, without leading and trailing blanks; valid until the next Feed.
    std::string_view Line() const { return line; }

private:
    enum class Telnet { None, Command, Option, Subnegotiation, SubnegotiationCommand };

    bool IsTelnet(unsigned char byte);
    Status EndLine();

    std::array<bool, 256> ends{};
    std::array<char, MaxLineSize> buffer;
    std::size_t size = 0;
    bool tooLong = false;
    bool hasControl = false;
    Telnet telnet = Telnet::None;
    std::string_view line;
};

} // namespace Services::Ascii
