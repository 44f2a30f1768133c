// Long runs of the virtual sensor under load: soak [MINUTES], soak --memory [MINUTES], soak --attack [SECONDS]. See
// ControlSoak.h, MemorySoak.h, HttpAttack.h.

#include "Tests/Soak/ControlSoak.h"
#include "Tests/Soak/HttpAttack.h"
#include "Tests/Soak/MemorySoak.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace {

struct Run {
    const char* option; ///< empty for none
    int (*run)(int duration);
    int least;
    int usual;
};

constexpr Run Runs[] = {
    {"--memory", Soak::MemorySoak, 1, 10}, {"--attack", Soak::HttpAttack, 1, 90}, {"", Soak::ControlSoak, 2, 10}};

} // namespace

int main(int argc, char** argv) {
    const Run* run = Runs;
    while (run->option[0] != '\0' && (argc < 2 || std::strcmp(argv[1], run->option) != 0)) {
        ++run;
    }
    const int first = run->option[0] != '\0' ? 2 : 1;
    const int duration = argc > first ? std::atoi(argv[first]) : run->usual;
    if (argc > first + 1 || duration < run->least) {
        std::fprintf(stderr, "usage: soak [MINUTES], at least 2\n       soak --memory [MINUTES]\n"
                             "       soak --attack [SECONDS]\n");
        return 2;
    }
    try {
        return run->run(duration);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "soak: %s\n", error.what());
        return 1;
    }
}
