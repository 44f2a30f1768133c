#include "yApi/yFault.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

std::atomic<int> yFault_armedCount{0};

namespace {

struct Fault {
    std::string name;
    yStatus status;
    unsigned skip;
    unsigned times;
    std::optional<std::thread::id> thread; ///< empty: all threads
};

struct Faults {
    std::mutex mutex; ///< guards the members below; no other lock is taken while it is held
    std::vector<Fault> armed;
    unsigned hits = 0;
};

/// Never destroyed, since threads may still call yFault_Check while the process ends.
Faults& AllFaults() {
    static Faults& faults = *new Faults;
    return faults;
}

void Arm(const char* name, yStatus status, unsigned skip, unsigned times, std::optional<std::thread::id> thread) {
    if (times == 0) {
        return;
    }
    auto& faults = AllFaults();
    const std::lock_guard guard(faults.mutex);
    faults.armed.push_back({name, status, skip, times, thread});
    yFault_armedCount.store(static_cast<int>(faults.armed.size()), std::memory_order_relaxed);
}

} // namespace

void yFault_Set(const char* name, yStatus status, unsigned skip, unsigned times) {
    Arm(name, status, skip, times, std::nullopt);
}

void yFault_SetHere(const char* name, yStatus status, unsigned skip, unsigned times) {
    Arm(name, status, skip, times, std::this_thread::get_id());
}

void yFault_Clear() {
    auto& faults = AllFaults();
    const std::lock_guard guard(faults.mutex);
    faults.armed.clear();
    faults.hits = 0;
    yFault_armedCount.store(0, std::memory_order_relaxed);
}

unsigned yFault_HitCount() {
    auto& faults = AllFaults();
    const std::lock_guard guard(faults.mutex);
    return faults.hits;
}

yStatus yFault_Consult(const char* name) {
    auto& faults = AllFaults();
    const std::lock_guard guard(faults.mutex);
    const auto here = std::this_thread::get_id();
    const auto fault = std::find_if(faults.armed.begin(), faults.armed.end(), [&](const Fault& each) {
        return each.name == name && (!each.thread || *each.thread == here);
    });
    if (fault == faults.armed.end()) {
        return yOK;
    }
    if (fault->skip > 0) {
        --fault->skip;
        return yOK;
    }
    const yStatus status = fault->status;
    ++faults.hits;
    if (--fault->times == 0) {
        faults.armed.erase(fault);
        yFault_armedCount.store(static_cast<int>(faults.armed.size()), std::memory_order_relaxed);
    }
    return status;
}
