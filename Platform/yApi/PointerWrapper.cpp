#include "yApi/PointerWrapper.h"

#include "yApi/yFault.h"

namespace {

class PointerWrapperObject : public yObject {
public:
    PointerWrapperObject(yAllocator allocator, void* pointer)
        : yObject(yType_PointerWrapper)
        , allocator(allocator)
        , pointer(pointer) {}

    const yAllocator allocator;
    void* const pointer;
};

} // namespace

const yType yType_PointerWrapper{nullptr, &yObject_Delete<PointerWrapperObject>};

yStatus PointerWrapper_Construct(PointerWrapper* wrapper, void* pointer, std::uint32_t, yAllocator allocator) {
    if (const yStatus fault = yFault_Check("PointerWrapper_Construct"); fault != yOK) {
        return fault;
    }
    if (wrapper == nullptr) {
        return yERROR_PARAMETER;
    }
    *wrapper = yObject_ToHandle(yObject_New<PointerWrapperObject>(allocator, pointer));
    return yOK;
}

void* PointerWrapper_Pointer(PointerWrapper wrapper) {
    return wrapper == nullptr ? nullptr : yObject_As<PointerWrapperObject>(wrapper)->pointer;
}
