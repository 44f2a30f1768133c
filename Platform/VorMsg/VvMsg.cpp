#include "VorMsg/VvMsg.h"

#include "VorMsg/VvMsgObject.h"

/// Every message is made as one of the derived classes.
const yType yType_VvMsg{nullptr, nullptr};

yStatus VvMsg_AddStamp(VvMsg msg, const yStamp& stamp) {
    if (!yObject_Is(msg, yType_VvMsg)) {
        return yERROR_PARAMETER;
    }
    yObject_As<VvMsgObject>(msg)->stamps.push_back(stamp);
    return yOK;
}

std::size_t VvMsg_StampCount(VvMsg msg) {
    return msg == nullptr ? 0 : yObject_As<VvMsgObject>(msg)->stamps.size();
}

const yStamp* VvMsg_StampAt(VvMsg msg, std::size_t index) {
    return index < VvMsg_StampCount(msg) ? &yObject_As<VvMsgObject>(msg)->stamps[index] : nullptr;
}
