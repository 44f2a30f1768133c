#include "VorCommon/LiveJob.h"

#include "yApi/yStatus.h"

#include <utility>

namespace {

class LiveJobObject : public yObject {
public:
    LiveJobObject(yAllocator allocator, std::string fileName)
        : yObject(yType_LiveJob)
        , allocator(allocator)
        , fileName(std::move(fileName)) {}

    const yAllocator allocator;
    const std::string fileName;
};

} // namespace

const yType yType_LiveJob{nullptr, &yObject_Delete<LiveJobObject>};

yStatus LiveJob_Construct(LiveJob* job, const std::string& fileName, yAllocator allocator) {
    if (job == nullptr) {
        return yERROR_PARAMETER;
    }
    *job = yObject_ToHandle(yObject_New<LiveJobObject>(allocator, fileName));
    return yOK;
}

const std::string& LiveJob_FileName(LiveJob job) {
    return yObject_As<LiveJobObject>(job)->fileName;
}
