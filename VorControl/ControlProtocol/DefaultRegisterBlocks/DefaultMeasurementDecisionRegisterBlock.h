#pragma once

#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// The decision byte of a measurement, 2 when there is none.
class DefaultMeasurementDecisionRegisterBlock : public virtual ProtocolScanOutputRegisterBlock {
public:
    DefaultMeasurementDecisionRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info);

    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override;
    void SerializeMeasurementMsg(unsigned char* buffer, unsigned long offset,
                                 const DefaultScanOutputInputData* data) override;
    void SerializeNullMsg(unsigned char* buffer, unsigned long offset) override;

    static unsigned char GetDecision(unsigned char decision, bool valid);
    static unsigned char GetDecisionByte(const ResultItem& item);
    void SerializeInvalidMeasurementDecision(unsigned char* buffer, unsigned long offset) const;

private:
    static constexpr unsigned long DecisionOffset = 0;
    static constexpr unsigned char InvalidDecisionFlag = 1;
};

} // namespace VorControl::ControlProtocol
