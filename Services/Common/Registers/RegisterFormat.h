#pragma once

#include <span>

namespace Services::Common {

/// How a protocol's registers become bytes.
struct RegisterFormat {
    unsigned bytesPerRegister = 1;
    /// Puts the bytes of a block that isn't text, which are in the order that blocks write, into the order of the
    /// protocol. Null where the two are the same.
    void (*order)(std::span<unsigned char> bytes) = nullptr;

    void Order(std::span<unsigned char> bytes) const {
        if (order != nullptr) {
            order(bytes);
        }
    }
};

} // namespace Services::Common
