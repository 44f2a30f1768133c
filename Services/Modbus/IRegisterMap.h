#pragma once

#include <cstdint>
#include <span>

namespace Services::Modbus {

/// One write of a client, and what it reads right after it in the same request. `address` plus the registers of
/// `values` is at most 65536, as is `readAddress` plus those of `read`.
struct RegisterWrite {
    std::uint16_t address = 0;
    std::span<const unsigned char> values; ///< two bytes a register, high byte first
    std::uint16_t keep = 0;                ///< the bits of each register that stay as they are
    std::uint16_t readAddress = 0;
    std::span<unsigned char> read = {}; ///< two bytes a register; empty reads nothing
};

/// The network side's view of 65536 registers of 16 bits. Called by the network thread for each request: no operation
/// waits for longer than it takes to copy the registers.
class IRegisterMap {
public:
    virtual ~IRegisterMap() = default;

    /// Writes `count` registers from `address` on to `destination`, high byte first, two bytes a register, all of them
    /// of one frame. Registers that belong to no block are 0. Returns false, with nothing written, when no register of
    /// the range belongs to a block. `address + count` is at most 65536.
    virtual bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const = 0;

    /// Takes the whole write, then reads. Returns the exception code for the client; with another one than NoException
    /// no register was changed, and `read` is to be ignored.
    virtual unsigned char Write(const RegisterWrite& write) = 0;
};

} // namespace Services::Modbus
