#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultStampRegisterBlockInfo::DefaultStampRegisterBlockInfo()
    : ProtocolRegisterBlockInfo({.type = "Stamp",
                                 .displayName = DEFAULT_DISPLAY_NAME,
                                 .category = RegisterBlockCategory::Stamp,
                                 .defaultRegisterCount = 36,
                                 .bytesPerRegister = 1,
                                 .minInstanceCount = 0,
                                 .maxInstanceCount = 65534,
                                 .hasDataSource = true,
                                 .isProtocolBigEndian = true,
                                 .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultStampRegisterBlock>>(),
                                 .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
