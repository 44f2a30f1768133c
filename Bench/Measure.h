#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// Shared by the benchmarks: clocks, counted allocations, comparisons of alternating runs, and the report.
namespace Bench {

double WallSeconds();
double ProcessCpuSeconds();

/// Number of allocations (operator new and malloc through it) of the whole process since it started.
std::uint64_t Allocations();

/// Prevents the optimiser from removing a result.
template <class T>
void Keep(const T& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

double Median(std::vector<double> values);

/// Costs of a subject and of its reference, measured in alternating runs.
struct Comparison {
    double subject;   ///< median cost
    double reference; ///< median cost
    double ratio;     ///< median of subject / reference, pair by pair
    double lowest;    ///< least of the paired ratios
    double highest;   ///< greatest of the paired ratios
};

/// Both functions do the same work and return its cost, in the same unit. The first pair warms up and isn't counted.
Comparison Compare(int pairs, const std::function<double()>& subject, const std::function<double()>& reference);

/// Prints a line for each result, and writes all of them to the file of the option "--json FILE".
class Report {
public:
    Report(const std::string& name, int argc, char** argv);

    /// Printed costs are multiplied by `scale` to get `unit`. A ratio above `limit` makes the report fail.
    void Add(const std::string& label, const Comparison& comparison, const std::string& unit,
             std::optional<double> limit = std::nullopt, double scale = 1.0);

    /// The same for figures where more is better: a ratio below `atLeast` makes the report fail.
    void AddRate(const std::string& label, const Comparison& comparison, const std::string& unit,
                 std::optional<double> atLeast = std::nullopt, double scale = 1.0);

    /// A single figure. A value above `atMost` makes the report fail.
    void Note(const std::string& label, double value, const std::string& unit,
              std::optional<double> atMost = std::nullopt);
    void Skip(const std::string& label, const std::string& reason);

    /// Whether the command line has the option, such as "--quick".
    bool Has(const std::string& option) const;

    /// Writes the file. Returns the exit status: 0, or 1 when a limit was missed.
    int Finish();

private:
    struct Line {
        std::string label, unit, kind;
        double value, reference, ratio, lowest, highest, limit;
        bool hasLimit, isWithinLimit;
    };

    void Print(const Line& line);

    std::string name;
    std::string jsonFile;
    std::vector<std::string> options;
    std::vector<Line> lines;
    bool failed = false;
};

} // namespace Bench
