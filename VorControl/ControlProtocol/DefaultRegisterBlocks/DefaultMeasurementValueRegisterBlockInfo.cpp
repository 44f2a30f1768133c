#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultMeasurementValueRegisterBlockInfo::DefaultMeasurementValueRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "MeasurementValue",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::Measurement,
           .defaultRegisterCount = 4,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultMeasurementValueRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
