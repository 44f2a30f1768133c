#pragma once

#include "Vor/VorGetText.h"
#include "VorApi/Params/Group.h"
#include "VorCommon/ICommandTarget.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/RegisterAssemblyProperties.h"

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VorControl::ControlProtocol {

/// The registers that a protocol client reads and writes: a list of register blocks, sorted by output id, which don't
/// overlap.
///
/// Every operation may be called on any thread and holds the assembly's reentrant lock while it works, except Id(),
/// DisplayName(), Attributes(), Properties() and CommandTarget(). A failure is thrown as a Vor::Exception, that of the
/// lock too. Handlers of the properties of blocks run under the lock. They may change other blocks, and must not remove
/// any.
class IProtocolRegisterAssembly {
public:
    inline static const char* const DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Register Assembly 0");

    virtual ~IProtocolRegisterAssembly() = default;

    /// The beginning and the end of a use of the block types and the blocks, and of serialisation while the assembly
    /// may change. EndLock ends the use even when it is an inner one.
    virtual void BeginLock() const = 0;
    virtual void EndLock() const = 0;

    /// Throws yERROR_ALREADY_EXISTS when the assembly already has a type of this name.
    virtual void AddSupportedBlockType(std::unique_ptr<ProtocolRegisterBlockInfo> info) = 0;

    /// Adds the blocks of an AddBlockParams; throws std::bad_cast for another group. Values that aren't given are
    /// filled in. The lock is entered for each entry. A failing entry is logged to the user, and the next ones are
    /// still added. Throws yERROR at the end unless all blocks were added; what was added stays. Returns 1 if blocks
    /// were shifted to make room, 2 if a register count was replaced by the type's default, whichever came first,
    /// otherwise 0.
    virtual std::uint32_t Add(Vor::Params::Group& group) = 0;
    /// Removes the blocks of a RemoveBlockParams; throws std::bad_cast for another group. The other blocks don't move.
    /// The lock is entered for each entry. A failing entry, such as one whose type would have too few blocks, is logged
    /// to the user, and the next ones are still removed. Throws yERROR_NOT_FOUND if no block was removed. Returns 0.
    virtual std::uint32_t Remove(const Vor::Params::Group& group) = 0;
    /// Removes the blocks that are above the minimum number of their type. A failure of the lock is thrown. A
    /// Vor::Exception of a block is logged to the user and ends the walk: the blocks after it stay.
    virtual void RemoveAll() = 0;
    /// Closes all gaps: moves the blocks one after the other, from the output id in a CompactBlocksParams on. Throws
    /// std::bad_cast for another group. Throws yERROR_FULL or yERROR_PARAMETER, and moves nothing, if the blocks would
    /// be outside of the range. Returns 0.
    virtual std::uint32_t Compact(const Vor::Params::Group& group) = 0;
    /// Changes the block with the output id in an UpdateBlockParams; throws std::bad_cast for another group. Returns 1
    /// if blocks were shifted to make room, 2 if the register count didn't change because there is no global address
    /// space, otherwise 0. A failure doesn't change the block, but other blocks may be shifted already.
    virtual std::uint32_t Update(const Vor::Params::Group& group) = 0;

    /// Removes all blocks, also those that are needed for the minimum number of their type.
    virtual void ResetRegisterAssembly() = 0;
    /// Removes all blocks and adds one of each type with a minimum number above 0.
    virtual void InitDefaultRegisterBlocksForRegisterAssembly() = 0;

    /// In order of adding. Valid until EndLock; throws yERROR_STATE outside of BeginLock and EndLock.
    virtual const std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>>& SupportedRegisterBlockTypes() = 0;
    virtual std::size_t SupportedRegisterBlockTypesCount() const = 0;
    /// By ascending output id. Valid until EndLock; throws yERROR_STATE outside of BeginLock and EndLock.
    virtual const std::list<std::shared_ptr<ProtocolRegisterBlock>>& AddedRegisterBlocks() const = 0;
    virtual std::size_t AddedRegisterBlocksCount() const = 0;

    /// In list order. The blocks refer to their types: don't use them after the assembly is destroyed.
    virtual std::list<std::shared_ptr<ProtocolRegisterBlock>>
    FindAddedBlocksOfTypes(const std::list<std::string>& types) = 0;
    /// By data source. Of several blocks with the same data source, only the first one in the list.
    virtual std::map<std::string, std::shared_ptr<ProtocolRegisterBlock>>
    FindAddedScanOutputBlocksSortedByDataSource() = 0;

    virtual RegisterAssemblyAttributes& Attributes() = 0;
    virtual RegisterAssemblyProperties& Properties() = 0;

    /// In list order, with duplicates.
    virtual std::vector<std::string> DataSourceList() const = 0;

    /// Owned by the assembly.
    virtual const char* Id() const = 0;
    virtual const char* DisplayName() const = 0;

    /// The commands that change the assembly. Owned by it.
    virtual VorCommon::ICommandTarget& CommandTarget() = 0;

    /// Replaces the blocks by those of the other assembly whose types are supported here, without gaps and with default
    /// sizes. Enters the lock of this assembly, then that of the other one: two assemblies must not copy each other at
    /// the same time.
    virtual void CopySupportedRegisterBlocks(const IProtocolRegisterAssembly& other) = 0;
};

} // namespace VorControl::ControlProtocol
