#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// What the benchmarks share: clocks, counted allocations, comparisons run in turns, and the report.
namespace Bench {

double WallSeconds();
double ProcessCpuSeconds();

/// Number of allocations (operator new and malloc through it) of the whole process since it started.
std::uint64_t Allocations();

/// Keeps the optimiser from dropping a result.
template <class T>
void Keep(const T& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

double Median(std::vector<double> values);

/// Costs of a subject and of its reference, measured in turns; the ratio is the median of the paired ratios.
struct Comparison {
    double subject;   ///< median cost
    double reference; ///< median cost
    double ratio;     ///< median of subject / reference, pair by pair
    double lowest;    ///< least of the paired ratios
    double highest;   ///< greatest of the paired ratios
};

/// Each function does the same work and returns its cost, in whatever unit both share. The first pair warms up and
/// doesn't count.
Comparison Compare(int pairs, const std::function<double()>& subject, const std::function<double()>& reference);

/// Prints a line a result, and writes all of them to the file given with "--json FILE".
class Report {
public:
    Report(const std::string& name, int argc, char** argv);

    /// Costs are in unit; a ratio above the limit makes the report fail. scale multiplies the printed costs.
    void Add(const std::string& label, const Comparison& comparison, const std::string& unit,
             std::optional<double> limit = std::nullopt, double scale = 1.0);

    /// The same for figures where more is better: the ratio must be at least the limit.
    void AddRate(const std::string& label, const Comparison& comparison, const std::string& unit,
                 std::optional<double> atLeast = std::nullopt, double scale = 1.0);

    /// A figure alone, with an optional limit that it must not exceed.
    void Note(const std::string& label, double value, const std::string& unit,
              std::optional<double> atMost = std::nullopt);
    void Skip(const std::string& label, const std::string& reason);

    /// True when the option was given, e.g. "--quick".
    bool Has(const std::string& option) const;

    /// Writes the file; 0, or 1 when a limit was missed.
    int Finish();

private:
    struct Line {
        std::string label, unit, kind;
        double value, reference, ratio, lowest, highest, limit;
        bool limited, kept;
    };

    void Print(const Line& line);

    std::string name;
    std::string jsonFile;
    std::vector<std::string> options;
    std::vector<Line> lines;
    bool failed = false;
};

} // namespace Bench
