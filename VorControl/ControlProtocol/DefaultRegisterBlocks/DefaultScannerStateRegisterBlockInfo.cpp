#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultScannerStateRegisterBlockInfo::DefaultScannerStateRegisterBlockInfo(bool isOptional)
    : ProtocolRegisterBlockInfo(
          {.type = "Scanner",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::Scanner,
           .defaultRegisterCount = 18,
           .bytesPerRegister = 1,
           .minInstanceCount = static_cast<unsigned short>(isOptional ? 0 : 1),
           .maxInstanceCount = 1,
           .hasDataSource = false,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultScannerStateRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
