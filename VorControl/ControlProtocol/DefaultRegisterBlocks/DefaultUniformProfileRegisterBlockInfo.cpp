#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultUniformProfileRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultUniformProfileRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultUniformProfileRegisterBlockInfo::DefaultUniformProfileRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "UniformProfile",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::UniformProfile,
           .defaultRegisterCount = 0,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultUniformProfileRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
