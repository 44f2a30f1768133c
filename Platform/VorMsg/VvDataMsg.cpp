#include "VorMsg/VvDataMsg.h"

#include "VorMsg/VvMsgObject.h"

namespace {

class DataMsgObject : public VvMsgObject {
public:
    DataMsgObject(yAllocator allocator, std::uint64_t time, std::int64_t encoder)
        : VvMsgObject(yType_VvDataMsg, allocator)
        , time(time)
        , encoder(encoder) {}

    const std::uint64_t time;
    const std::int64_t encoder;
};

} // namespace

const yType yType_VvDataMsg{&yType_VvMsg, &yObject_Delete<DataMsgObject>};

yStatus VvDataMsg_Construct(VvDataMsg* msg, std::uint64_t time, std::int64_t encoder, yAllocator allocator) {
    return VvMsg_Make<DataMsgObject>("VvDataMsg_Construct", msg, allocator, time, encoder);
}

std::uint64_t VvDataMsg_Time(VvDataMsg msg) {
    return yObject_As<DataMsgObject>(msg)->time;
}

std::int64_t VvDataMsg_Encoder(VvDataMsg msg) {
    return yObject_As<DataMsgObject>(msg)->encoder;
}
