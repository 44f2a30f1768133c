#include "VorCommon/RuntimeCache.h"

namespace VorCommon {

RuntimeCache::MainLoopBlock::MainLoopBlock(RuntimeCache& cache)
    : cache(cache) {
    ++cache.blocks;
}

RuntimeCache::MainLoopBlock::~MainLoopBlock() {
    --cache.blocks;
}

IRuntimeCache::ServiceState RuntimeCache::ProfinetServiceRunningState() const {
    return profinetState;
}

void RuntimeCache::SetProfinetServiceRunningState(ServiceState state) {
    profinetState = state;
}

bool RuntimeCache::IsMainLoopBlocked() const {
    return blocks > 0;
}

} // namespace VorCommon
