#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultImageRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultImageRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultImageRegisterBlockInfo::DefaultImageRegisterBlockInfo()
    : ProtocolRegisterBlockInfo({.type = "Image",
                                 .displayName = DEFAULT_DISPLAY_NAME,
                                 .category = RegisterBlockCategory::Image,
                                 .defaultRegisterCount = 0,
                                 .bytesPerRegister = 1,
                                 .minInstanceCount = 0,
                                 .maxInstanceCount = 65534,
                                 .hasDataSource = true,
                                 .isProtocolBigEndian = true,
                                 .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultImageRegisterBlock>>(),
                                 .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
