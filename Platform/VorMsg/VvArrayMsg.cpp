#include "VorMsg/VvArrayMsg.h"

#include "VorMsg/VvMsgObject.h"

namespace {

class ArrayMsgObject : public VvMsgObject {
public:
    explicit ArrayMsgObject(yAllocator allocator)
        : VvMsgObject(yType_VvArrayMsg, allocator) {}
    ~ArrayMsgObject() {
        for (void* element : elements) {
            yObject_Release(element);
        }
    }

    std::vector<void*> elements;
};

} // namespace

const yType yType_VvArrayMsg{&yType_VvMsg, &yObject_Delete<ArrayMsgObject>};

yStatus VvArrayMsg_Construct(VvArrayMsg* msg, yAllocator allocator) {
    return VvMsg_Make<ArrayMsgObject>("VvArrayMsg_Construct", msg, allocator);
}

yStatus VvArrayMsg_Add(VvArrayMsg msg, void* element) {
    if (const yStatus fault = yFault_Check("VvArrayMsg_Add"); fault != yOK) {
        return fault;
    }
    if (!yObject_Is(msg, yType_VvArrayMsg) || !yObject_Is(element, yType_VvMsg)) {
        return yERROR_PARAMETER;
    }
    yObject_As<ArrayMsgObject>(msg)->elements.push_back(element);
    return yOK;
}

std::size_t VvArrayMsg_Count(VvArrayMsg msg) {
    return yObject_As<ArrayMsgObject>(msg)->elements.size();
}

void* VvArrayMsg_At(VvArrayMsg msg, std::size_t index) {
    const auto& elements = yObject_As<ArrayMsgObject>(msg)->elements;
    return index < elements.size() ? elements[index] : nullptr;
}
