#pragma once

#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "yApi/yStamp.h"

namespace VorControl::ControlProtocol {

/// The stamp of a message: four 64-bit words, the state of the digital inputs and three zeros, 36 bytes in all. With
/// output mode 1 only the bytes 24 to 31 are written.
class DefaultStampRegisterBlock : public ProtocolScanOutputRegisterBlock {
public:
    using ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock;

    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override;
    /// Throws yERROR_SIZE for a message without a stamp.
    void SerializeStampMsg(unsigned char* buffer, unsigned long offset,
                           const DefaultScanOutputInputData* data) override;

    /// Time in microseconds and encoder value: those of a data message, or those of the first stamp of another.
    static void ExtendedStamp(void* msg, unsigned long long* time, long long* encoder);
    /// 0 to 3: the state of the two digital inputs.
    static unsigned char DigitalInputStateFromStamp(const yStamp* stamp);

private:
    static constexpr unsigned long StateOffset = 32;
    static constexpr unsigned long LastWordOffset = 0;
    static constexpr unsigned long EncoderOffset = 8;
    static constexpr unsigned long TimeOffset = 16;
    static constexpr unsigned long FirstWordOffset = 24;
};

} // namespace VorControl::ControlProtocol
