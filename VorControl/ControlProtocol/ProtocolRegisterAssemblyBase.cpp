#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/Threads/Locker.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorControl/ControlProtocol/Translate.h"

#include <algorithm>

namespace VorControl::ControlProtocol {

ProtocolRegisterAssemblyBase::ProtocolRegisterAssemblyBase(bool isGlobalAddressSpaceUsed, unsigned short outputIdMin,
                                                           unsigned short outputIdMax, const char* id,
                                                           const std::string& displayName) {
    if (outputIdMax == NoneGiven || outputIdMax < outputIdMin) {
        Vor::Throw(
            yERROR_PARAMETER,
            Translate("beApp.ctrl",
                      "Minimum output id/address value %1$u and/or maximum output id/address value %2$u are invalid. "
                      "Check the id/address field in the connection map."),
            outputIdMin, outputIdMax);
    }
    if (id == nullptr || *id == '\0') {
        Vor::Throw(yERROR_PARAMETER,
                   Translate("beApp.ctrl", "Invalid value for register assembly identifier. Check the id/address field "
                                           "in the connection map."));
    }
    Vor::ThrowIfFailed(yLock_Construct(lock.Out()));

    attributes.isGlobalAddressSpaceUsed = isGlobalAddressSpaceUsed;
    attributes.outputIdMin = outputIdMin;
    attributes.outputIdMax = outputIdMax;
    properties.id = id;
    properties.displayName = displayName;
}

ProtocolRegisterAssemblyBase::~ProtocolRegisterAssemblyBase() = default;

void ProtocolRegisterAssemblyBase::BeginLock() const {
    Vor::ThrowIfFailed(yLock_Enter(lock.Get()));
    lockHeld.store(true, std::memory_order_relaxed);
}

void ProtocolRegisterAssemblyBase::EndLock() const {
    lockHeld.store(false, std::memory_order_relaxed);
    Vor::ThrowIfFailed(yLock_Exit(lock.Get()));
}

void ProtocolRegisterAssemblyBase::AddSupportedBlockType(std::unique_ptr<ProtocolRegisterBlockInfo> info) {
    const Vor::Locker locker(lock.Get());
    if (FindSupportedType(info->Type()) != nullptr) {
        Vor::Throw(yERROR_ALREADY_EXISTS, Translate("beApp.ctrl", "This register block type %s is already supported."),
                   info->DisplayName());
    }
    info->SetIsGlobalAddressSpaceUsed(attributes.isGlobalAddressSpaceUsed.Get());
    supportedTypes.push_back(std::move(info));
}

std::uint32_t ProtocolRegisterAssemblyBase::Add(Vor::Params::Group& group) {
    auto& request = dynamic_cast<AddBlockParams&>(group);
    const unsigned long count = request.blocks.Count();
    AddProgress progress;
    for (unsigned long i = 0; i < count; ++i) {
        try {
            AddBlock(request.blocks.At(i), request.autoShift.Get(), progress);
        } catch (const Vor::Exception& exception) {
            Vor::LogUser(Vor::UserWarning, "VorControl", Translate("control", "%1$s"), exception.what());
        }
    }
    if (count != 0 && progress.added == 0) {
        Vor::Throw(yERROR, Translate("beApp.ctrl", "No data sources were added."));
    }
    if (progress.added != count) {
        Vor::Throw(yERROR,
                   Translate("beApp.ctrl",
                             "Only %u out of %u data sources were added.  Please check the connection map for missing "
                             "entries."),
                   progress.added, count);
    }
    return progress.result;
}

void ProtocolRegisterAssemblyBase::AddBlock(RegisterBlockParams& params, bool autoShift, AddProgress& progress) {
    if (params.type.Get().empty()) {
        Vor::Throw(yERROR_PARAMETER,
                   Translate("beApp.ctrl", "Data source type is missing from the add request. Please include the data "
                                           "source type in the request."));
    }
    const Vor::Locker locker(lock.Get());
    auto* const info = FindSupportedType(params.type.Get());
    if (info == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND,
                   Translate("control", "Unable to add the %1$s data source because it is not supported."),
                   params.displayName.Get());
    }
    if (info->AtMaxInstance()) {
        Vor::Throw(
            yERROR_PARAMETER,
            Translate("beApp.ctrl",
                      "Unable to add another %1$s data source because the maximum number of this source has already "
                      "been added."),
            info->DisplayName());
    }
    unsigned short end = 0;
    progress.SetResultOnce(FormatBlockParams(*info, params, end));

