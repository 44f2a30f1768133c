#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlock.h"

#include "VorMsg/VvMeasureMsg.h"

namespace VorControl::ControlProtocol {

DefaultMeasurementValueRegisterBlock::DefaultMeasurementValueRegisterBlock(const RegisterBlockParams& params,
                                                                           ProtocolRegisterBlockInfo& info)
    : ProtocolScanOutputRegisterBlock(params, info) {}

void DefaultMeasurementValueRegisterBlock::Serialize(void* destination, unsigned long long destinationSize,
                                                     const void* source, unsigned long long sourceSize) {
    SerializeScanData(destination, destinationSize, source, sourceSize);
}

void DefaultMeasurementValueRegisterBlock::SerializeMeasurementMsg(unsigned char* buffer, unsigned long offset,
                                                                   const DefaultScanOutputInputData* data) {
    int result = 0;
    if (ConvertMeasurementValue(data->item, result)) {
        SerializeValue(buffer, offset + ValueOffset, result, true);
    } else {
        SerializeInvalidMeasurementValue(buffer, offset);
    }
}

void DefaultMeasurementValueRegisterBlock::SerializeNullMsg(unsigned char* buffer, unsigned long offset) {
    SerializeInvalidMeasurementValue(buffer, offset);
}

double DefaultMeasurementValueRegisterBlock::GetMeasurementValue(const ResultItem& item) {
    return VvMeasureMsg_Value(Message(item));
}

void DefaultMeasurementValueRegisterBlock::SerializeInvalidMeasurementValue(unsigned char* buffer,
                                                                            unsigned long offset) const {
    SerializeInvalidValue(buffer, offset + ValueOffset, std::max<unsigned long long>(4, BytesPerRegister()), true);
}

bool DefaultMeasurementValueRegisterBlock::ConvertMeasurementValue(const ResultItem& item, int& result) {
    int firstFlag = 0;
    int secondFlag = 0;
    Convert64fTo32s(GetMeasurementValue(item), 1000.0, result, firstFlag, secondFlag);
    return firstFlag == 0 && secondFlag == 0;
}

} // namespace VorControl::ControlProtocol
