#pragma once

#include "VorMsg/VvMsg.h"
#include "yApi/yFault.h"

#include <vector>

/// Base of all messages. Only the sources of the message classes include it.
class VvMsgObject : public yObject {
public:
    const yAllocator allocator;
    std::vector<yStamp> stamps;

protected:
    VvMsgObject(const yType& type, yAllocator allocator)
        : yObject(type)
        , allocator(allocator) {}
    ~VvMsgObject() = default;
};

/// Makes a message of class `T`. `name` is the construct function's, for `yFault_Check`.
template <class T, class... Args>
yStatus VvMsg_Make(const char* name, void** msg, yAllocator allocator, const Args&... args) {
    if (const yStatus fault = yFault_Check(name); fault != yOK) {
        return fault;
    }
    if (msg == nullptr) {
        return yERROR_PARAMETER;
    }
    *msg = yObject_ToHandle(yObject_New<T>(allocator, args...));
    return yOK;
}
