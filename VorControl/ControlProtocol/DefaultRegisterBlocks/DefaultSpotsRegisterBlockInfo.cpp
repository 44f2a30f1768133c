#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSpotsRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSpotsRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultSpotsRegisterBlockInfo::DefaultSpotsRegisterBlockInfo()
    : ProtocolRegisterBlockInfo({.type = "Spots",
                                 .displayName = DEFAULT_DISPLAY_NAME,
                                 .category = RegisterBlockCategory::Spots,
                                 .defaultRegisterCount = 0,
                                 .bytesPerRegister = 1,
                                 .minInstanceCount = 0,
                                 .maxInstanceCount = 65534,
                                 .hasDataSource = true,
                                 .isProtocolBigEndian = true,
                                 .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultSpotsRegisterBlock>>(),
                                 .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
