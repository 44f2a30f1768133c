#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultUniformSurfaceRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultUniformSurfaceRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultUniformSurfaceRegisterBlockInfo::DefaultUniformSurfaceRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "UniformSurface",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::UniformSurface,
           .defaultRegisterCount = 0,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultUniformSurfaceRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
