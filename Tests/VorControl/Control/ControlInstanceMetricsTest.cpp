#include "VorControl/Control/ControlInstanceMetrics.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/MetricsService.h"
#include "Tests/VorControl/Control/InstanceParams.h"

#include <memory>

#include <gtest/gtest.h>

using VorControl::ControlInstanceMetrics;

TEST(ControlInstanceMetricsTest, FailsWithoutAService) {
    ControlInstanceMetrics metrics;
    EXPECT_FAILURE(metrics.UpdateMetrics(), yERROR_STATE,
                   "No protocol implementation available for the metrics update operation");
    EXPECT_FAILURE(metrics.ResetMetrics(), yERROR_STATE,
                   "No protocol implementation available for the metrics reset operation");
    EXPECT_FAILURE(metrics.GetMetrics(), yERROR_STATE,
                   "No protocol implementation available for the metrics fetch operation");
}

TEST(ControlInstanceMetricsTest, CallsTheBoundServiceUntilItIsCleared) {
    Tests::HostEnviron environ;
    Tests::MetricsService service(environ.Record("a", "A"));
    ControlInstanceMetrics metrics;
    metrics.BindProtocol(&service);
    metrics.UpdateMetrics();
    EXPECT_EQ(service.figures.dropCount.Get(), 1);
    EXPECT_EQ(&metrics.GetMetrics(), &service.figures);
    metrics.ResetMetrics();
    EXPECT_EQ(service.figures.dropCount.Get(), 0);
    metrics.ClearProtocol();
    EXPECT_EQ(Tests::StatusOf([&] { metrics.GetMetrics(); }), yERROR_STATE);
}

TEST(ControlInstanceMetricsTest, AnInstanceIsBoundToItsServiceAsLongAsItLives) {
    Tests::HostEnviron environ;
    Tests::RecordingScanResults scanResults;
    VorControl::ControlInfo info;
    auto service = std::make_shared<Tests::MetricsService>(environ.Record("a", "A"));
    VorControl::ControlInstance instance(Tests::InstanceParams(environ, scanResults, info, service));
    instance.MetricsKeeper().UpdateMetrics();
    EXPECT_EQ(&instance.MetricsSource().GetMetrics(), &service->figures);
    EXPECT_EQ(service->figures.dropCount.Get(), 1);
}
