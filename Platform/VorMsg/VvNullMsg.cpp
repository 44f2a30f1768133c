#include "VorMsg/VvNullMsg.h"

#include "VorMsg/VvMsgObject.h"

namespace {

class NullMsgObject : public VvMsgObject {
public:
    explicit NullMsgObject(yAllocator allocator)
        : VvMsgObject(yType_VvNullMsg, allocator) {}
};

} // namespace

const yType yType_VvNullMsg{&yType_VvMsg, &yObject_Delete<NullMsgObject>};

yStatus VvNullMsg_Construct(VvNullMsg* msg, yAllocator allocator) {
    return VvMsg_Make<NullMsgObject>("VvNullMsg_Construct", msg, allocator);
}
