#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultControlOutputRegisterBlockInfo::DefaultControlOutputRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "ControlOutput",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::ControlOutput,
           .defaultRegisterCount = 3,
           .bytesPerRegister = 1,
           .minInstanceCount = 1,
           .maxInstanceCount = 1,
           .hasDataSource = false,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultControlOutputRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
