#pragma once

#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// Text, cut to the block or followed by zeros; all zeros when there is none.
class DefaultStringRegisterBlock : public ProtocolScanOutputRegisterBlock {
public:
    using ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock;

    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override;
    void SerializeStringMsg(unsigned char* buffer, unsigned long offset,
                            const DefaultScanOutputInputData* data) override;
    void SerializeNullMsg(unsigned char* buffer, unsigned long offset) override;

    static const char* GetStringValue(const ResultItem& item);
    static unsigned long long GetStringLength(const ResultItem& item);
};

} // namespace VorControl::ControlProtocol
