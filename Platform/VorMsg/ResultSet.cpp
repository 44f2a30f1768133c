#include "VorMsg/ResultSet.h"

const yType yType_ResultSet{nullptr, &ResultSetObject::Delete};

yStatus ResultSet_Construct(ResultSet* set, yAllocator allocator, std::size_t capacity) {
    if (const yStatus fault = yFault_Check("ResultSet_Construct"); fault != yOK) {
        return fault;
    }
    if (set == nullptr) {
        return yERROR_PARAMETER;
    }
    *set = yObject_ToHandle(ResultSetObject::New(allocator, capacity));
    return yOK;
}
