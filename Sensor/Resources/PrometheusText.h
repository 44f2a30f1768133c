#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Sensor::Resources {

/// Metrics as text in Prometheus' exposition format, version 0.0.4.
class PrometheusText {
public:
    static constexpr std::string_view MediaType = "text/plain; version=0.0.4; charset=utf-8";

    enum class Type { Counter, Gauge, Histogram, Untyped };

    struct Metric {
        std::string name; ///< of small letters, digits and "_", not beginning with a digit
        Type type;
        std::string help;
    };
    using Labels = std::vector<std::pair<std::string, std::string>>;

    struct Histogram {
        std::map<double, std::uint64_t> counts = {}; ///< of each bucket alone, by its upper bound
        std::uint64_t more = 0;                      ///< beyond the last bound
        double sum = 0;
    };

    /// Adds a value to the metric of that name, whose type and help are those of the first call. A second value with
    /// the same labels is ignored: the format has no place for it.
    void Add(const Metric& metric, const Labels& labels, std::int64_t value);
    void Add(const Metric& metric, const Labels& labels, std::uint64_t value);
    void Add(const Metric& metric, const Labels& labels, double value);
    /// The metric's type is Histogram.
    void Add(const Metric& metric, const Labels& labels, const Histogram& histogram);

    /// The metrics in the order of their first values.
    std::string Text() const;

private:
    struct Family {
        Metric metric;
        std::set<std::string> labels; ///< of the values, as text
        std::string lines;
    };

    void AddText(const Metric& metric, const Labels& labels, const std::string& value);
    /// Null when it has these labels already; else valid until the next call.
    Family* FamilyFor(const Metric& metric, const std::string& labels);

    std::vector<Family> families;
    std::map<std::string, std::size_t> byName; ///< their places
};

} // namespace Sensor::Resources
