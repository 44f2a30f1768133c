#pragma once

#include "Vor/Structure.h"
#include "yApi/yIpConfig.h"

#include <cstdint>
#include <string>
#include <vector>

namespace VorCore {

/// The sensor's core: the scan as a whole, the node's clock and network, and metrics. Main loop only, except that its
/// reads may come from any thread while the main loop is blocked. Failures are Vor::Exception.
class Core {
public:
    virtual ~Core() = default;

    /// Raises the pre-start event and starts the scan. Does nothing while a scan runs. With `live` the results come
    /// from the scanners, with `record` they are kept as well.
    virtual void Start(bool live, bool record) = 0;
    /// Stops the scan and raises the post-stop event. Does nothing while no scan runs. `abort` drops unfinished frames.
    virtual void Stop(bool abort, bool keepOpen) = 0;
    virtual void FactoryRestore() = 0;
    virtual void Restart() = 0;
    virtual void BlinkLed() = 0;
    /// Network settings from the next start on, one entry for each interface. With `persist` later starts use them too.
    virtual void SetIpAddress(const std::vector<yIpConfig>& configs, bool persist) = 0;

    /// Microseconds since the beginning of 1970, UTC.
    virtual long long LocalNodeDateTime() const = 0;
    virtual void SetLocalNodeDateTime(long long value) = 0;
    /// The time server; empty when there is none.
    virtual std::string LocalNodeNtpHost() const = 0;
    virtual void SetLocalNodeNtpHost(const std::string& host, bool persist) = 0;
    /// Sets the clock by the time server; false when the server returned no time.
    virtual bool LocalNodeSyncTime(const std::string& host) = 0;

    /// 0 ready, 1 scanning.
    virtual std::uint8_t GetRunState() const = 0;
    /// The current metrics, a CoreMetrics::CoreMetricsGroup. Valid until the next call.
    virtual const Vor::Properties::Structure& GetMetricsReporter() = 0;
};

} // namespace VorCore
