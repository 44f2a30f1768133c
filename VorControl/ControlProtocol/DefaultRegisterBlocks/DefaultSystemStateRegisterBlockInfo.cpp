#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultSystemStateRegisterBlockInfo::DefaultSystemStateRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "System",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::System,
           .defaultRegisterCount = 76,
           .bytesPerRegister = 1,
           .minInstanceCount = 1,
           .maxInstanceCount = 1,
           .hasDataSource = false,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultSystemStateRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
