#include "Bench/Measure.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <new>

#include <nlohmann/json.hpp>

namespace {

std::atomic<std::uint64_t> allocations{0};

void* Allocate(std::size_t size, std::size_t alignment) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    void* memory = alignment <= alignof(std::max_align_t)
                       ? std::malloc(size)
                       : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

double Seconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

void* operator new(std::size_t size) {
    return Allocate(size, 1);
}
void* operator new[](std::size_t size) {
    return Allocate(size, 1);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}

namespace Bench {

double WallSeconds() {
    return Seconds(CLOCK_MONOTONIC);
}
double ProcessCpuSeconds() {
    return Seconds(CLOCK_PROCESS_CPUTIME_ID);
}
std::uint64_t Allocations() {
    return allocations.load(std::memory_order_relaxed);
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

Comparison Compare(int pairs, const std::function<double()>& subject, const std::function<double()>& reference) {
    std::vector<double> subjects;
    std::vector<double> references;
    std::vector<double> ratios;
    subject();
    reference();
    for (int pair = 0; pair < pairs; ++pair) {
        subjects.push_back(subject());
        references.push_back(reference());
        ratios.push_back(subjects.back() / references.back());
    }
    return {Median(subjects), Median(references), Median(ratios), *std::min_element(ratios.begin(), ratios.end()),
            *std::max_element(ratios.begin(), ratios.end())};
}

Report::Report(const std::string& reportName, int argc, char** argv)
    : name(reportName) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--json" && i + 1 < argc) {
            jsonFile = argv[++i];
        } else {
            options.push_back(argument);
        }
    }
    std::printf("%s\n", name.c_str());
}

bool Report::Has(const std::string& option) const {
    return std::find(options.begin(), options.end(), option) != options.end();
}

void Report::Add(const std::string& label, const Comparison& comparison, const std::string& unit,
                 std::optional<double> limit, double scale) {
    Print({label, unit, "cost", comparison.subject * scale, comparison.reference * scale, comparison.ratio,
           comparison.lowest, comparison.highest, limit.value_or(0), limit.has_value(),
           !limit || comparison.ratio <= *limit});
}

void Report::AddRate(const std::string& label, const Comparison& comparison, const std::string& unit,
                     std::optional<double> atLeast, double scale) {
    Print({label, unit, "rate", comparison.subject * scale, comparison.reference * scale, comparison.ratio,
           comparison.lowest, comparison.highest, atLeast.value_or(0), atLeast.has_value(),
           !atLeast || comparison.ratio >= *atLeast});
}

void Report::Note(const std::string& label, double value, const std::string& unit, std::optional<double> atMost) {
    Print({label, unit, "figure", value, 0, 0, 0, 0, atMost.value_or(0), atMost.has_value(),
           !atMost || value <= *atMost});
}

void Report::Skip(const std::string& label, const std::string& reason) {
    std::printf("  %-52s skipped: %s\n", label.c_str(), reason.c_str());
    std::fflush(stdout);
}

void Report::Print(const Line& line) {
    lines.push_back(line);
    failed = failed || !line.isWithinLimit;
    const char* verdict = !line.hasLimit ? "" : line.isWithinLimit ? "  ok" : "  MISSED";
    if (line.kind == "figure") {
        std::printf("  %-52s %12.4g %-10s", line.label.c_str(), line.value, line.unit.c_str());
        if (line.hasLimit) {
            std::printf(" (at most %g)", line.limit);
        }
    } else {
        std::printf("  %-52s %12.4g %-10s reference %10.4g  ratio %6.3f [%.3f, %.3f]", line.label.c_str(), line.value,
                    line.unit.c_str(), line.reference, line.ratio, line.lowest, line.highest);
        if (line.hasLimit) {
            std::printf(" (at %s %g)", line.kind == "rate" ? "least" : "most", line.limit);
        }
    }
    std::printf("%s\n", verdict);
    std::fflush(stdout);
}

int Report::Finish() {
    if (!jsonFile.empty()) {
        nlohmann::json document = {{"name", name}, {"results", nlohmann::json::array()}};
        for (const Line& line : lines) {
            nlohmann::json entry = {{"label", line.label}, {"unit", line.unit}, {"value", line.value}};
            if (line.kind != "figure") {
                entry["reference"] = line.reference;
                entry["ratio"] = line.ratio;
                entry["spread"] = {line.lowest, line.highest};
            }
            if (line.hasLimit) {
                entry["limit"] = line.limit;
                entry["kept"] = line.isWithinLimit;
            }
            document["results"].push_back(entry);
        }
        std::ofstream(jsonFile) << document.dump(2) << '\n';
    }
    return failed ? 1 : 0;
}

} // namespace Bench
