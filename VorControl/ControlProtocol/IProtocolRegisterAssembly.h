#pragma once

#include "Vor/VorGetText.h"
#include "VorApi/Params/Group.h"
#include "VorCommon/ICommandTarget.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/RegisterAssemblyAttributes.h"
#include "VorControl/ControlProtocol/RegisterAssemblyProperties.h"

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VorControl::ControlProtocol {

/// What a protocol client reads and writes: a list of register blocks, sorted by output id and never overlapping.
///
/// Every operation may be called on any thread. It takes the assembly's reentrant lock for its own work, but for
/// Id(), DisplayName(), Attributes(), Properties() and CommandTarget(). Failures are Vor::Exception; a lock that fails
/// throws its status.
class IProtocolRegisterAssembly {
public:
    inline static const char* const DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Register Assembly 0");

    virtual ~IProtocolRegisterAssembly() = default;

    /// Brackets a walk over the two containers, or serialisation that must not meet an edit. EndLock ends the walk
    /// even when brackets are nested.
    virtual void BeginLock() const = 0;
    virtual void EndLock() const = 0;

    /// Throws yERROR_ALREADY_EXISTS when the assembly has a type of this name.
    virtual void AddSupportedBlockType(std::unique_ptr<ProtocolRegisterBlockInfo> info) = 0;

    /// Adds the blocks of an AddBlockParams, another group is a bad cast; what a request leaves open is filled in.
    /// Each entry has the lock for itself. A failing entry is logged to the user and the rest goes on; in the end
    /// yERROR is thrown unless every block was added, and what was added stays. Returns the first of 0 done,
    /// 1 blocks were shifted to make room, 2 a register count was replaced by the type's default.
    virtual std::uint32_t Add(Vor::Params::Group& group) = 0;
    /// Removes the blocks of a RemoveBlockParams, another group is a bad cast; the others stay where they are. Each
    /// entry has the lock for itself. A failing entry, such as one whose type would fall below its least number, is
    /// logged to the user and the rest goes on; yERROR_NOT_FOUND is thrown only when none was removed. Returns 0.
    virtual std::uint32_t Remove(const Vor::Params::Group& group) = 0;
    /// Removes every block whose type doesn't demand it. Throws no Vor::Exception.
    virtual void RemoveAll() = 0;
    /// Closes all gaps: places the blocks one behind the other from the output id that a CompactBlocksParams gives,
    /// another group is a bad cast. Throws yERROR_FULL or yERROR_PARAMETER, and moves nothing, when they would leave
    /// the range. Returns 0.
    virtual std::uint32_t Compact(const Vor::Params::Group& group) = 0;
    /// Changes the one block that an UpdateBlockParams selects, another group is a bad cast. Returns 0 done, 1 blocks
    /// were shifted to make room, 2 the register count was left as it was, for there is no global address space. A
    /// failure leaves the block as it was, but blocks that were shifted before it stay shifted.
    virtual std::uint32_t Update(const Vor::Params::Group& group) = 0;

    /// Drops all blocks, whatever the least number of their type.
    virtual void ResetRegisterAssembly() = 0;
    /// Drops all blocks and adds one of each type that demands an instance.
    virtual void InitDefaultRegisterBlocksForRegisterAssembly() = 0;

    /// In order of adding. Valid until EndLock; throws yERROR_STATE outside of BeginLock and EndLock.
    virtual const std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>>& SupportedRegisterBlockTypes() = 0;
    virtual std::size_t SupportedRegisterBlockTypesCount() const = 0;
    /// By ascending output id. Valid until EndLock; throws yERROR_STATE outside of BeginLock and EndLock.
    virtual const std::list<std::shared_ptr<ProtocolRegisterBlock>>& AddedRegisterBlocks() const = 0;
    virtual std::size_t AddedRegisterBlocksCount() const = 0;

    /// In list order. The blocks refer to their types: don't use them beyond the life of the assembly.
    virtual std::list<std::shared_ptr<ProtocolRegisterBlock>>
    FindAddedBlocksOfTypes(const std::list<std::string>& types) = 0;
    /// By data source; of several blocks with one data source, the first in the list.
    virtual std::map<std::string, std::shared_ptr<ProtocolRegisterBlock>>
    FindAddedScanOutputBlocksSortedByDataSource() = 0;

    virtual RegisterAssemblyAttributes& Attributes() = 0;
    virtual RegisterAssemblyProperties& Properties() = 0;

    /// In list order, duplicates included.
    virtual std::vector<std::string> DataSourceList() const = 0;

    /// Owned by the assembly.
    virtual const char* Id() const = 0;
    virtual const char* DisplayName() const = 0;

    /// The edit commands. Owned by the assembly.
    virtual VorCommon::ICommandTarget& CommandTarget() = 0;

    /// Replaces the blocks by those of the other assembly whose types are supported here, packed from the start with
    /// default sizes. Takes the own lock, then the other's: two assemblies must not copy each other at once.
    virtual void CopySupportedRegisterBlocks(const IProtocolRegisterAssembly& other) = 0;
};

} // namespace VorControl::ControlProtocol
