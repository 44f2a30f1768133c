#pragma once

#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// The answer to a command: request word and result. In registers of two bytes the third register isn't written.
class DefaultControlOutputRegisterBlock : public ProtocolRegisterBlock {
public:
    using ProtocolRegisterBlock::ProtocolRegisterBlock;

    /// The source is a DefaultCommandResultData. Throws yERROR_SIZE unless both sizes are exact.
    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override;

protected:
    /// Doesn't check the size of the buffer.
    void SerializeCommandResultData(unsigned char* buffer, const DefaultCommandResultData* data) const;

    // Offsets in the destination, in bytes.

    const unsigned long long requestWordOffset = 0;
    const unsigned long long commandResultOffset = 2;
};

} // namespace VorControl::ControlProtocol
