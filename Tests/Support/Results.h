#pragma once

#include "Vor/Exception.h"
#include "VorApi/Object.h"
#include "VorMsg/ResultInfo.h"
#include "VorMsg/ResultSet.h"
#include "VorMsg/VvMeasureMsg.h"
#include "VorMsg/VvNullMsg.h"
#include "VorMsg/VvStampMsg.h"
#include "VorMsg/VvStringMsg.h"
#include "yApi/yMsgInfo.h"

#include <cstdint>
#include <string>

namespace Tests {

/// The results of one frame.
class Results {
public:
    /// `published` is a yTime_Monotonic, or 0.
    explicit Results(std::uint64_t published = 0)
        : published(published) {
        Vor::ThrowIfFailed(ResultSet_Construct(set.Out()));
    }

    Results& Measurement(const std::string& source, double value, unsigned char decision = 1) {
        Vor::Object message;
        Vor::ThrowIfFailed(VvMeasureMsg_Construct(message.Out(), value, decision));
        return Add(source, ResultInfo_TypeMeasurement, message);
    }
    Results& Text(const std::string& source, const std::string& text) {
        Vor::Object message;
        Vor::ThrowIfFailed(VvStringMsg_Construct(message.Out(), text));
        return Add(source, ResultInfo_TypeString, message);
    }
    Results& Stamp(const std::string& source, const yStamp& stamp) {
        Vor::Object message;
        Vor::ThrowIfFailed(VvStampMsg_Construct(message.Out(), stamp));
        return Add(source, ResultInfo_TypeStamp, message);
    }
    Results& Nothing(const std::string& source, std::uint16_t type) {
        Vor::Object message;
        Vor::ThrowIfFailed(VvNullMsg_Construct(message.Out()));
        return Add(source, type, message);
    }

    ResultSet Get() const { return set.Get(); }

private:
    Results& Add(const std::string& source, std::uint16_t type, Vor::Object& message) {
        Vor::Object msgInfo;
        Vor::ThrowIfFailed(yMsgInfo_Construct(msgInfo.Out(), message.Get(), 0, published));
        message.Release();
        Vor::Object info;
        Vor::ThrowIfFailed(ResultInfo_Construct(info.Out(), type, source));
        Vor::ThrowIfFailed(ResultSet_Add(set.Get(), msgInfo.Get(), info.Get(), 0));
        msgInfo.Release();
        info.Release();
        return *this;
    }

    std::uint64_t published;
    Vor::Object set;
};

} // namespace Tests
