#pragma once

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// A measurement in thousandths as a signed 32-bit value, and after it the decision byte; 0x80000000 and 2 when there
/// is none.
class DefaultMeasurementValueAndDecisionRegisterBlock : public DefaultMeasurementValueRegisterBlock,
                                                        public DefaultMeasurementDecisionRegisterBlock {
public:
    DefaultMeasurementValueAndDecisionRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info);

    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override;
    void SerializeMeasurementMsg(unsigned char* buffer, unsigned long offset,
                                 const DefaultScanOutputInputData* data) override;
    void SerializeNullMsg(unsigned char* buffer, unsigned long offset) override;

    void SerializeInvalidMeasurement(unsigned char* buffer, unsigned long offset) const;

private:
    static constexpr unsigned long ValueOffset = 0;
    static constexpr unsigned long DecisionOffset = 4;
};

} // namespace VorControl::ControlProtocol
