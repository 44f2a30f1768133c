#include "Sensor/Resources/ServiceMetrics.h"

#include "Vor/Structure.h"
#include "VorApi/Params/PropertyValue.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <variant>

namespace Sensor::Resources {

namespace {

using Vor::Properties::Node;
using Vor::Properties::Structure;
using Type = PrometheusText::Type;

constexpr const char* ServicePrefix = "vor_service_";

using Number = std::variant<std::int64_t, std::uint64_t>;

template <class T>
bool ReadAs(const Node& node, std::optional<Number>& number) {
    const auto* const value = dynamic_cast<const Vor::Properties::Value<T>*>(&node);
    if (value != nullptr) {
        using Wide = std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>;
        number = static_cast<Wide>(value->Get());
    }
    return value != nullptr;
}

template <class... T>
std::optional<Number> NumberAsOneOf(const Node& node) {
    std::optional<Number> number;
    (void)(ReadAs<T>(node, number) || ...);
    return number;
}

/// Nothing for what isn't a number.
std::optional<Number> NumberOf(const Node& node) {
    return NumberAsOneOf<long long, unsigned long long, unsigned, unsigned short, bool>(node);
}

double DoubleOf(const Number& number) {
    return std::visit([](auto value) { return static_cast<double>(value); }, number);
}

/// The text of a keyword; empty when the node doesn't have it.
std::string KeywordOf(const Node& node, std::string_view keyword) {
    const auto* const text = dynamic_cast<const Vor::Properties::Value<std::string>*>(node.Schema().Find(keyword));
    return text == nullptr ? std::string() : text->Get();
}

/// The base unit of what is measured in a unit, as a part of names, and how many of the unit are one of it.
struct BaseUnit {
    std::string_view name;
    double parts;
};

std::optional<BaseUnit> BaseUnitOf(std::string_view units) {
    if (units == "s") {
        return BaseUnit{"seconds", 1};
    }
    if (units == "ms") {
        return BaseUnit{"seconds", 1e3};
    }
    if (units == "us") {
        return BaseUnit{"seconds", 1e6};
    }
    return units == "B" ? std::optional(BaseUnit{"bytes", 1}) : std::nullopt;
}

/// "bytes_in" of "bytesIn".
std::string SnakeCase(std::string_view name) {
    std::string snake;
    for (const char character : name) {
        const bool isCapital = character >= 'A' && character <= 'Z';
        const bool isOther = (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9');
        if (isCapital && !snake.empty() && snake.back() != '_') {
            snake += '_';
        }
        snake += isCapital ? static_cast<char>(character - 'A' + 'a') : isOther ? character : '_';
    }
    return snake;
}

Type TypeOf(std::string_view extendedType) {
    return extendedType == "counter" ? Type::Counter : extendedType == "gauge" ? Type::Gauge : Type::Untyped;
}

class Collector {
public:
    Collector(PrometheusText& text, const std::string& service)
        : text(text)
        , labels{{"service", service}} {}

    /// `prefix` is of the names.
    void Add(const Structure& figures, const std::string& prefix) {
        for (const auto& member : figures.Members()) {
            const std::string name = prefix + SnakeCase(member.Text());
            const auto* const structure = dynamic_cast<const Structure*>(&member.Target());
            if (structure == nullptr) {
                AddFigure(member.Target(), name);
            } else if (KeywordOf(*structure, "extendedType") == "histogram") {
                AddHistogram(*structure, name);
            } else {
                Add(*structure, name + '_');
            }
        }
    }

private:
    static std::string HelpOf(const Node& figure, const std::string& name) {
        const std::string title = KeywordOf(figure, "title");
        return title.empty() ? name : title;
    }
    static std::string WithUnit(const std::string& name, const std::optional<BaseUnit>& unit) {
        const bool has = !unit || name.find(unit->name) != std::string::npos;
        return has ? name : name + '_' + std::string(unit->name);
    }

    void AddFigure(const Node& figure, const std::string& name) {
        const std::optional<Number> number = NumberOf(figure);
        if (!number) {
            return;
        }
        const auto unit = BaseUnitOf(KeywordOf(figure, "units"));
        const Type type = TypeOf(KeywordOf(figure, "extendedType"));
        const PrometheusText::Metric metric{WithUnit(name, unit) + (type == Type::Counter ? "_total" : ""), type,
                                            HelpOf(figure, name)};
        if (unit && unit->parts != 1) {
            text.Add(metric, labels, DoubleOf(*number) / unit->parts);
        } else {
            std::visit([&](auto value) { text.Add(metric, labels, value); }, *number);
        }
    }

    void AddHistogram(const Structure& figure, const std::string& name) {
        const Node* const sum = figure.Find("sum");
        const auto unit = sum == nullptr ? std::nullopt : BaseUnitOf(KeywordOf(*sum, "units"));
        const double parts = unit ? unit->parts : 1;
        PrometheusText::Histogram histogram;
        for (const auto& member : figure.Members()) {
            const std::optional<Number> number = NumberOf(member.Target());
            const std::string& key = member.Text();
            double bound = 0;
            if (!number) {
                continue;
            }
            if (key == "sum") {
                histogram.sum = DoubleOf(*number) / parts;
            } else if (key == "more") {
                histogram.more = CountOf(*number);
            } else if (std::from_chars(key.data(), key.data() + key.size(), bound).ec == std::errc()) {
                histogram.counts[bound / parts] = CountOf(*number);
            }
        }
        text.Add({WithUnit(name, unit), Type::Histogram, HelpOf(figure, name)}, labels, histogram);
    }

    static std::uint64_t CountOf(const Number& number) {
        return std::visit([](auto value) { return static_cast<std::uint64_t>(value); }, number);
    }

    PrometheusText& text;
    const PrometheusText::Labels labels;
};

} // namespace

void AddServiceMetrics(PrometheusText& text, const std::string& service, const Structure& figures) {
    Collector(text, service).Add(figures, ServicePrefix);
}

} // namespace Sensor::Resources
