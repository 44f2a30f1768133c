#pragma once

#include "Sensor/DataSources.h"
#include "Sensor/Scan/Limits.h"
#include "Sensor/ToolLimits.h"
#include "VorApi/Event.h"
#include "VorCommon/IPersistHandler.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace VorCommon {
class IPersistRegistrar;
}

namespace Sensor {

namespace Jobs {
class ToolsEntry;
}

/// A measurement of the scan with the limits of its decision.
struct Tool {
    std::string id;
    std::string source; ///< its data source
    std::string displayName;
    ValueUnit unit;
    ToolLimits limits = {};
    std::uint64_t revision = 1; ///< rises when the limits change
};

/// The tools of the sensor, one for each measurement of the input. Their limits are kept in the job. For the main loop;
/// loads and saves run while the main loop waits for them.
class SensorTools : public VorCommon::IPersistHandler {
public:
    /// Takes the limits of all data sources, in their order. Also called on the persistence thread.
    using Apply = std::function<void(std::vector<Scan::Limits> limits)>;

    /// The registrar outlives this.
    SensorTools(const Scan::Recording& recording, Apply apply, VorCommon::IPersistRegistrar& registrar);
    ~SensorTools() override;
    SensorTools(const SensorTools&) = delete;
    SensorTools& operator=(const SensorTools&) = delete;

    const std::vector<Tool>& All() const { return tools; }
    /// Null for an unknown id.
    const Tool* Find(const std::string& id) const;

    /// Changes the limits of a tool, at once for whole frames; limits that it has already change nothing. Throws
    /// yERROR_NOT_FOUND for an unknown id.
    void SetLimits(const std::string& id, const ToolLimits& limits);

    /// Raised with the id of a tool whose limits were changed, and with an empty one when a load of a job has changed
    /// some, then on the persistence thread.
    Vor::Event<const std::string&>& ChangedEvent() { return changedEvent; }

    const char* Component() override { return "SensorTools"; }
    void InitPersistDomain(VorCommon::PersistDomain domain, VorCommon::IPersistStore& store) override;
    /// A job whose limits can't be read leaves every tool without limits; the user's log says why. Tools that the
    /// sensor doesn't have are named there.
    void LoadPersistDomain(VorCommon::PersistDomain domain, const VorCommon::IPersistStore& store) override;
    /// Limits of tools that the sensor doesn't have stay as they are.
    void SavePersistDomain(VorCommon::PersistDomain domain, VorCommon::IPersistStore& store) override;

private:
    /// The limits of each tool, in their order.
    std::vector<ToolLimits> Loaded(const VorCommon::IPersistStore& store) const;
    void ReportUnknown(const Jobs::ToolsEntry& entry) const;
    void SetAll(const std::vector<ToolLimits>& limits);
    void ApplyLimits() const;

    const Apply apply;
    VorCommon::IPersistRegistrar& registrar;
    std::vector<Tool> tools;
    std::vector<std::size_t> places; ///< of each tool's data source among all
    std::size_t sourceCount = 0;
    Vor::Event<const std::string&> changedEvent;
    unsigned long long handler = 0; ///< of the registrar
};

} // namespace Sensor
