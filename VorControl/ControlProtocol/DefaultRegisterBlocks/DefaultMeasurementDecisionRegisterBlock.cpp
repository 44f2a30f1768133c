#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlock.h"

#include "VorMsg/VvMeasureMsg.h"

namespace VorControl::ControlProtocol {

DefaultMeasurementDecisionRegisterBlock::DefaultMeasurementDecisionRegisterBlock(const RegisterBlockParams& params,
                                                                                 ProtocolRegisterBlockInfo& info)
    : ProtocolScanOutputRegisterBlock(params, info) {}

void DefaultMeasurementDecisionRegisterBlock::Serialize(void* destination, unsigned long long destinationSize,
                                                        const void* source, unsigned long long sourceSize) {
    SerializeScanData(destination, destinationSize, source, sourceSize);
}

void DefaultMeasurementDecisionRegisterBlock::SerializeMeasurementMsg(unsigned char* buffer, unsigned long offset,
                                                                      const DefaultScanOutputInputData* data) {
    SerializeValue(buffer, offset + DecisionOffset, GetDecisionByte(data->item), false);
}

void DefaultMeasurementDecisionRegisterBlock::SerializeNullMsg(unsigned char* buffer, unsigned long offset) {
    SerializeInvalidMeasurementDecision(buffer, offset);
}

unsigned char DefaultMeasurementDecisionRegisterBlock::GetDecision(unsigned char decision, bool valid) {
    return valid ? decision : static_cast<unsigned char>(decision | InvalidDecisionFlag * 2);
}

unsigned char DefaultMeasurementDecisionRegisterBlock::GetDecisionByte(const ResultItem& item) {
    return GetDecision(VvMeasureMsg_Decision(Message(item)), true);
}

void DefaultMeasurementDecisionRegisterBlock::SerializeInvalidMeasurementDecision(unsigned char* buffer,
                                                                                  unsigned long offset) const {
    SerializeValue(buffer, offset + DecisionOffset, GetDecision(0, false), false);
}

} // namespace VorControl::ControlProtocol
