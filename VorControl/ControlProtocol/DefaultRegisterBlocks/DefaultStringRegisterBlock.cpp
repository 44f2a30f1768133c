#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlock.h"

#include "VorMsg/VvStringMsg.h"

namespace VorControl::ControlProtocol {

void DefaultStringRegisterBlock::Serialize(void* destination, unsigned long long destinationSize, const void* source,
                                           unsigned long long sourceSize) {
    SerializeScanData(destination, destinationSize, source, sourceSize);
}

void DefaultStringRegisterBlock::SerializeStringMsg(unsigned char* buffer, unsigned long offset,
                                                    const DefaultScanOutputInputData* data) {
    SerializeString(buffer, offset, GetStringValue(data->item), GetStringLength(data->item), SerializedOutputSize());
}

void DefaultStringRegisterBlock::SerializeNullMsg(unsigned char* buffer, unsigned long offset) {
    SerializeString(buffer, offset, "", 0, SerializedOutputSize());
}

const char* DefaultStringRegisterBlock::GetStringValue(const ResultItem& item) {
    return VvStringMsg_Value(Message(item));
}

unsigned long long DefaultStringRegisterBlock::GetStringLength(const ResultItem& item) {
    return VvStringMsg_Length(Message(item));
}

} // namespace VorControl::ControlProtocol
