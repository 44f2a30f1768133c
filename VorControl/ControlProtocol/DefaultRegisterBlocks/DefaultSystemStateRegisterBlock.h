#pragma once

#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// The state of the sensor: a 64-bit value, three state bytes, and the job's file name, one character a register. The
/// offsets don't grow with the width of the registers: in registers of two bytes fields overlap, and the file name,
/// which is written last, prevails.
class DefaultSystemStateRegisterBlock : public ProtocolRegisterBlock {
public:
    DefaultSystemStateRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info);

    /// From a DefaultSystemStateData. Both sizes must be exact, else yERROR_SIZE is thrown; yERROR_PARAMETER for a
    /// file name that is too long.
    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override;

    /// Characters.
    static unsigned char JobFileNameMaxSize() { return 64; }

protected:
    /// Bytes of the destination.
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

    /// Checks no size.
    void SerializeSystemStatsData(unsigned char* buffer, const DefaultSystemStateData* data) const;

    const Offsets offsets;
};

} // namespace VorControl::ControlProtocol
