#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include "Services/Modbus/FrameCodec.h"
#include "Services/Modbus/IRegisterReader.h"

namespace Services::Modbus {

using Bytes = std::vector<unsigned char>;

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// A request for `quantity` registers from `address` on.
inline Bytes ReadRequest(unsigned transaction, unsigned address, unsigned quantity, unsigned char unit = 1,
                         unsigned char function = 3) {
    Bytes bytes(12);
    EncodeHeader(bytes.data(), static_cast<std::uint16_t>(transaction), unit, 5);
    bytes[7] = function;
    PutWord(&bytes[8], static_cast<std::uint16_t>(address));
    PutWord(&bytes[10], static_cast<std::uint16_t>(quantity));
    return bytes;
}

// Registers that hold their own address, all from `first` to `last`.
class AddressRegisters : public IRegisterReader {
public:
    explicit AddressRegisters(unsigned first = 0, unsigned last = 65535)
        : first(first)
        , last(last) {}

    bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const override {
        if (address > last || address + count <= first) {
            return false;
        }
        for (unsigned i = 0; i < count; ++i) {
            const unsigned at = address + i;
            PutWord(destination + 2 * i, static_cast<std::uint16_t>(at >= first && at <= last ? at : 0));
        }
        return true;
    }

private:
    unsigned first;
    unsigned last;
};

} // namespace Services::Modbus
