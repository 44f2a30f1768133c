#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlock.h"

namespace VorControl::ControlProtocol {

DefaultMeasurementValueAndDecisionRegisterBlock::DefaultMeasurementValueAndDecisionRegisterBlock(
    const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info)
    : ProtocolScanOutputRegisterBlock(params, info)
    , DefaultMeasurementValueRegisterBlock(params, info)
    , DefaultMeasurementDecisionRegisterBlock(params, info) {}

void DefaultMeasurementValueAndDecisionRegisterBlock::Serialize(void* destination, unsigned long long destinationSize,
                                                                const void* source, unsigned long long sourceSize) {
    SerializeScanData(destination, destinationSize, source, sourceSize);
}

void DefaultMeasurementValueAndDecisionRegisterBlock::SerializeMeasurementMsg(unsigned char* buffer,
                                                                              unsigned long offset,
                                                                              const DefaultScanOutputInputData* data) {
    int result = 0;
    if (!ConvertMeasurementValue(data->item, result)) {
        SerializeInvalidMeasurement(buffer, offset);
        return;
    }
    SerializeValue(buffer, offset + ValueOffset, result, true);
    SerializeValue(buffer, offset + DecisionOffset, GetDecisionByte(data->item), false);
}

void DefaultMeasurementValueAndDecisionRegisterBlock::SerializeNullMsg(unsigned char* buffer, unsigned long offset) {
    SerializeInvalidMeasurement(buffer, offset);
}

void DefaultMeasurementValueAndDecisionRegisterBlock::SerializeInvalidMeasurement(unsigned char* buffer,
                                                                                  unsigned long offset) const {
    SerializeInvalidMeasurementDecision(buffer, offset + DecisionOffset);
    SerializeInvalidMeasurementValue(buffer, offset + ValueOffset);
}

} // namespace VorControl::ControlProtocol
