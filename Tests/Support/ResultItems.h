#pragma once

#include "Vor/Exception.h"
#include "VorApi/Object.h"
#include "VorMsg/ResultItem.h"
#include "VorMsg/VvArrayMsg.h"
#include "VorMsg/VvDataMsg.h"
#include "VorMsg/VvMeasureMsg.h"
#include "VorMsg/VvNullMsg.h"
#include "VorMsg/VvStampMsg.h"
#include "VorMsg/VvStringMsg.h"

#include <string_view>

/// Result items and the messages in them, each with one reference.
namespace Tests {

inline Vor::Object Measure(double value, unsigned char decision) {
    Vor::Object msg;
    Vor::ThrowIfFailed(VvMeasureMsg_Construct(msg.Out(), value, decision));
    return msg;
}

inline Vor::Object Text(std::string_view text) {
    Vor::Object msg;
    Vor::ThrowIfFailed(VvStringMsg_Construct(msg.Out(), text));
    return msg;
}

inline Vor::Object Null() {
    Vor::Object msg;
    Vor::ThrowIfFailed(VvNullMsg_Construct(msg.Out()));
    return msg;
}

inline Vor::Object Stamp(const yStamp& stamp) {
    Vor::Object msg;
    Vor::ThrowIfFailed(VvStampMsg_Construct(msg.Out(), stamp));
    return msg;
}

/// A message with time and encoder of its own, without a stamp.
inline Vor::Object Data(std::uint64_t time, std::int64_t encoder) {
    Vor::Object msg;
    Vor::ThrowIfFailed(VvDataMsg_Construct(msg.Out(), time, encoder));
    return msg;
}

template <class... Elements>
Vor::Object ArrayOf(Elements... elements) {
    Vor::Object msg;
    Vor::ThrowIfFailed(VvArrayMsg_Construct(msg.Out()));
    (Vor::ThrowIfFailed(VvArrayMsg_Add(msg.Get(), elements.Release())), ...);
    return msg;
}

inline Vor::Object Item(unsigned short type, Vor::Object msg, std::uint64_t origin = 0, std::uint64_t published = 0) {
    Vor::Object msgInfo;
    Vor::ThrowIfFailed(yMsgInfo_Construct(msgInfo.Out(), msg.Get(), origin, published));
    msg.Release();
    Vor::Object resultInfo;
    Vor::ThrowIfFailed(ResultInfo_Construct(resultInfo.Out(), type, "source"));
    Vor::Object item;
    Vor::ThrowIfFailed(ResultItem_Construct(item.Out(), msgInfo.Get(), resultInfo.Get()));
    msgInfo.Release();
    resultInfo.Release();
    return item;
}

inline Vor::Object MeasureItem(double value, unsigned char decision) {
    return Item(ResultInfo_TypeMeasurement, Measure(value, decision));
}

} // namespace Tests
