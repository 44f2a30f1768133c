#include "VorMsg/VvStampMsg.h"

#include "VorMsg/VvMsgObject.h"

namespace {

class StampMsgObject : public VvMsgObject {
public:
    StampMsgObject(yAllocator allocator, const yStamp& stamp)
        : VvMsgObject(yType_VvStampMsg, allocator) {
        stamps.push_back(stamp);
    }
};

} // namespace

const yType yType_VvStampMsg{&yType_VvMsg, &yObject_Delete<StampMsgObject>};

yStatus VvStampMsg_Construct(VvStampMsg* msg, const yStamp& stamp, yAllocator allocator) {
    return VvMsg_Make<StampMsgObject>("VvStampMsg_Construct", msg, allocator, stamp);
}
