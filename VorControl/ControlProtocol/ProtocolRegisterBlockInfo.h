#pragma once

#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/RegisterBlockInfoParams.h"

#include <memory>
#include <string>

namespace VorControl::ControlProtocol {

class ProtocolRegisterBlock;
class RegisterBlockParams;

/// One block type of one assembly: has the facts of the type, makes its blocks and counts them. As a document it is
/// read-only and describes to clients which blocks an assembly offers.
///
/// It has no lock: the assembly that owns it serialises access. It outlives the blocks that it makes.
class ProtocolRegisterBlockInfo : public Vor::Params::Group {
public:
    /// Throws yERROR_PARAMETER when the maximum number of instances is below the minimum.
    explicit ProtocolRegisterBlockInfo(RegisterBlockInfoParams params);
    ~ProtocolRegisterBlockInfo() override;

    const std::string& Type() const;
    const std::string& DisplayName() const;
    RegisterBlockCategory Category() const;
    unsigned short DeserializedInputSize() const { return deserializedInputSize; }
    unsigned short DefaultRegisterCount() const;
    unsigned short MinInstanceCount() const;
    unsigned short MaxInstanceCount() const;
    unsigned char BytesPerRegister() const { return bytesPerRegister; }
    bool IsRegisterCountConfigurable() const;
    bool HasDataSource() const;

    /// The byte order of all blocks of this type, also of those that exist already.
    bool IsProtocolBigEndian() const { return isProtocolBigEndian; }
    void SetIsProtocolBigEndian(bool isBigEndian) { isProtocolBigEndian = isBigEndian; }

    /// True: output ids are register addresses. The assembly that the type is added to sets it.
    bool IsGlobalAddressSpaceUsed() const { return isGlobalAddressSpaceUsed; }
    void SetIsGlobalAddressSpaceUsed(bool isUsed) { isGlobalAddressSpaceUsed = isUsed; }

    void IncrementInstanceCount();
    void DecrementInstanceCount();
    void ResetInstanceCount();
    bool AtMaxInstance() const;
    bool AtMinInstance() const;

    /// Throws what the block's constructor throws.
    std::shared_ptr<ProtocolRegisterBlock> ConstructBlock(const RegisterBlockParams& params);

private:
    void RegisterFields();
    void AddCategories();

    Vor::Params::Value<std::string> type;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Enum<RegisterBlockCategory> category;
    Vor::Params::Value<unsigned short> defaultRegisterCount;
    Vor::Params::Value<unsigned short> instanceCount;
    Vor::Params::Value<unsigned short> minInstanceCount;
    Vor::Params::Value<unsigned short> maxInstanceCount;
    Vor::Params::Value<bool> hasDataSource;
    Vor::Params::Value<bool> configurableRegisterCount;
    unsigned short deserializedInputSize;
    unsigned char bytesPerRegister;
    bool isProtocolBigEndian;
    bool isGlobalAddressSpaceUsed = false;
    std::shared_ptr<IProtocolRegisterBlockFactory> factory;
};

} // namespace VorControl::ControlProtocol
