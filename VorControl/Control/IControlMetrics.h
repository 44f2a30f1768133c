#pragma once

#include "VorCommon/IMetricsReporter.h"
#include "VorControl/Control/ControlMetricsKey.h"

namespace VorControl {

/// The figures of the services, as a reporter.
class IControlMetrics : public VorCommon::IMetricsReporter<const ControlMetricsKey&> {};

} // namespace VorControl
