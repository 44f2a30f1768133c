#include "Vor/Utf8.h"

#include <cstddef>

namespace Vor {

namespace {

/// Length of the sequence that `lead` begins, 0 when none does.
std::size_t SequenceLength(unsigned char lead) {
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 3;
    }
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

bool IsSecondByte(unsigned char lead, unsigned char second) {
    const unsigned char least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char greatest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return second >= least && second <= greatest;
}

} // namespace

bool IsUtf8(std::string_view text) {
    const auto byte = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = SequenceLength(byte(at));
        if (length == 0 || length > text.size() - at || (length > 1 && !IsSecondByte(byte(at), byte(at + 1)))) {
            return false;
        }
        for (std::size_t rest = 2; rest < length; ++rest) {
            if ((byte(at + rest) & 0xC0) != 0x80) {
                return false;
            }
        }
        at += length;
    }
    return true;
}

} // namespace Vor