    const auto [position, shifted] = GetInsertPosition(params.outputId.Get(), end, autoShift, NoneGiven);
    progress.SetResultOnce(shifted ? BlocksShifted : 0);

    const auto block = info->ConstructBlock(params);
    blockIndex.Watch(*block);
    blockIndex.Added(addedBlocks.insert(position, block));
    info->IncrementInstanceCount();
    ++progress.added;
    UpdateOutputIdReadOnlyAttribute(*block, *info);
}

void ProtocolRegisterAssemblyBase::ResetRegisterAssembly() {
    const Vor::Locker locker(lock.Get());
    addedBlocks.clear();
    blockIndex.Cleared();
    for (const auto& info : supportedTypes) {
        info->ResetInstanceCount();
    }
}

void ProtocolRegisterAssemblyBase::InitDefaultRegisterBlocksForRegisterAssembly() {
    AddBlockParams request;
    const Vor::Locker locker(lock.Get());
    ResetRegisterAssembly();
    for (const auto& info : supportedTypes) {
        if (info->MinInstanceCount() != 0) {
            const unsigned long count = request.blocks.Count();
            request.blocks.Resize(count + 1);
            request.blocks.At(count).type = info->Type();
        }
    }
    if (request.blocks.Count() != 0) {
        Add(request);
    }
}

const std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>>&
ProtocolRegisterAssemblyBase::SupportedRegisterBlockTypes() {
    if (!lockHeld.load(std::memory_order_relaxed)) {
        Vor::Throw(yERROR_STATE);
    }
    return supportedTypes;
}

std::size_t ProtocolRegisterAssemblyBase::SupportedRegisterBlockTypesCount() const {
    const Vor::Locker locker(lock.Get());
    return supportedTypes.size();
}

const std::list<std::shared_ptr<ProtocolRegisterBlock>>& ProtocolRegisterAssemblyBase::AddedRegisterBlocks() const {
    if (!lockHeld.load(std::memory_order_relaxed)) {
        Vor::Throw(yERROR_STATE);
    }
    return addedBlocks;
}

std::size_t ProtocolRegisterAssemblyBase::AddedRegisterBlocksCount() const {
    const Vor::Locker locker(lock.Get());
    return addedBlocks.size();
}

std::list<std::shared_ptr<ProtocolRegisterBlock>>
ProtocolRegisterAssemblyBase::FindAddedBlocksOfTypes(const std::list<std::string>& types) {
    const Vor::Locker locker(lock.Get());
    std::list<std::shared_ptr<ProtocolRegisterBlock>> found;
    std::copy_if(addedBlocks.begin(), addedBlocks.end(), std::back_inserter(found), [&](const auto& block) {
        return std::find(types.begin(), types.end(), block->Type()) != types.end();
    });
    return found;
}

std::map<std::string, std::shared_ptr<ProtocolRegisterBlock>>
ProtocolRegisterAssemblyBase::FindAddedScanOutputBlocksSortedByDataSource() {
    const Vor::Locker locker(lock.Get());
    std::map<std::string, std::shared_ptr<ProtocolRegisterBlock>> found;
    for (const auto& block : addedBlocks) {
        if (block->HasDataSource()) {
            found.emplace(block->DataSource(), block);
        }
    }
    return found;
}

std::vector<std::string> ProtocolRegisterAssemblyBase::DataSourceList() const {
    const Vor::Locker locker(lock.Get());
    std::vector<std::string> sources;
    sources.reserve(addedBlocks.size());
    for (const auto& block : addedBlocks) {
        if (block->HasDataSource()) {
            sources.push_back(block->DataSource());
        }
    }
    return sources;
}

