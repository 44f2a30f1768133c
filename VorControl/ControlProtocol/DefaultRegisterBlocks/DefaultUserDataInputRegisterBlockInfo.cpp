#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultUserDataInputRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultUserDataInputRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultUserDataInputRegisterBlockInfo::DefaultUserDataInputRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "UserDataInput",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::UserDataInput,
           .deserializedInputSize = 468,
           .defaultRegisterCount = 468,
           .bytesPerRegister = 1,
           .minInstanceCount = 1,
           .maxInstanceCount = 1,
           .hasDataSource = false,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultUserDataInputRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
