#pragma once

#include "Tests/Services/Modbus/Bytes.h"
#include "Tests/Support/AddBlocks.h"
#include "Tests/Support/Results.h"

#include <vector>

namespace Services::Modbus {

/// The one assembly of the service.
inline constexpr const char* AssemblyId = "registerAssembly-0";

using Tests::AddBlocks;
using Tests::BlockToAdd;
using Tests::Results;

/// The bytes of registers, high byte first.
inline Bytes Words(const std::vector<unsigned>& words) {
    Bytes bytes(2 * words.size());
    for (std::size_t i = 0; i < words.size(); ++i) {
        PutWord(&bytes[2 * i], static_cast<std::uint16_t>(words[i]));
    }
    return bytes;
}

} // namespace Services::Modbus