const char* ProtocolRegisterAssemblyBase::Id() const {
    return properties.id.Get().c_str();
}

const char* ProtocolRegisterAssemblyBase::DisplayName() const {
    return properties.displayName.Get().c_str();
}

void ProtocolRegisterAssemblyBase::CopySupportedRegisterBlocks(const IProtocolRegisterAssembly& other) {
    const Vor::Locker locker(lock.Get());
    ResetRegisterAssembly();
    AssemblyLock otherLock(other);
    for (const auto& block : other.AddedRegisterBlocks()) {
        if (FindSupportedType(block->Type()) == nullptr) {
            continue;
        }
        AddBlockParams request;
        request.blocks.Resize(1);
        auto& params = request.blocks.At(0);
        params.type = block->Type();
        if (block->HasDataSource()) {
            params.dataSource = block->DataSource();
        }
        params.displayName = block->DisplayName();
        request.autoShift = true;
        Add(request);
    }
    otherLock.Unlock();
}

void ProtocolRegisterAssemblyBase::ChangeBigEndianSupportedBlocks(bool isBigEndian) {
    const Vor::Locker locker(lock.Get());
    for (const auto& info : supportedTypes) {
        info->SetIsProtocolBigEndian(isBigEndian);
    }
}

ProtocolRegisterBlockInfo* ProtocolRegisterAssemblyBase::FindSupportedType(const std::string& type) const {
    const auto found = std::find_if(supportedTypes.begin(), supportedTypes.end(),
                                    [&](const auto& info) { return info->Type() == type; });
    return found == supportedTypes.end() ? nullptr : found->get();
}

std::uint32_t ProtocolRegisterAssemblyBase::FormatBlockParams(const ProtocolRegisterBlockInfo& info,
                                                              RegisterBlockParams& params, unsigned short& end) const {
    std::uint32_t code = 0;
    if (info.HasDataSource() && params.dataSource.Get().empty()) {
        Vor::Throw(yERROR_PARAMETER,
                   Translate("beApp.ctrl", "Cannot add block. A data source is required for block type %1$s."),
                   info.DisplayName());
    }
    if (params.displayName.Get().empty()) {
        params.displayName = info.DisplayName();
    }
    if (params.registerCount.Get() == NoneGiven) {
        params.registerCount = info.DefaultRegisterCount();
    } else if (!info.IsRegisterCountConfigurable() && params.registerCount.Get() != info.DefaultRegisterCount()) {
        params.registerCount = info.DefaultRegisterCount();
        code = RegisterCountIgnored;
        Vor::LogUser(Vor::UserWarning, "control",
                     Translate("control", "Size of block %1$s is not configurable. The block was added with its "
                                          "default size of %2$u."),
                     params.displayName.Get(), info.DefaultRegisterCount());
    }
    if (params.outputId.Get() == NoneGiven) {
        params.outputId = GetNextRegisterBlockOutputId();
    }

    const unsigned short id = params.outputId.Get();
    if (!attributes.isGlobalAddressSpaceUsed.Get()) {
        end = id;
        return code;
    }
    const int last = id + params.registerCount.Get() - 1;
    if (!IsValidOutputId(id, info.DefaultRegisterCount())) {
        Vor::Throw(
            yERROR_PARAMETER,
            Translate("beApp.ctrl",
                      "Cannot add block %1$s because the block output id/address range [%2$u, %3$u] lies outside the "
                      "valid output id/address range [%4$u, %5$u]."),
            params.displayName.Get(), id, static_cast<unsigned int>(last), attributes.outputIdMin.Get(),
            attributes.outputIdMax.Get());
    }
    end = static_cast<unsigned short>(last);
    return code;
}

std::pair<ProtocolRegisterAssemblyBase::Blocks::iterator, bool>
ProtocolRegisterAssemblyBase::GetInsertPosition(unsigned short start, unsigned short end, bool autoShift,
                                                unsigned short ignoreOutputId) {
    for (auto position = blockIndex.WalkStart(start, end); position != addedBlocks.end(); ++position) {
        const auto& block = **position;
        if (block.OutputId() == ignoreOutputId) {
            continue;
        }
        if (IsBlockOverlapping(start, end, block)) {
            if (!autoShift) {
                ThrowOverlap(start, end, block);
            }
            ShiftRegisterAddresses(position, start, end, ignoreOutputId);
            return {position, true};
        }
        if (end < block.OutputId()) {
            return {position, false};
        }
    }
    return {addedBlocks.end(), false};
}

