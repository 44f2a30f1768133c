#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

namespace {

constexpr unsigned short DefaultTextSize = 8;

unsigned short DefaultCount(unsigned char bytesPerRegister) {
    return bytesPerRegister == 0 ? 0 : DefaultTextSize / bytesPerRegister;
}

} // namespace

DefaultStringRegisterBlockInfo::DefaultStringRegisterBlockInfo(unsigned char bytesPerRegister)
    : ProtocolRegisterBlockInfo(
          {.type = "String",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::String,
           .defaultRegisterCount = DefaultCount(bytesPerRegister),
           .bytesPerRegister = bytesPerRegister,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultStringRegisterBlock>>(),
           .configurableRegisterCount = true}) {}

} // namespace VorControl::ControlProtocol
