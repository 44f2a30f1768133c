#pragma once

#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// The state of the sensor: a 64-bit value, three state bytes, and the job's file name with one character in a
/// register. The offsets don't depend on the register width, so in registers of two bytes fields overlap. There the
/// file name, which is written last, overwrites the others.
class DefaultSystemStateRegisterBlock : public ProtocolRegisterBlock {
public:
    DefaultSystemStateRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info);

    /// The source is a DefaultSystemStateData. Throws yERROR_SIZE unless both sizes are exact, and yERROR_PARAMETER for
    /// a file name that is too long.
    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override;

    /// In characters.
    static unsigned char JobFileNameMaxSize() { return 64; }

protected:
    /// In the destination, in bytes.
    struct Offsets {
        unsigned long long stateValue = 0;
        unsigned long long firstStateByte = 8;
        unsigned long long jobFileNameLength = 9;
        unsigned long long jobFileName = 10;
        unsigned long long secondStateByte = 74;
        unsigned long long thirdStateByte = 75;
    };

    DefaultSystemStateRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info,
                                    const Offsets& offsets);

    /// Checks neither the size of the buffer nor the length of the file name.
    void SerializeSystemStatsData(unsigned char* buffer, const DefaultSystemStateData* data) const;

    const Offsets offsets;
};

} // namespace VorControl::ControlProtocol
