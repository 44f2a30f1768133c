#include "Sensor/Resources/PrometheusText.h"

#include "Sensor/Resources/ServiceMetrics.h"
#include "Vor/Structure.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace Sensor::Resources {
namespace {

using Type = PrometheusText::Type;

const PrometheusText::Metric Frames{"vor_frames_total", Type::Counter, "Frames."};

TEST(PrometheusText, IsAMetricWithItsValues) {
    PrometheusText text;
    EXPECT_EQ(text.Text(), "");
    text.Add(Frames, {}, std::uint64_t{18'446'744'073'709'551'615U});
    text.Add({"vor_stall_seconds", Type::Gauge, "Stall."}, {{"a", "1"}, {"b", "2"}}, 0.00001);
    text.Add({"vor_other", Type::Untyped, "Other."}, {{"a", "1"}}, std::int64_t{-7});
    text.Add({"vor_other", Type::Gauge, "Differently."}, {{"a", "2"}}, 2.5e9);
    EXPECT_EQ(text.Text(), "# HELP vor_frames_total Frames.\n"
                           "# TYPE vor_frames_total counter\n"
                           "vor_frames_total 18446744073709551615\n"
                           "# HELP vor_stall_seconds Stall.\n"
                           "# TYPE vor_stall_seconds gauge\n"
                           "vor_stall_seconds{a=\"1\",b=\"2\"} 0.00001\n"
                           "# HELP vor_other Other.\n"
                           "# TYPE vor_other untyped\n"
                           "vor_other{a=\"1\"} -7\n"
                           "vor_other{a=\"2\"} 2500000000\n");
}

TEST(PrometheusText, AnyNumberHasAText) {
    PrometheusText text;
    text.Add({"vor_a", Type::Gauge, "A."}, {}, std::numeric_limits<double>::denorm_min());
    text.Add({"vor_b", Type::Gauge, "B."}, {}, std::numeric_limits<double>::lowest());
    EXPECT_NE(text.Text().find("\nvor_a 0.0000"), std::string::npos);
    EXPECT_NE(text.Text().find("\nvor_b -17976931348623157"), std::string::npos);
}

TEST(PrometheusText, EscapesLabelsAndHelp) {
    PrometheusText text;
    text.Add({"vor_a", Type::Gauge, "One \"line\"\nand C:\\another."}, {{"path", "C:\\new\n\"folder\"}"}}, 1.0);
    EXPECT_EQ(text.Text(), "# HELP vor_a One \"line\"\\nand C:\\\\another.\n"
                           "# TYPE vor_a gauge\n"
                           "vor_a{path=\"C:\\\\new\\n\\\"folder\\\"}\"} 1\n");
}

TEST(PrometheusText, HasOneValueForTheSameLabels) {
    PrometheusText text;
    text.Add(Frames, {{"a", "1"}}, std::uint64_t{1});
    text.Add(Frames, {{"a", "1"}}, std::uint64_t{2});
    text.Add(Frames, {{"a", "1"}}, PrometheusText::Histogram());
    EXPECT_EQ(text.Text(), "# HELP vor_frames_total Frames.\n"
                           "# TYPE vor_frames_total counter\n"
                           "vor_frames_total{a=\"1\"} 1\n");
}

TEST(PrometheusText, AHistogramHasCumulativeBuckets) {
    PrometheusText text;
    const PrometheusText::Metric latency{"vor_latency_seconds", Type::Histogram, "Latency."};
    text.Add(latency, {{"service", "a"}},
             PrometheusText::Histogram{.counts = {{0.0001, 2}, {0.5, 0}, {10, 3}}, .more = 4, .sum = 55.25});
    text.Add(latency, {}, PrometheusText::Histogram());
    EXPECT_EQ(text.Text(), "# HELP vor_latency_seconds Latency.\n"
                           "# TYPE vor_latency_seconds histogram\n"
                           "vor_latency_seconds_bucket{service=\"a\",le=\"0.0001\"} 2\n"
                           "vor_latency_seconds_bucket{service=\"a\",le=\"0.5\"} 2\n"
                           "vor_latency_seconds_bucket{service=\"a\",le=\"10\"} 5\n"
                           "vor_latency_seconds_bucket{service=\"a\",le=\"+Inf\"} 9\n"
                           "vor_latency_seconds_sum{service=\"a\"} 55.25\n"
                           "vor_latency_seconds_count{service=\"a\"} 9\n"
                           "vor_latency_seconds_bucket{le=\"+Inf\"} 0\n"
                           "vor_latency_seconds_sum 0\n"
                           "vor_latency_seconds_count 0\n");
}

/// Figures of all kinds.
class VariousFigures : public Vor::Params::Group {
public:
    VariousFigures() {
        Register("bytesIn", bytesIn, "Received Bytes");
        Describe(bytesIn, "counter", "B");
        Register("openTime", openTime, "Open \"Time\"");
        Describe(openTime, "gauge", "ms");
        Register("level", level);
        Register("isOn", isOn, "On");
        Register("Odd.name", odd, "Odd");
        Register("odd_name", same, "The same name");
        Register("text", text, "Text");
        Register("inner", inner, "Inner");
        inner.Register("upTime", upTime, "Up Time");
        Describe(upTime, "counter", "s");
        Register("delay", delay, "Delay");
        delay.Register("500", upTo500);
        delay.Register("1500", upTo1500);
        delay.Register("more", more);
        delay.Register("sum", sum);
        Describe(sum, "", "us");
        bytesIn = 12;
        openTime = 1500;
        level = -3;
        isOn = true;
        upTime = 60;
        upTo500 = 1;
        upTo1500 = 2;
        more = 3;
        sum = 250'000;
    }

