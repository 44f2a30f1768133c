#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultControlInputRegisterBlockInfo::DefaultControlInputRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "ControlInput",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::ControlInput,
           .deserializedInputSize = 67,
           .defaultRegisterCount = 67,
           .bytesPerRegister = 1,
           .minInstanceCount = 1,
           .maxInstanceCount = 1,
           .hasDataSource = false,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultControlInputRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
