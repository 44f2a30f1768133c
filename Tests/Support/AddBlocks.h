#pragma once

#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Tests {

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

} // namespace Tests
