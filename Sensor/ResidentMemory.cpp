#include "Sensor/ResidentMemory.h"

#include <fstream>
#include <malloc.h>
#include <unistd.h>

namespace Sensor {

std::uint64_t ResidentMemory() {
    std::ifstream file("/proc/self/statm");
    std::uint64_t pages = 0;
    std::uint64_t residentPages = 0;
    file >> pages >> residentPages;
    return file ? residentPages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) : 0;
}

void LimitHeaps() {
    constexpr int Heaps = 2;
    mallopt(M_ARENA_MAX, Heaps);
}

} // namespace Sensor
