#pragma once

#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "VorMsg/ResultItem.h"

#include <cstdint>
#include <string>

namespace VorControl::ControlProtocol {

/// A block that is fed by one data source of the scan: Serialize takes a DefaultScanOutputInputData and writes the
/// whole block from its result item. Nothing is kept between two calls, and nothing is allocated but for an array
/// message, of which the first element is written.
class ProtocolScanOutputRegisterBlock : public ProtocolRegisterBlock {
public:
    /// The source record of Serialize. The item is borrowed for the call.
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

    /// Write one kind of message. Each throws yERROR_UNIMPLEMENTED when the type doesn't take that kind.
    virtual void SerializeMeasurementMsg(unsigned char* buffer, unsigned long offset,
                                         const DefaultScanOutputInputData* data);
    virtual void SerializeStampMsg(unsigned char* buffer, unsigned long offset, const DefaultScanOutputInputData* data);
    virtual void SerializeStringMsg(unsigned char* buffer, unsigned long offset,
                                    const DefaultScanOutputInputData* data);
    /// Writes what stands for a missing value.
    virtual void SerializeNullMsg(unsigned char* buffer, unsigned long offset);

    /// What Serialize does in every type that writes scan data. The destination must have exactly
    /// SerializedOutputSize() bytes, the source must be one DefaultScanOutputInputData, else yERROR_SIZE is thrown.
    /// A failure leaves the destination as far as it was written.
    void SerializeScanData(void* destination, unsigned long long destinationSize, const void* source,
                           unsigned long long sourceSize);
    /// Calls the writer for the item's message. Throws yERROR_UNIMPLEMENTED for another kind of message and
    /// yERROR_SIZE for an empty array.
    void SerializeData(unsigned char* buffer, unsigned long offset, const DefaultScanOutputInputData* data);

    static bool IsMsgSetNullMsg(void* msg);
    static bool IsResultItemNullMsg(void* item);

protected:
    /// The message of an item, borrowed. Throws yERROR_PARAMETER when it has none.
    static void* Message(const ResultItem& item);

private:
    void SerializePlainData(unsigned char* buffer, unsigned long offset, const DefaultScanOutputInputData& data);

    Vor::Params::Value<std::string> dataSource;
};

} // namespace VorControl::ControlProtocol
