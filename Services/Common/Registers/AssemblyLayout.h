#pragma once

#include "Services/Common/Registers/RegisterImage.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Services::Common {

/// Where the blocks of an assembly with a global address space are in an image. Blocks without registers aren't.
struct AssemblyLayout {
    struct Place {
        std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterBlock> block;
        std::size_t offset;
        std::size_t size; ///< of what the block writes
    };

    /// The caller holds the assembly's lock.
    AssemblyLayout(const VorControl::ControlProtocol::IProtocolRegisterAssembly& assembly, unsigned bytesPerRegister);

    std::vector<Place> scanBlocks;  ///< the blocks with a data source
    std::vector<Place> cells;       ///< the others
    std::vector<ByteRange> ranges;  ///< that belong to blocks, ascending, without overlap
    std::vector<ByteRange> scanned; ///< the bytes outside of cells, ascending
    std::size_t size = 0;           ///< of the image
};

} // namespace Services::Common
