#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/Threads/Locker.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"
#include "VorControl/ControlProtocol/Translate.h"

#include <iterator>

namespace VorControl::ControlProtocol {

std::uint32_t ProtocolRegisterAssemblyBase::Update(const Vor::Params::Group& group) {
    const auto& request = dynamic_cast<const UpdateBlockParams&>(group);
    const unsigned short id = request.outputId.Get();
    if (id == NoneGiven) {
        Vor::Throw(yERROR_PARAMETER,
                   Translate("beApp.ctrl", "Unable to update the connection map because output id %1$u is invalid."),
                   id);
    }
    {
        const Vor::Locker locker(lock.Get());
        const auto position = blockIndex.Find(id);
        if (position != addedBlocks.end()) {
            return UpdateBlockProperties(position, request);
        }
    }
    Vor::Throw(yERROR_NOT_FOUND,
               Translate("beApp.ctrl",
                         "Unable to update te connection map because there are no data sources with output id %1$u."),
               id);
}

std::uint32_t ProtocolRegisterAssemblyBase::UpdateBlockProperties(Blocks::iterator position,
                                                                  const UpdateBlockParams& params) {
    auto& block = **position;
    const auto& newParams = params.newParams;
    unsigned short id = block.OutputId();
    unsigned short count = block.RegisterCount();
    std::uint32_t code = 0;
    bool placement = false;

    if (newParams.registerCount.Get() != NoneGiven && newParams.registerCount.Get() != count) {
        if (!attributes.isGlobalAddressSpaceUsed.Get()) {
            code = RegisterCountIgnored;
        } else if (block.IsRegisterCountConfigurable()) {
            count = newParams.registerCount.Get();
            placement = true;
        } else {
            Vor::Throw(yERROR_PARAMETER, Translate("control", "Block %1$s does not support changes to its size."),
                       block.DisplayName());
        }
    }
    if (newParams.outputId.Get() != NoneGiven && newParams.outputId.Get() != id) {
        if (!block.IsOutputIdConfigurable()) {
            Vor::Throw(yERROR_PARAMETER, Translate("control", "Block %1$s does not support changes to its output id."),
                       block.DisplayName());
        }
        id = newParams.outputId.Get();
        placement = true;
    }
    if (placement) {
        const bool shifted = PlaceBlock(position, id, count, params.autoShift.Get());
        code = code == 0 && shifted ? BlocksShifted : code;
    }

    if (!newParams.displayName.Get().empty()) {
        block.SetDisplayName(newParams.displayName.Get());
    }
    if (block.HasDataSource() && !newParams.dataSource.Get().empty()) {
        block.SetDataSource(newParams.dataSource.Get());
    }
    return code;
}

bool ProtocolRegisterAssemblyBase::PlaceBlock(Blocks::iterator position, unsigned short id, unsigned short count,
                                              bool autoShift) {
    auto& block = **position;
    unsigned short end = id;
    if (attributes.isGlobalAddressSpaceUsed.Get()) {
        const int last = id + count - 1;
        if (!IsValidOutputId(id, count)) {
            Vor::Throw(yERROR_PARAMETER,
                       Translate("beApp.ctrl",
                                 "Cannot update block %1$s because the block output id/address range [%2$u, %3$u] lies "
                                 "outside the valid output id/address range [%4$u, %5$u]."),
                       block.DisplayName(), id, static_cast<unsigned int>(last), attributes.outputIdMin.Get(),
                       attributes.outputIdMax.Get());
        }
        end = static_cast<unsigned short>(last);
    }
    const auto [next, shifted] = GetInsertPosition(id, end, autoShift, block.OutputId());
    blockIndex.Change(position, [&, before = next] {
        block.SetOutputId(id);
        block.SetRegisterCount(count);
        if (before != position && before != std::next(position)) {
            addedBlocks.splice(before, addedBlocks, position);
        }
    });
    return shifted;
}

std::uint32_t ProtocolRegisterAssemblyBase::Remove(const Vor::Params::Group& group) {
    const auto& request = dynamic_cast<const RemoveBlockParams&>(group);
    const unsigned long count = request.outputIdList.Count();
    unsigned long removed = 0;
    for (unsigned long i = 0; i < count; ++i) {
        try {
            RemoveBlock(request.outputIdList.At(i).outputId.Get());
            ++removed;
        } catch (const Vor::Exception& exception) {
            Vor::LogUser(Vor::UserWarning, "VorControl", Translate("control", "%1$s"), exception.what());
        }
    }
    if (count != 0 && removed == 0) {
        Vor::Throw(yERROR_NOT_FOUND, Translate("beApp.ctrl", "No data sources were removed."));
    }
    return 0;
}

void ProtocolRegisterAssemblyBase::RemoveBlock(unsigned short id) {
    if (id == NoneGiven) {
        Vor::Throw(yERROR_PARAMETER,
                   Translate("beApp.ctrl",
                             "Invalid output id %1$u in the request to remove data source. Please provide "
                             "a valid output id in the request."),
                   id);
    }
    const Vor::Locker locker(lock.Get());
    const auto position = blockIndex.Find(id);
    if (position == addedBlocks.end()) {
        Vor::Throw(yERROR_NOT_FOUND, Translate("beApp.ctrl", "Cannot find a data source with output id %1$u."), id);
    }
    if ((*position)->AtMinInstance()) {
        Vor::Throw(yERROR_PARAMETER,
                   Translate("beApp.ctrl", "Cannot remove data source with output id %1$u because the connection map "
                                           "cannot have fewer instances of this source than the current number."),
                   id);
    }
    Erase(position);
}

void ProtocolRegisterAssemblyBase::RemoveAll() {
    const Vor::Locker locker(lock.Get());
    try {
        for (auto position = addedBlocks.begin(); position != addedBlocks.end();) {
            position = (*position)->AtMinInstance() ? std::next(position) : Erase(position);
        }
    } catch (const Vor::Exception& exception) {
        Vor::LogUser(Vor::UserWarning, "VorControl", Translate("control", "%1$s"), exception.what());
    }
}

ProtocolRegisterAssemblyBase::Blocks::iterator ProtocolRegisterAssemblyBase::Erase(Blocks::iterator position) {
    const auto block = *position;
    blockIndex.Removing(position);
    const auto next = addedBlocks.erase(position);
    block->DecrementInstanceCount();
    return next;
}

std::uint32_t ProtocolRegisterAssemblyBase::Compact(const Vor::Params::Group& group) {
    const auto& request = dynamic_cast<const CompactBlocksParams&>(group);
    unsigned short next = FirstCompactedId(request.startingOutputId.Get());
    const Vor::Locker locker(lock.Get());
    for (const auto& block : addedBlocks) {
        block->SetOutputId(next);
        next = static_cast<unsigned short>(block->EndAddress() + 1);
    }
    return 0;
}

unsigned short ProtocolRegisterAssemblyBase::FirstCompactedId(unsigned short start) {
    const unsigned short min = attributes.outputIdMin.Get();
    const unsigned short max = attributes.outputIdMax.Get();
    if (start == NoneGiven) {
        return attributes.isGlobalAddressSpaceUsed.Get() ? min : 0;
    }
    const Vor::Locker locker(lock.Get());
    if (!attributes.isGlobalAddressSpaceUsed.Get()) {
        const int count = static_cast<int>(addedBlocks.size());
        if (count - 1 + start > NoneGiven - 1) {
            Vor::Throw(
                yERROR_FULL,
                Translate("beApp.ctrl",
                          "Cannot compact data sources starting from output id [%1$u] because the resulting output "
                          "ids would lie outside the valid output id range [%2$u, %3$u]."),
                start, min, static_cast<unsigned int>(NoneGiven - count));
        }
        return start;
    }
    if (!IsValidOutputId(start, 1)) {
        Vor::Throw(yERROR_PARAMETER,
                   Translate("beApp.ctrl",
                             "Cannot compact the data sources because the request's output id %1$u would cause the "
                             "resulting output ids to lie outside the valid output id range [%2$u, %3$u]."),
                   start, min, max);
    }
    const unsigned short used = UsedRegistersCount(addedBlocks.begin());
    if (max - start + 1 < used) {
        Vor::Throw(
            yERROR_FULL,
            Translate("beApp.ctrl",
                      "Cannot compact data sources because resulting output id [%1$u, %2$u] would lie outside the "
                      "valid output id range [%3$u, %4$u]."),
            start, static_cast<unsigned int>(start + used - 1), min, max);
    }
    return start;
}

} // namespace VorControl::ControlProtocol
