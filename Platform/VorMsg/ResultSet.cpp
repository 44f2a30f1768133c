#include "VorMsg/ResultSet.h"

const yType yType_ResultSet{nullptr, &yObject_Delete<ResultSetObject>};

yStatus ResultSet_Construct(ResultSet* set, yAllocator allocator) {
    if (const yStatus fault = yFault_Check("ResultSet_Construct"); fault != yOK) {
        return fault;
    }
    if (set == nullptr) {
        return yERROR_PARAMETER;
    }
    *set = yObject_ToHandle(yObject_New<ResultSetObject>(allocator));
    return yOK;
}
