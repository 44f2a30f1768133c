#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultMeasurementValueAndDecisionRegisterBlockInfo::DefaultMeasurementValueAndDecisionRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "Measurement",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::Measurement,
           .defaultRegisterCount = 5,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultMeasurementValueAndDecisionRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
