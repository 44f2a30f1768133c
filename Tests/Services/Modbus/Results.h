#pragma once

#include "Tests/Services/Modbus/Bytes.h"
#include "Tests/Support/Results.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"

#include <string>

namespace Services::Modbus {

/// The one assembly of the service.
inline constexpr const char* AssemblyId = "registerAssembly-0";

using Tests::Results;

struct BlockToAdd {
    std::string type;
    std::string dataSource;
    unsigned short address;
    unsigned short registers = 65535;
};

inline void AddBlocks(VorControl::ControlProtocol::IProtocolRegisterAssembly& assembly,
                      const std::vector<BlockToAdd>& blocks) {
    VorControl::ControlProtocol::AddBlockParams params;
    params.blocks.Resize(blocks.size());
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        auto& block = params.blocks.At(i);
        block.type = blocks[i].type;
        block.dataSource = blocks[i].dataSource;
        block.outputId = blocks[i].address;
        block.registerCount = blocks[i].registers;
    }
    assembly.Add(params);
}

/// The bytes of registers, high byte first.
inline Bytes Words(const std::vector<unsigned>& words) {
    Bytes bytes(2 * words.size());
    for (std::size_t i = 0; i < words.size(); ++i) {
        PutWord(&bytes[2 * i], static_cast<std::uint16_t>(words[i]));
    }
    return bytes;
}

} // namespace Services::Modbus
