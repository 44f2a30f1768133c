#pragma once

#include "VorApi/Handle.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyCommandTarget.h"
#include "VorControl/ControlProtocol/RegisterBlockIndex.h"
#include "yApi/yLock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace VorControl::ControlProtocol {

class UpdateBlockParams;

class ProtocolRegisterAssemblyBase : public IProtocolRegisterAssembly {
public:
    /// Output ids are register addresses from outputIdMin to outputIdMax, both inclusive and below 65535, in a global
    /// address space, and plain numbers of blocks otherwise. Throws yERROR_PARAMETER for bad limits or an empty id,
    /// and the status of a lock that can't be made.
    ProtocolRegisterAssemblyBase(bool isGlobalAddressSpaceUsed, unsigned short outputIdMin, unsigned short outputIdMax,
                                 const char* id, const std::string& displayName);
    ~ProtocolRegisterAssemblyBase() override;
    ProtocolRegisterAssemblyBase(const ProtocolRegisterAssemblyBase&) = delete;
    ProtocolRegisterAssemblyBase& operator=(const ProtocolRegisterAssemblyBase&) = delete;

    void BeginLock() const override;
    void EndLock() const override;
    void AddSupportedBlockType(std::unique_ptr<ProtocolRegisterBlockInfo> info) override;
    std::uint32_t Add(Vor::Params::Group& group) override;
    std::uint32_t Remove(const Vor::Params::Group& group) override;
    void RemoveAll() override;
    std::uint32_t Compact(const Vor::Params::Group& group) override;
    std::uint32_t Update(const Vor::Params::Group& group) override;
    void ResetRegisterAssembly() override;
    void InitDefaultRegisterBlocksForRegisterAssembly() override;
    const std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>>& SupportedRegisterBlockTypes() override;
    std::size_t SupportedRegisterBlockTypesCount() const override;
    const std::list<std::shared_ptr<ProtocolRegisterBlock>>& AddedRegisterBlocks() const override;
    std::size_t AddedRegisterBlocksCount() const override;
    std::list<std::shared_ptr<ProtocolRegisterBlock>>
    FindAddedBlocksOfTypes(const std::list<std::string>& types) override;
    std::map<std::string, std::shared_ptr<ProtocolRegisterBlock>>
    FindAddedScanOutputBlocksSortedByDataSource() override;
    RegisterAssemblyAttributes& Attributes() override { return attributes; }
    RegisterAssemblyProperties& Properties() override { return properties; }
    std::vector<std::string> DataSourceList() const override;
    const char* Id() const override;
    const char* DisplayName() const override;
    VorCommon::ICommandTarget& CommandTarget() override { return commandTarget; }
    void CopySupportedRegisterBlocks(const IProtocolRegisterAssembly& other) override;

    /// Sets the byte order of all supported types, and so of all blocks.
    void ChangeBigEndianSupportedBlocks(bool isBigEndian);

private:
    using Blocks = RegisterBlockIndex::Blocks;

    // Results of Add and Update.
    static constexpr std::uint32_t BlocksShifted = 1;
    static constexpr std::uint32_t RegisterCountIgnored = 2;

    struct AddProgress {
        unsigned int added = 0;
        std::uint32_t result = 0;

        void SetResultOnce(std::uint32_t code) { result = result == 0 ? code : result; }
    };

    // AddBlock, RemoveBlock and FirstCompactedId enter the lock. The caller of the others holds it.

    void AddBlock(RegisterBlockParams& params, bool autoShift, AddProgress& progress);
    ProtocolRegisterBlockInfo* FindSupportedType(const std::string& type) const;
    std::uint32_t FormatBlockParams(const ProtocolRegisterBlockInfo& info, RegisterBlockParams& params,
                                    unsigned short& end) const;
    std::pair<Blocks::iterator, bool> GetInsertPosition(unsigned short start, unsigned short end, bool autoShift,
                                                        unsigned short ignoreOutputId);
    unsigned short GetNextRegisterBlockOutputId() const;
    bool IsValidOutputId(unsigned short id, unsigned short count) const;
    static bool IsBlockOverlapping(unsigned short start, unsigned short end, const ProtocolRegisterBlock& block);
    [[noreturn]] static void ThrowOverlap(unsigned short start, unsigned short end, const ProtocolRegisterBlock& block);
    void UpdateOutputIdReadOnlyAttribute(const ProtocolRegisterBlock& block, const ProtocolRegisterBlockInfo& info);

    /// Moves blocks up, from `from` on and as far as needed, so that none begins at `end` or before. Throws
    /// yERROR_FULL when a global address space has no room for all of them.
    void ShiftRegisterAddresses(Blocks::iterator from, unsigned short start, unsigned short end,
                                unsigned short ignoreOutputId);
    /// Whether the range and all blocks from `from` on fit into the address space without gaps.
    bool hasGap(Blocks::const_iterator from, unsigned short start, unsigned short end);
    /// Registers of all blocks from `from` on, in 16 bits.
    unsigned short UsedRegistersCount(Blocks::const_iterator from) { return blockIndex.RegistersFrom(from); }

    std::uint32_t UpdateBlockProperties(Blocks::iterator position, const UpdateBlockParams& params);
    /// Gives a block its output id and register count. True when others were shifted to make room.
    bool PlaceBlock(Blocks::iterator position, unsigned short id, unsigned short count, bool autoShift);
    void RemoveBlock(unsigned short id);
    /// Removes a block from the list and from the count of its type. Returns the position of the next one.
    Blocks::iterator Erase(Blocks::iterator position);
    /// The output id of the first block after Compact. Throws unless all blocks have room from there on.
    unsigned short FirstCompactedId(unsigned short start);

    std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>> supportedTypes;
    Blocks addedBlocks;
    RegisterBlockIndex blockIndex{addedBlocks};
    mutable std::atomic<bool> lockHeld{false};
    /// Reentrant; guards the types, the blocks and the attributes. Ranks before the lock of a group and, while blocks
    /// are copied, before the lock of the other assembly.
    Vor::Handle<yLock, yLock_Destroy> lock;
    RegisterAssemblyAttributes attributes;
    RegisterAssemblyProperties properties;
    ProtocolRegisterAssemblyCommandTarget commandTarget{*this};
};

} // namespace VorControl::ControlProtocol
