#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSurfacePointCloudRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSurfacePointCloudRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultSurfacePointCloudRegisterBlockInfo::DefaultSurfacePointCloudRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "SurfacePointCloud",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::SurfacePointCloud,
           .defaultRegisterCount = 0,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultSurfacePointCloudRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
