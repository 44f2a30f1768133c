#pragma once

#include "Bench/Measure.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <sched.h>
#include <vector>

// For the benchmarks of servers, which run on one core while their clients run on the other.
namespace Bench {

using Clock = std::chrono::steady_clock;

constexpr int ServerCore = 0;
constexpr int ClientCore = 1;

/// Pins the calling thread, and what it starts from now on.
inline void PinTo(int core) {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(core, &cores);
    sched_setaffinity(0, sizeof cores, &cores);
}

struct Figures {
    double rate; ///< round trips a second, of all clients
    double p99;  ///< seconds
};

/// Of round trips that took these times, in seconds. There is at least one.
inline Figures FiguresOf(std::vector<float> times, Clock::duration duration) {
    const auto place = times.begin() + static_cast<std::ptrdiff_t>(times.size() * 99 / 100);
    std::nth_element(times.begin(), place, times.end());
    return {static_cast<double>(times.size()) / std::chrono::duration<double>(duration).count(), *place};
}

/// Runs of a subject and of its reference, in turns.
struct Pairs {
    std::vector<Figures> subject;
    std::vector<Figures> reference;

    Comparison Compare(double Figures::*figure) const {
        std::vector<double> subjects;
        std::vector<double> references;
        std::vector<double> ratios;
        for (std::size_t i = 0; i < subject.size(); ++i) {
            subjects.push_back(subject[i].*figure);
            references.push_back(reference[i].*figure);
            ratios.push_back(subjects.back() / references.back());
        }
        return {Median(subjects), Median(references), Median(ratios), *std::min_element(ratios.begin(), ratios.end()),
                *std::max_element(ratios.begin(), ratios.end())};
    }
};

inline Pairs RunInTurns(int pairs, const std::function<Figures()>& subject, const std::function<Figures()>& reference) {
    Pairs result;
    for (int i = 0; i < pairs; ++i) {
        result.subject.push_back(subject());
        result.reference.push_back(reference());
    }
    return result;
}

} // namespace Bench
