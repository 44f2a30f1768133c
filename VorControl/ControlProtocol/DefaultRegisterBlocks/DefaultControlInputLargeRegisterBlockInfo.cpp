#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputLargeRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputLargeRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultControlInputLargeRegisterBlockInfo::DefaultControlInputLargeRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "ControlInputLarge",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::ControlInput,
           .deserializedInputSize = 496,
           .defaultRegisterCount = 496,
           .bytesPerRegister = 1,
           .minInstanceCount = 1,
           .maxInstanceCount = 1,
           .hasDataSource = false,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultControlInputLargeRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