    Vor::Params::Value<long long> bytesIn;
    Vor::Params::Value<unsigned long long> openTime;
    Vor::Params::Value<long long> level;
    Vor::Params::Value<bool> isOn;
    Vor::Params::Value<unsigned> odd;
    Vor::Params::Value<unsigned short> same;
    Vor::Params::Value<std::string> text{"text"};
    Vor::Params::Group inner;
    Vor::Params::Value<unsigned> upTime;
    Vor::Params::Group delay{"histogram"};
    Vor::Params::Value<long long> upTo500;
    Vor::Params::Value<long long> upTo1500;
    Vor::Params::Value<long long> more;
    Vor::Params::Value<long long> sum;

private:
    template <class Value>
    static void Describe(Value& value, const char* type, const char* units) {
        value.SetExtendedType(type);
        value.EnableUnits(true);
        value.SetUnits(units);
    }
};

TEST(ServiceMetrics, AreNamedByTheKeywordsOfTheFigures) {
    PrometheusText text;
    AddServiceMetrics(text, "a\"b", VariousFigures());
    EXPECT_EQ(text.Text(), "# HELP vor_service_bytes_in_total Received Bytes\n"
                           "# TYPE vor_service_bytes_in_total counter\n"
                           "vor_service_bytes_in_total{service=\"a\\\"b\"} 12\n"
                           "# HELP vor_service_open_time_seconds Open \"Time\"\n"
                           "# TYPE vor_service_open_time_seconds gauge\n"
                           "vor_service_open_time_seconds{service=\"a\\\"b\"} 1.5\n"
                           "# HELP vor_service_level level\n"
                           "# TYPE vor_service_level untyped\n"
                           "vor_service_level{service=\"a\\\"b\"} -3\n"
                           "# HELP vor_service_is_on On\n"
                           "# TYPE vor_service_is_on untyped\n"
                           "vor_service_is_on{service=\"a\\\"b\"} 1\n"
                           "# HELP vor_service_odd_name Odd\n"
                           "# TYPE vor_service_odd_name untyped\n"
                           "vor_service_odd_name{service=\"a\\\"b\"} 0\n"
                           "# HELP vor_service_inner_up_time_seconds_total Up Time\n"
                           "# TYPE vor_service_inner_up_time_seconds_total counter\n"
                           "vor_service_inner_up_time_seconds_total{service=\"a\\\"b\"} 60\n"
                           "# HELP vor_service_delay_seconds Delay\n"
                           "# TYPE vor_service_delay_seconds histogram\n"
                           "vor_service_delay_seconds_bucket{service=\"a\\\"b\",le=\"0.0005\"} 1\n"
                           "vor_service_delay_seconds_bucket{service=\"a\\\"b\",le=\"0.0015\"} 3\n"
                           "vor_service_delay_seconds_bucket{service=\"a\\\"b\",le=\"+Inf\"} 6\n"
                           "vor_service_delay_seconds_sum{service=\"a\\\"b\"} 0.25\n"
                           "vor_service_delay_seconds_count{service=\"a\\\"b\"} 6\n");
}

TEST(ServiceMetrics, OfSeveralServicesAreOneMetric) {
    const VariousFigures figures;
    PrometheusText text;
    AddServiceMetrics(text, "a", figures);
    AddServiceMetrics(text, "b", figures);
    const std::string all = text.Text();
    EXPECT_NE(all.find("# TYPE vor_service_level untyped\n"
                       "vor_service_level{service=\"a\"} -3\n"
                       "vor_service_level{service=\"b\"} -3\n"),
              std::string::npos)
        << all;
}

} // namespace
} // namespace Sensor::Resources
