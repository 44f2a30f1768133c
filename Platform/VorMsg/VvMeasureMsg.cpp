#include "VorMsg/VvMeasureMsg.h"

#include "VorMsg/VvMsgObject.h"

#include <cmath>
#include <limits>

namespace {

class MeasureMsgObject : public VvMsgObject {
public:
    MeasureMsgObject(yAllocator allocator, double value, std::uint8_t decision)
        : VvMsgObject(yType_VvMeasureMsg, allocator)
        , value(value)
        , decision(decision) {}

    const double value;
    const std::uint8_t decision;
};

} // namespace

const yType yType_VvMeasureMsg{&yType_VvMsg, &yObject_Delete<MeasureMsgObject>};

yStatus VvMeasureMsg_Construct(VvMeasureMsg* msg, double value, std::uint8_t decision, yAllocator allocator) {
    return VvMsg_Make<MeasureMsgObject>("VvMeasureMsg_Construct", msg, allocator, value, decision);
}

double VvMeasureMsg_Value(VvMeasureMsg msg) {
    return yObject_As<MeasureMsgObject>(msg)->value;
}

std::uint8_t VvMeasureMsg_Decision(VvMeasureMsg msg) {
    return yObject_As<MeasureMsgObject>(msg)->decision;
}

std::int32_t VvMeasureMsg_Convert64fTo32s(double value, double scale, int& notANumber, int& outOfRange) {
    notANumber = 0;
    outOfRange = 0;
    if (!std::isfinite(value) || !std::isfinite(scale)) {
        notANumber = 1;
        return 0;
    }
    const double rounded = std::round(value * scale);
    if (rounded < std::numeric_limits<std::int32_t>::min() || rounded > std::numeric_limits<std::int32_t>::max()) {
        outOfRange = 1;
        return 0;
    }
    return static_cast<std::int32_t>(rounded);
}
