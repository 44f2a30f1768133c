#pragma once

#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// A measurement in thousandths as a signed 32-bit value, 0x80000000 when there is none.
class DefaultMeasurementValueRegisterBlock : public virtual ProtocolScanOutputRegisterBlock {
public:
    DefaultMeasurementValueRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info);

    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override;
    void SerializeMeasurementMsg(unsigned char* buffer, unsigned long offset,
                                 const DefaultScanOutputInputData* data) override;
    void SerializeNullMsg(unsigned char* buffer, unsigned long offset) override;

    static double GetMeasurementValue(const ResultItem& item);
    void SerializeInvalidMeasurementValue(unsigned char* buffer, unsigned long offset) const;

protected:
    /// The value of an item in thousandths; false when it can't be stated in 32 bits.
    static bool ConvertMeasurementValue(const ResultItem& item, int& result);

private:
    static constexpr unsigned long ValueOffset = 0;
};

} // namespace VorControl::ControlProtocol
