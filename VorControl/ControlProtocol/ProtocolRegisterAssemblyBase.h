#pragma once

#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "yApi/yLock.h"

#include <atomic>

namespace VorControl::ControlProtocol {

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
    void CopySupportedRegisterBlocks(const IProtocolRegisterAssembly& other) override;

    /// The byte order of all supported types, and so of all blocks, at once.
    void ChangeBigEndianSupportedBlocks(bool isBigEndian);

private:
    using Blocks = std::list<std::shared_ptr<ProtocolRegisterBlock>>;
};

} // namespace VorControl::ControlProtocol
