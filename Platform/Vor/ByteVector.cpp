#include "Vor/ByteVector.h"

#include <array>
#include <cstdint>

namespace Vor::Properties {

namespace {

constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned char NoDigit = 255;

constexpr std::array<unsigned char, 256> Digits() {
    std::array<unsigned char, 256> digits{};
    digits.fill(NoDigit);
    for (std::size_t i = 0; i < Alphabet.size(); ++i) {
        digits[static_cast<unsigned char>(Alphabet[i])] = static_cast<unsigned char>(i);
    }
    return digits;
}

/// Reads four digits, of which the last `padding` are '='. False if they aren't what the encoder writes.
bool DecodeQuad(const char* quad, std::size_t padding, std::vector<unsigned char>& out) {
    static constexpr std::array<unsigned char, 256> Values = Digits();
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const unsigned char digit = i < 4 - padding ? Values[static_cast<unsigned char>(quad[i])] : 0;
        if (digit == NoDigit) {
            return false;
        }
        bits = bits << 6 | digit;
    }
    if ((bits & ((1U << 8 * padding) - 1)) != 0) {
        return false;
    }
    for (std::size_t i = 0; i < 3 - padding; ++i) {
        out.push_back(static_cast<unsigned char>(bits >> (16 - 8 * i)));
    }
    return true;
}

} // namespace

std::string ByteVector::ToBase64() const {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t rest = bytes.size() - i;
        const std::uint32_t bits = static_cast<std::uint32_t>(bytes[i]) << 16 |
                                   (rest > 1 ? static_cast<std::uint32_t>(bytes[i + 1]) << 8 : 0U) |
                                   (rest > 2 ? static_cast<std::uint32_t>(bytes[i + 2]) : 0U);
        text += Alphabet[bits >> 18 & 63];
        text += Alphabet[bits >> 12 & 63];
        text += rest > 1 ? Alphabet[bits >> 6 & 63] : '=';
        text += rest > 2 ? Alphabet[bits & 63] : '=';
    }
    return text;
}

bool ByteVector::FromBase64(std::string_view text, ByteVector& out) {
    if (text.size() % 4 != 0) {
        return false;
    }
    std::vector<unsigned char> decoded;
    decoded.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        std::size_t padding = 0;
        if (i + 4 == text.size()) {
            padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
        }
        if (!DecodeQuad(text.data() + i, padding, decoded)) {
            return false;
        }
    }
    out = ByteVector(std::move(decoded));
    return true;
}

} // namespace Vor::Properties
