#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"

#include "Vor/Exception.h"
#include "VorMsg/VvDataMsg.h"

namespace VorControl::ControlProtocol {

namespace {

const yStamp* FirstStamp(void* msg) {
    const yStamp* const stamp = VvMsg_StampAt(msg, 0);
    if (stamp == nullptr) {
        Vor::Throw(yERROR_SIZE);
    }
    return stamp;
}

} // namespace

void DefaultStampRegisterBlock::Serialize(void* destination, unsigned long long destinationSize, const void* source,
                                          unsigned long long sourceSize) {
    SerializeScanData(destination, destinationSize, source, sourceSize);
}

void DefaultStampRegisterBlock::SerializeStampMsg(unsigned char* buffer, unsigned long offset,
                                                  const DefaultScanOutputInputData* data) {
    void* const msg = Message(data->item);
    const yStamp* const stamp = FirstStamp(msg);
    unsigned long long time = 0;
    long long encoder = 0;
    ExtendedStamp(msg, &time, &encoder);
    const unsigned char state = DigitalInputStateFromStamp(stamp);

    if (data->outputMode == 1) {
        SerializeValue(buffer, offset + FirstWordOffset, stamp->frameIndex, false);
        return;
    }
    SerializeValue(buffer, offset + StateOffset, state, false);
    SerializeValue(buffer, offset + LastWordOffset, stamp->encoderAtZ, true);
    SerializeValue(buffer, offset + EncoderOffset, encoder, true);
    SerializeValue(buffer, offset + TimeOffset, time, false);
    SerializeValue(buffer, offset + FirstWordOffset, stamp->frameIndex, false);
    std::fill_n(buffer + offset + StateOffset + 1, 3, static_cast<unsigned char>(0));
}

void DefaultStampRegisterBlock::ExtendedStamp(void* msg, unsigned long long* time, long long* encoder) {
    if (yObject_Is(msg, yType_VvDataMsg)) {
        *time = VvDataMsg_Time(msg);
        *encoder = VvDataMsg_Encoder(msg);
        return;
    }
    const yStamp* const stamp = FirstStamp(msg);
    *time = stamp->time;
    *encoder = stamp->encoder;
}

unsigned char DefaultStampRegisterBlock::DigitalInputStateFromStamp(const yStamp* stamp) {
    const unsigned int inputs = stamp->inputs;
    return static_cast<unsigned char>((inputs | inputs >> 4) & 3);
}

} // namespace VorControl::ControlProtocol
