#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"

#include "Vor/Exception.h"
#include "VorApi/Object.h"
#include "VorControl/ControlProtocol/Translate.h"
#include "VorMsg/VvArrayMsg.h"
#include "VorMsg/VvNullMsg.h"

namespace VorControl::ControlProtocol {

namespace {

/// A new item for the first element of an array message.
Vor::Object FirstElementItem(ResultItem item, yMsgInfo arrayInfo) {
    const VvArrayMsg array = yMsgInfo_Message(arrayInfo);
    if (VvArrayMsg_Count(array) == 0) {
        Vor::Throw(yERROR_SIZE);
    }
    const yAllocator allocator = yType_Allocator(yObject_Type(arrayInfo));

    auto element = Vor::Object::Share(VvArrayMsg_At(array, 0));
    Vor::Object msgInfo;
    Vor::ThrowIfFailed(yMsgInfo_Construct(msgInfo.Out(), element.Get(), yMsgInfo_Origin(arrayInfo),
                                          yMsgInfo_Published(arrayInfo), allocator));
    element.Release();

    auto resultInfo = Vor::Object::Share(ResultItem_ResultInfo(item));
    Vor::Object elementItem;
    Vor::ThrowIfFailed(ResultItem_Construct(elementItem.Out(), msgInfo.Get(), resultInfo.Get(), allocator));
    msgInfo.Release();
    resultInfo.Release();
    return elementItem;
}

} // namespace

ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock(const RegisterBlockParams& params,
                                                                 ProtocolRegisterBlockInfo& info)
    : ProtocolRegisterBlock(params, info)
    , dataSource(info.HasDataSource() ? params.dataSource.Get() : std::string()) {
    if (!info.HasDataSource()) {
        Vor::Throw(yERROR_CONFLICT,
                   Translate("beApp.ctrl", "Register block type %1$s must support scan output data sources"), Type());
    }
    Register("dataSource", dataSource, Translate("beApp.ctrl", "Scan Output Data Source"), 100);
}

ProtocolScanOutputRegisterBlock::~ProtocolScanOutputRegisterBlock() = default;

void ProtocolScanOutputRegisterBlock::SetDataSource(const std::string& source) {
    dataSource.Set(source);
}

const std::string& ProtocolScanOutputRegisterBlock::DataSource() const {
    return dataSource.Get();
}

void ProtocolScanOutputRegisterBlock::SerializeMeasurementMsg(unsigned char*, unsigned long,
                                                              const DefaultScanOutputInputData*) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

void ProtocolScanOutputRegisterBlock::SerializeStampMsg(unsigned char*, unsigned long,
                                                        const DefaultScanOutputInputData*) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

void ProtocolScanOutputRegisterBlock::SerializeStringMsg(unsigned char*, unsigned long,
                                                         const DefaultScanOutputInputData*) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

void ProtocolScanOutputRegisterBlock::SerializeNullMsg(unsigned char*, unsigned long) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

void ProtocolScanOutputRegisterBlock::SerializeScanData(void* destination, unsigned long long destinationSize,
                                                        const void* source, unsigned long long sourceSize) {
    if (sourceSize != sizeof(DefaultScanOutputInputData)) {
        Vor::Throw(yERROR_SIZE,
                   Translate("beApp.ctrl", "Insufficient source buffer size available for data serialization."));
    }
    if (destinationSize != SerializedOutputSize()) {
        Vor::Throw(yERROR_SIZE, Translate("beApp.ctrl", "Insufficient destination buffer size available for data "
                                                        "serialization output."));
    }
    SerializeData(static_cast<unsigned char*>(destination), 0, static_cast<const DefaultScanOutputInputData*>(source));
}

void ProtocolScanOutputRegisterBlock::SerializeData(unsigned char* buffer, unsigned long offset,
                                                    const DefaultScanOutputInputData* data) {
    const yMsgInfo msgInfo = ResultItem_MsgInfo(data->item);
    if (!yObject_Is(yMsgInfo_Message(msgInfo), yType_VvArrayMsg)) {
        SerializePlainData(buffer, offset, *data);
        return;
    }
    const auto element = FirstElementItem(data->item, msgInfo);
    SerializePlainData(buffer, offset, {.item = element.Get(), .outputMode = data->outputMode});
}

void ProtocolScanOutputRegisterBlock::SerializePlainData(unsigned char* buffer, unsigned long offset,
                                                         const DefaultScanOutputInputData& data) {
    if (IsResultItemNullMsg(data.item)) {
        SerializeNullMsg(buffer, offset);
        return;
    }
    switch (const auto type = ResultInfo_Type(ResultItem_ResultInfo(data.item)); type) {
    case ResultInfo_TypeMeasurement:
        return SerializeMeasurementMsg(buffer, offset, &data);
    case ResultInfo_TypeString:
        return SerializeStringMsg(buffer, offset, &data);
    case ResultInfo_TypeStamp:
        return SerializeStampMsg(buffer, offset, &data);
    default:
        Vor::Throw(yERROR_UNIMPLEMENTED, Translate("beApp.ctrl", "Unsupported message type %1$u"), type);
    }
}

bool ProtocolScanOutputRegisterBlock::IsMsgSetNullMsg(void* msg) {
    return yObject_Is(msg, yType_VvNullMsg);
}

bool ProtocolScanOutputRegisterBlock::IsResultItemNullMsg(void* item) {
    return IsMsgSetNullMsg(yMsgInfo_Message(ResultItem_MsgInfo(item)));
}

void* ProtocolScanOutputRegisterBlock::Message(const ResultItem& item) {
    void* const msg = yMsgInfo_Message(ResultItem_MsgInfo(item));
    if (msg == nullptr) {
        Vor::Throw(yERROR_PARAMETER);
    }
    return msg;
}

} // namespace VorControl::ControlProtocol
