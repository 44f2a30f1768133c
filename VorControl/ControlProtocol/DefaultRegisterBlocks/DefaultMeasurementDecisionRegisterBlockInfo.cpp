#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlockInfo.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

DefaultMeasurementDecisionRegisterBlockInfo::DefaultMeasurementDecisionRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "MeasurementDecision",
           .displayName = DEFAULT_DISPLAY_NAME,
           .category = RegisterBlockCategory::Measurement,
           .defaultRegisterCount = 1,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultMeasurementDecisionRegisterBlock>>(),
           .configurableRegisterCount = false}) {}

} // namespace VorControl::ControlProtocol
