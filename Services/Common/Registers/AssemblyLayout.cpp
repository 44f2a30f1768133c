#include "Services/Common/Registers/AssemblyLayout.h"

#include <algorithm>

namespace Services::Common {

AssemblyLayout::AssemblyLayout(const VorControl::ControlProtocol::IProtocolRegisterAssembly& assembly,
                               unsigned bytesPerRegister) {
    std::size_t behindCells = 0;
    const auto addScanned = [&](std::size_t end) {
        if (behindCells < end) {
            scanned.push_back({behindCells, end});
        }
    };
    for (const auto& block : assembly.AddedRegisterBlocks()) {
        const std::size_t begin = std::size_t{bytesPerRegister} * block->OutputId();
        const std::size_t end = begin + std::size_t{bytesPerRegister} * block->RegisterCount();
        if (begin == end) {
            continue;
        }
        if (!ranges.empty() && begin <= ranges.back().end) {
            ranges.back().end = std::max(ranges.back().end, end);
        } else {
            ranges.push_back({begin, end});
        }
        size = std::max(size, end);
        (block->HasDataSource() ? scanBlocks : cells).push_back({block, begin, block->SerializedOutputSize()});
        if (!block->HasDataSource()) {
            addScanned(begin);
            behindCells = std::max(behindCells, end);
        }
    }
    addScanned(size);
}

} // namespace Services::Common
