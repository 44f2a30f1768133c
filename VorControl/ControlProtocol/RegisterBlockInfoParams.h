#pragma once

#include "VorControl/ControlProtocol/IProtocolRegisterBlockFactory.h"
#include "VorControl/ControlProtocol/RegisterBlockCategory.h"

#include <memory>
#include <string>

namespace VorControl::ControlProtocol {

/// The constant facts of a block type.
struct RegisterBlockInfoParams {
    std::string type;        ///< machine name: the key of add requests and of persisted assemblies
    std::string displayName; ///< for users; also the default name of a block
    RegisterBlockCategory category = RegisterBlockCategory::Unknown;
    unsigned short deserializedInputSize = 0; ///< least bytes of a source of Deserialize; 0: the type has none
    unsigned short defaultRegisterCount = 0;
    unsigned char bytesPerRegister = 1; ///< 1 or 2
    unsigned short minInstanceCount = 0;
    unsigned short maxInstanceCount = 0;
    bool hasDataSource = false;      ///< a block has scan data as its source
    bool isProtocolBigEndian = true; ///< the initial byte order
    std::shared_ptr<IProtocolRegisterBlockFactory> factory;
    bool configurableRegisterCount = false; ///< clients may set the register count
};

} // namespace VorControl::ControlProtocol