unsigned short ProtocolRegisterAssemblyBase::GetNextRegisterBlockOutputId() const {
    if (addedBlocks.empty()) {
        return attributes.isGlobalAddressSpaceUsed.Get() ? attributes.outputIdMin.Get() : 0;
    }
    return static_cast<unsigned short>(addedBlocks.back()->EndAddress() + 1);
}

bool ProtocolRegisterAssemblyBase::IsValidOutputId(unsigned short id, unsigned short count) const {
    const int max = attributes.outputIdMax.Get();
    return id <= max && id + count - 1 <= max && attributes.outputIdMin.Get() <= id;
}

bool ProtocolRegisterAssemblyBase::IsBlockOverlapping(unsigned short start, unsigned short end,
                                                      const ProtocolRegisterBlock& block) {
    const unsigned short first = block.OutputId();
    const unsigned short last = block.EndAddress();
    return (first <= start && start <= last) || (first <= end && end <= last) || (start <= first && end >= last);
}

void ProtocolRegisterAssemblyBase::ThrowOverlap(unsigned short start, unsigned short end,
                                                const ProtocolRegisterBlock& block) {
    if (start != end) {
        Vor::Throw(
            yERROR_CONFLICT,
            Translate("beApp.ctrl",
                      "The block output id/address range [%1$u - %2$u] overlaps with the output id/address range "
                      "[%3$u - %4$u] of an existing block: %5$s. Check the id/address field in the industrial "
                      "protocol connection map."),
            start, end, block.OutputId(), block.EndAddress(), block.DisplayName());
    }
    Vor::Throw(
        yERROR_CONFLICT,
        Translate("beApp.ctrl",
                  "The block output id/address %1$u conflicts with the output id/address %2$u of an existing block: "
                  "%3$s. Check the id/address field in the industrial protocol connection map."),
        start, block.OutputId(), block.DisplayName());
}

void ProtocolRegisterAssemblyBase::UpdateOutputIdReadOnlyAttribute(const ProtocolRegisterBlock& block,
                                                                   const ProtocolRegisterBlockInfo& info) {
    if (attributes.isGlobalAddressSpaceUsed.Get()) {
        const int rangeSize = attributes.outputIdMax.Get() - attributes.outputIdMin.Get() + 1;
        if (rangeSize == block.RegisterCount() * block.BytesPerRegister()) {
            attributes.outputIdReadOnly = true;
        }
    } else if (supportedTypes.size() == 1 && info.MaxInstanceCount() == 1) {
        attributes.outputIdReadOnly = true;
    }
}

void ProtocolRegisterAssemblyBase::ShiftRegisterAddresses(Blocks::iterator from, unsigned short start,
                                                          unsigned short end, unsigned short ignoreOutputId) {
    if (attributes.isGlobalAddressSpaceUsed.Get() && !hasGap(from, start, end)) {
        Vor::Throw(yERROR_FULL);
    }
    unsigned short previousEnd = end;
    for (auto position = from; position != addedBlocks.end(); ++position) {
        auto& block = **position;
        if (block.OutputId() == ignoreOutputId) {
            continue;
        }
        if (previousEnd < block.OutputId()) {
            return;
        }
        blockIndex.Change(position, [&] { block.SetOutputId(static_cast<unsigned short>(previousEnd + 1)); });
        previousEnd = block.EndAddress();
    }
}

bool ProtocolRegisterAssemblyBase::hasGap(Blocks::const_iterator from, unsigned short start, unsigned short end) {
    const int needed = ((end + 1 - start) & 0xFFFF) + UsedRegistersCount(from);
    const int available = (attributes.outputIdMax.Get() + 1 - start) & 0xFFFF;
    return needed <= available;
}

} // namespace VorControl::ControlProtocol
