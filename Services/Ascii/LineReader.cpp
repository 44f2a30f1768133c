#include "Services/Ascii/LineReader.h"

#include "Vor/Utf8.h"

namespace Services::Ascii {

namespace {

/// RFC 854, "The TELNET Command Structure".
constexpr unsigned char Iac = 255;
constexpr unsigned char Will = 251;
constexpr unsigned char Dont = 254;
constexpr unsigned char SubnegotiationBegin = 250;
constexpr unsigned char SubnegotiationEnd = 240;

std::string_view WithoutBlanks(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(" \t") + 1 - begin);
}

} // namespace

void LineReader::SetTerminator(std::string_view terminator) {
    ends = {};
    ends['\r'] = true;
    ends['\n'] = true;
    for (const char character : terminator) {
        ends[static_cast<unsigned char>(character)] = true;
    }
}

LineReader::Status LineReader::Feed(unsigned char byte) {
    if (IsTelnet(byte) || byte == 0) {
        return Status::Incomplete;
    }
    if (ends[byte]) {
        return EndLine();
    }
    if (size == buffer.size()) {
        tooLong = true;
        return Status::Incomplete;
    }
    hasControl = hasControl || (byte < ' ' && byte != '\t') || byte == 0x7F;
    buffer[size] = static_cast<char>(byte);
    ++size;
    return Status::Incomplete;
}

// IAC twice means the byte itself, which no UTF-8 text contains.
bool LineReader::IsTelnet(unsigned char byte) {
    switch (telnet) {
    case Telnet::None:
        telnet = byte == Iac ? Telnet::Command : Telnet::None;
        return byte == Iac;
    case Telnet::Command:
        telnet = byte == SubnegotiationBegin    ? Telnet::Subnegotiation
                 : byte >= Will && byte <= Dont ? Telnet::Option
                                                : Telnet::None;
        return byte != Iac;
    case Telnet::Option:
        telnet = Telnet::None;
        return true;
    case Telnet::Subnegotiation:
        telnet = byte == Iac ? Telnet::SubnegotiationCommand : Telnet::Subnegotiation;
        return true;
    case Telnet::SubnegotiationCommand:
        telnet = byte == SubnegotiationEnd ? Telnet::None : Telnet::Subnegotiation;
        return true;
    }
    return false;
}

LineReader::Status LineReader::EndLine() {
    line = WithoutBlanks({buffer.data(), size});
    const bool wasTooLong = tooLong;
    const bool wasInvalid = hasControl || !Vor::IsUtf8(line);
    size = 0;
    tooLong = false;
    hasControl = false;
    if (wasTooLong) {
        return Status::TooLong;
    }
    if (line.empty()) {
        return Status::Incomplete;
    }
    return wasInvalid ? Status::Invalid : Status::Line;
}

} // namespace Services::Ascii
