#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultProfilePointCloudRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultProfilePointCloudRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultProfilePointCloudRegisterBlockInfo::DefaultProfilePointCloudRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "ProfilePointCloud",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::ProfilePointCloud,
           .defaultRegisterCount = 0,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultProfilePointCloudRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
