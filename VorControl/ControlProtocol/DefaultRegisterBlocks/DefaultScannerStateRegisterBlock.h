#pragma once

#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// The state of the scanner: a signed and an unsigned 64-bit value and two bytes. The offsets don't depend on the
/// register width, so in registers of two bytes the two bytes overlap.
class DefaultScannerStateRegisterBlock : public ProtocolRegisterBlock {
public:
    DefaultScannerStateRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info);

    /// The source is a DefaultScannerStateData. Throws yERROR_SIZE unless both sizes are exact.
    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override;

protected:
    /// In the destination, in bytes.
    struct Offsets {
        unsigned long long signedScannerValue = 0;
        unsigned long long unsignedScannerValue = 8;
        unsigned long long firstScannerByte = 16;
        unsigned long long secondScannerByte = 17;
    };

    DefaultScannerStateRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info,
                                     const Offsets& offsets);

    /// Doesn't check the size of the buffer.
    void SerializeScannerStateData(unsigned char* buffer, const DefaultScannerStateData* data) const;

    const Offsets offsets;
};

} // namespace VorControl::ControlProtocol
