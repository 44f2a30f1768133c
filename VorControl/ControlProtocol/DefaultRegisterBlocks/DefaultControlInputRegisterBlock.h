#pragma once

#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// A client's command: request word, command id, and from byte 4 on a job name or 63 bytes of user data. The job name
/// has at most 62 characters, each in a register. User data needs registers of one byte.
class DefaultControlInputRegisterBlock : public ProtocolRegisterBlock {
public:
    DefaultControlInputRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info);

    /// The destination is a ControlRegisterCommandData. The source may be larger than the type's input size. Throws
    /// yERROR_SIZE for a size that doesn't fit, yERROR_PARAMETER for a load command without a job name, and
    /// yERROR_CONFLICT for user data in registers of two bytes.
    void Deserialize(void* destination, unsigned long long destinationSize, const void* source,
                     unsigned long long sourceSize) override;

protected:
    DefaultControlInputRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info,
                                     unsigned long long userDataSize);

    // These fill a record of zeros. A job name may end at the end of the source. A source that is too short for the
    // command or for the user data throws yERROR_SIZE.

    void DeserializeControlRegisterCommandData(ControlRegisterCommandData* data, const unsigned char* source,
                                               unsigned long long sourceSize) const;
    void DeserializeJobName(ControlRegisterCommandData* data, const unsigned char* source,
                            unsigned long long sourceSize) const;
    void DeserializeUserDataInputBuffer(ControlRegisterCommandData* data, const unsigned char* source,
                                        unsigned long long sourceSize) const;

    // Offsets in the source and size of the user data, in bytes.

    const unsigned long long requestWordOffset = 0;
    const unsigned long long commandIdOffset = 2;
    const unsigned long long commandArgsOffset = 4;
    const unsigned long long userDataSize;
};

} // namespace VorControl::ControlProtocol
