#pragma once

#include "VorControl/ControlProtocol/IProtocolRegisterBlockFactory.h"
#include "VorControl/ControlProtocol/RegisterBlockCategory.h"

#include <memory>
#include <string>

namespace VorControl::ControlProtocol {

/// All that is fixed about a block type.
struct RegisterBlockInfoParams {
    std::string type;        ///< machine name: the key of add requests and of persisted assemblies
    std::string displayName; ///< shown to users; also the default name of a block
    RegisterBlockCategory category = RegisterBlockCategory::Unknown;
    unsigned short deserializedInputSize = 0; ///< bytes that a source of Deserialize holds at least; 0: writes only
    unsigned short defaultRegisterCount = 0;
    unsigned char bytesPerRegister = 1; ///< 1 or 2
    unsigned short minInstanceCount = 0;
    unsigned short maxInstanceCount = 0;
    bool hasDataSource = false;      ///< fed by a scan output, named by the block's data source
    bool isProtocolBigEndian = true; ///< byte order at first
    std::shared_ptr<IProtocolRegisterBlockFactory> factory;
    bool configurableRegisterCount = false; ///< clients may set the register count
};

} // namespace VorControl::ControlProtocol
