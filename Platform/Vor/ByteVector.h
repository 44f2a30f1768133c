#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Vor::Properties {

/// Bytes as a value, such as an icon; ordered byte by byte, a shorter one before its continuations.
class ByteVector {
public:
    ByteVector() = default;
    explicit ByteVector(std::vector<unsigned char> bytes)
        : bytes(std::move(bytes)) {}
    ByteVector(const void* data, std::size_t size)
        : bytes(static_cast<const unsigned char*>(data), static_cast<const unsigned char*>(data) + size) {}

    const unsigned char* Data() const { return bytes.data(); }
    std::size_t Size() const { return bytes.size(); }
    const std::vector<unsigned char>& Bytes() const { return bytes; }

    /// The form in documents: base64 with padding (RFC 4648, section 4).
    std::string ToBase64() const;

    /// False, and `out` untouched, if `text` isn't exactly that form.
    static bool FromBase64(std::string_view text, ByteVector& out);

    bool operator==(const ByteVector&) const = default;
    std::strong_ordering operator<=>(const ByteVector& other) const { return View() <=> other.View(); }

private:
    /// Characters of a view compare as unsigned bytes.
    std::string_view View() const { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

    std::vector<unsigned char> bytes;
};

} // namespace Vor::Properties
