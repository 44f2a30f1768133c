#pragma once

#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "VorMsg/ResultItem.h"

#include <cstdint>
#include <string>

namespace VorControl::ControlProtocol {

/// A block with the values of one data source of the scan: Serialize writes the whole block from the result item of a
/// DefaultScanOutputInputData. Of an array message, the first element is written. Nothing is kept between two calls,
/// and memory is allocated for array messages only.
class ProtocolScanOutputRegisterBlock : public ProtocolRegisterBlock {
public:
    /// The source record of Serialize. The item must be valid during the call.
    struct DefaultScanOutputInputData {
        ResultItem item = nullptr;
        std::uint32_t outputMode = 0; ///< 1: the short form of the stamp block; otherwise the normal form
    };
    static_assert(sizeof(DefaultScanOutputInputData) == 16);

    /// Throws yERROR_CONFLICT when the type has no data source.
    ProtocolScanOutputRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info);
    ~ProtocolScanOutputRegisterBlock() override;

    void SetDataSource(const std::string& source) override;
    const std::string& DataSource() const override;

    // Each of these writes one kind of message, or throws yERROR_UNIMPLEMENTED for a type without that kind.

    virtual void SerializeMeasurementMsg(unsigned char* buffer, unsigned long offset,
                                         const DefaultScanOutputInputData* data);
    virtual void SerializeStampMsg(unsigned char* buffer, unsigned long offset, const DefaultScanOutputInputData* data);
    virtual void SerializeStringMsg(unsigned char* buffer, unsigned long offset,
                                    const DefaultScanOutputInputData* data);
    /// Writes the bytes that mean "no value".
    virtual void SerializeNullMsg(unsigned char* buffer, unsigned long offset);

    /// The body of Serialize in each type that writes scan data. Throws yERROR_SIZE unless the destination has exactly
    /// SerializedOutputSize() bytes and the source is one DefaultScanOutputInputData. On a failure the destination may
    /// be written in part.
    void SerializeScanData(void* destination, unsigned long long destinationSize, const void* source,
                           unsigned long long sourceSize);
    /// Calls the writer for the item's message. Throws yERROR_UNIMPLEMENTED for another kind of message and
    /// yERROR_SIZE for an empty array.
    void SerializeData(unsigned char* buffer, unsigned long offset, const DefaultScanOutputInputData* data);

    static bool IsMsgSetNullMsg(void* msg);
    static bool IsResultItemNullMsg(void* item);

protected:
    /// The message of an item, which still owns it. Throws yERROR_PARAMETER when it has none.
    static void* Message(const ResultItem& item);

private:
    void SerializePlainData(unsigned char* buffer, unsigned long offset, const DefaultScanOutputInputData& data);

    Vor::Params::Value<std::string> dataSource;
};

} // namespace VorControl::ControlProtocol
