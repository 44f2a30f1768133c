#pragma once

#include <cstdint>
#include <span>

namespace Services::Modbus {

/// One write of a client, and the read after it in the same request. `address` plus the number of registers in `values`
/// is at most 65536, and so is `readAddress` plus the number in `read`.
struct RegisterWrite {
    std::uint16_t address = 0;
    std::span<const unsigned char> values; ///< two bytes a register, high byte first
    std::uint16_t keep = 0;                ///< the bits of each register that aren't changed
    std::uint16_t readAddress = 0;
    std::span<unsigned char> read = {}; ///< two bytes a register; empty reads nothing
};

/// 65536 registers of 16 bits, for the network thread. It calls an operation for each request, so no operation waits
/// longer than a copy of the registers takes.
class IRegisterMap {
public:
    virtual ~IRegisterMap() = default;

    /// Copies `count` registers from `address` on to `destination`, two bytes a register, high byte first, all of them
    /// from one frame. Registers that belong to no block are 0. Returns false, and copies nothing, when no register of
    /// the range belongs to a block. `address + count` is at most 65536.
    virtual bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const = 0;

    /// Writes all values, then reads. Returns the exception code for the client. Unless it is NoException, no register
    /// was changed, and the content of `read` has no meaning.
    virtual unsigned char Write(const RegisterWrite& write) = 0;
};

} // namespace Services::Modbus
