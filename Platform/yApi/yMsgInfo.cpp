#include "yApi/yMsgInfo.h"

#include "yApi/yFault.h"

namespace {

class MsgInfoObject : public yObject {
public:
    MsgInfoObject(yAllocator allocator, void* message, std::uint64_t origin, std::uint64_t published)
        : yObject(yType_yMsgInfo)
        , allocator(allocator)
        , message(message)
        , origin(origin)
        , published(published) {}
    ~MsgInfoObject() { yObject_Release(message); }

    const yAllocator allocator;
    void* const message;
    const std::uint64_t origin;
    const std::uint64_t published;
};

} // namespace

const yType yType_yMsgInfo{nullptr, &yObject_Delete<MsgInfoObject>};

yStatus yMsgInfo_Construct(yMsgInfo* info, void* message, std::uint64_t origin, std::uint64_t published,
                           yAllocator allocator) {
    if (const yStatus fault = yFault_Check("yMsgInfo_Construct"); fault != yOK) {
        return fault;
    }
    if (info == nullptr) {
        return yERROR_PARAMETER;
    }
    *info = yObject_ToHandle(yObject_New<MsgInfoObject>(allocator, message, origin, published));
    return yOK;
}

void* yMsgInfo_Message(yMsgInfo info) {
    return info == nullptr ? nullptr : yObject_As<MsgInfoObject>(info)->message;
}

std::uint64_t yMsgInfo_Origin(yMsgInfo info) {
    return yObject_As<MsgInfoObject>(info)->origin;
}

std::uint64_t yMsgInfo_Published(yMsgInfo info) {
    return info == nullptr ? 0 : yObject_As<MsgInfoObject>(info)->published;
}
