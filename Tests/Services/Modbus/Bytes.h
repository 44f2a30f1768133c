#pragma once

#include "Services/Modbus/ExceptionCodes.h"
#include "Services/Modbus/FrameCodec.h"
#include "Services/Modbus/IRegisterMap.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Modbus {

using Bytes = std::vector<unsigned char>;

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// A request for `quantity` registers from `address` on.
inline Bytes ReadRequest(unsigned transaction, unsigned address, unsigned quantity, unsigned char unit = 1,
                         unsigned char function = 3) {
    Bytes bytes(12);
    EncodeHeader(bytes.data(), static_cast<std::uint16_t>(transaction), unit, 5);
    bytes[7] = function;
    PutWord(&bytes[8], static_cast<std::uint16_t>(address));
    PutWord(&bytes[10], static_cast<std::uint16_t>(quantity));
    return bytes;
}

/// Registers from `first` to `last`, each with its own address as its content. Writes from `firstInput` to `lastInput`
/// are recorded; they don't change the content.
class AddressRegisters : public IRegisterMap {
public:
    explicit AddressRegisters(unsigned first = 0, unsigned last = 65535)
        : first(first)
        , last(last) {}

    bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const override {
        EXPECT_LE(address + count, 65536) << "no such range is asked for";
        if (address > last || address + count <= first) {
            return false;
        }
        for (unsigned i = 0; i < count; ++i) {
            const unsigned at = address + i;
            PutWord(destination + 2 * i, static_cast<std::uint16_t>(at >= first && at <= last ? at : 0));
        }
        return true;
    }

    unsigned char Write(const RegisterWrite& write) override {
        EXPECT_LE(write.address + write.values.size() / 2, 65536U) << "no such range is asked for";
        EXPECT_LE(write.readAddress + write.read.size() / 2, 65536U) << "no such range is asked for";
        if (refusal != NoException) {
            return refusal;
        }
        if (write.address < firstInput || write.address + write.values.size() / 2 > lastInput + 1) {
            return IllegalDataAddress;
        }
        if (!write.read.empty() &&
            !Read(write.readAddress, static_cast<std::uint16_t>(write.read.size() / 2), write.read.data())) {
            return IllegalDataAddress;
        }
        writes.push_back({write.address, Bytes(write.values.begin(), write.values.end()), write.keep});
        return NoException;
    }

    struct Written {
        std::uint16_t address;
        Bytes values;
        std::uint16_t keep;

        bool operator==(const Written&) const = default;
    };

    unsigned firstInput = 1;
    unsigned lastInput = 0;
    unsigned char refusal = NoException;
    std::vector<Written> writes;

private:
    unsigned first;
    unsigned last;
};

} // namespace Services::Modbus
