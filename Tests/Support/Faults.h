#pragma once

#include "yApi/yFault.h"

namespace Tests {

/// Disarms all injected faults at the end of a test, however it ends.
class Faults {
public:
    Faults() { yFault_Clear(); }
    ~Faults() { yFault_Clear(); }
    Faults(const Faults&) = delete;
    Faults& operator=(const Faults&) = delete;

    void Set(const char* name, yStatus status, unsigned skip = 0, unsigned times = 1) {
        yFault_Set(name, status, skip, times);
    }
    void SetHere(const char* name, yStatus status, unsigned skip = 0, unsigned times = 1) {
        yFault_SetHere(name, status, skip, times);
    }
};

} // namespace Tests
