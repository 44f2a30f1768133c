// Long runs of the virtual sensor under load: soak [MINUTES], soak --memory [MINUTES]. See ControlSoak.h, MemorySoak.h.

#include "Tests/Soak/ControlSoak.h"
#include "Tests/Soak/MemorySoak.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

int main(int argc, char** argv) {
    const bool memory = argc > 1 && std::strcmp(argv[1], "--memory") == 0;
    const int first = memory ? 2 : 1;
    const int minutes = argc > first ? std::atoi(argv[first]) : 10;
    if (argc > first + 1 || minutes < (memory ? 1 : 2)) {
        std::fprintf(stderr, "usage: soak [MINUTES], at least 2\n       soak --memory [MINUTES]\n");
        return 2;
    }
    try {
        return memory ? Soak::MemorySoak(minutes) : Soak::ControlSoak(minutes);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "soak: %s\n", error.what());
        return 1;
    }
}
