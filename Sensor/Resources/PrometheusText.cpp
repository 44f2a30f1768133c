#include "Sensor/Resources/PrometheusText.h"

#include <array>
#include <charconv>

namespace Sensor::Resources {

namespace {

const char* TextOf(PrometheusText::Type type) {
    switch (type) {
    case PrometheusText::Type::Counter:
        return "counter";
    case PrometheusText::Type::Gauge:
        return "gauge";
    case PrometheusText::Type::Histogram:
        return "histogram";
    case PrometheusText::Type::Untyped:
        break;
    }
    return "untyped";
}

/// The shortest text of the number, without an exponent.
std::string TextOf(double value) {
    std::array<char, 512> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed).ptr;
    return {text.data(), end};
}

std::string Escaped(std::string_view text, bool isQuoted) {
    std::string escaped;
    for (const char character : text) {
        if (character == '\n') {
            escaped += "\\n";
            continue;
        }
        if (character == '\\' || (isQuoted && character == '"')) {
            escaped += '\\';
        }
        escaped += character;
    }
    return escaped;
}

/// Such as `{service="modbus"}`.
std::string TextOf(const PrometheusText::Labels& labels) {
    std::string text;
    for (const auto& [name, value] : labels) {
        text += text.empty() ? '{' : ',';
        text += name + "=\"" + Escaped(value, true) + '"';
    }
    return text.empty() ? text : text + '}';
}

} // namespace

void PrometheusText::Add(const Metric& metric, const Labels& labels, std::int64_t value) {
    AddText(metric, labels, std::to_string(value));
}

void PrometheusText::Add(const Metric& metric, const Labels& labels, std::uint64_t value) {
    AddText(metric, labels, std::to_string(value));
}

void PrometheusText::Add(const Metric& metric, const Labels& labels, double value) {
    AddText(metric, labels, TextOf(value));
}

void PrometheusText::Add(const Metric& metric, const Labels& labels, const Histogram& histogram) {
    const std::string ofAll = TextOf(labels);
    Family* const family = FamilyFor(metric, ofAll);
    if (family == nullptr) {
        return;
    }
    std::uint64_t count = 0;
    const auto addBucket = [&](const std::string& bound, std::uint64_t more) {
        count += more;
        Labels ofBucket = labels;
        ofBucket.emplace_back("le", bound);
        family->lines += metric.name + "_bucket" + TextOf(ofBucket) + ' ' + std::to_string(count) + '\n';
    };
    for (const auto& [bound, inBucket] : histogram.counts) {
        addBucket(TextOf(bound), inBucket);
    }
    addBucket("+Inf", histogram.more);
    family->lines += metric.name + "_sum" + ofAll + ' ' + TextOf(histogram.sum) + '\n';
    family->lines += metric.name + "_count" + ofAll + ' ' + std::to_string(count) + '\n';
}

void PrometheusText::AddText(const Metric& metric, const Labels& labels, const std::string& value) {
    const std::string ofValue = TextOf(labels);
    if (Family* const family = FamilyFor(metric, ofValue)) {
        family->lines += metric.name + ofValue + ' ' + value + '\n';
    }
}

PrometheusText::Family* PrometheusText::FamilyFor(const Metric& metric, const std::string& labels) {
    const auto [place, isNew] = byName.try_emplace(metric.name, families.size());
    if (isNew) {
        families.push_back({metric, {}, {}});
    }
    Family& family = families[place->second];
    return family.labels.insert(labels).second ? &family : nullptr;
}

std::string PrometheusText::Text() const {
    std::string text;
    for (const auto& [metric, labels, lines] : families) {
        text += "# HELP " + metric.name + ' ' + Escaped(metric.help, false) + '\n';
        text += "# TYPE " + metric.name + ' ' + TextOf(metric.type) + '\n';
        text += lines;
    }
    return text;
}

} // namespace Sensor::Resources
