#pragma once

#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// A client's user data, 468 bytes without any conversion.
class DefaultUserDataInputRegisterBlock : public ProtocolRegisterBlock {
public:
    using ProtocolRegisterBlock::ProtocolRegisterBlock;

    /// The destination is a DefaultUserDataInputData. The source may be larger than the type's input size. Throws
    /// yERROR_SIZE for a size that doesn't fit, and yERROR_CONFLICT, with a cleared destination, for registers of two
    /// bytes.
    void Deserialize(void* destination, unsigned long long destinationSize, const void* source,
                     unsigned long long sourceSize) override;

protected:
    void DeserializeUserDataInputData(DefaultUserDataInputData* data, const unsigned char* source) const;
};

} // namespace VorControl::ControlProtocol
