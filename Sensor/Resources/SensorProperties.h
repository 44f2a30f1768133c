#pragma once

#include "VorApi/Event.h"
#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <chrono>
#include <string>
#include <vector>

namespace VorCommon {
class PersistManager;
class ProblemsManager;
} // namespace VorCommon

namespace VorControl {
class ControlModule;
class IControlInstance;
class IControlManager;
} // namespace VorControl

namespace Sensor {

class LogHistory;
class SensorTools;
class VirtualSensor;

namespace Http {
class RequestCounts;
}

namespace Resources {

/// What the resources of the sensor are about. All of it outlives them.
struct SensorEnviron {
    std::string boot; ///< the id of this run of the program
    VorControl::IControlManager& services;
    VorCommon::PersistManager& persistence;
    VorCommon::ProblemsManager& problems;
    VirtualSensor& sensor;
    const LogHistory& log;
    VorControl::ControlModule& module; ///< of the services
    const Http::RequestCounts& requests;
    /// Raised on the main loop with the file name of a job that is the loaded one from then on.
    Vor::Event<const std::string&>& jobLoadedEvent;
    SensorTools& tools;
};

/// A service of the sensor, briefly.
class ServiceProperties : public Vor::Params::Group {
public:
    ServiceProperties();

    /// Overwrites every member.
    void Populate(VorControl::IControlInstance& instance);

    Vor::Params::Value<std::string> id;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<bool> enabled;
    Vor::Params::Value<std::string> status;
    Vor::Params::Value<std::string> address;
    Vor::Params::Value<std::string> failure;
    Vor::Params::Value<std::string> path;
};

/// How many problems there are.
class ProblemCounts : public Vor::Params::Group {
public:
    ProblemCounts();

    Vor::Params::Value<unsigned long long> failures;
    Vor::Params::Value<unsigned long long> warnings;
};

/// The sensor as a whole.
class SensorProperties : public Vor::Params::Group {
public:
    SensorProperties();

    /// Overwrites every member.
    void Populate(const SensorEnviron& environ, std::chrono::seconds upTime);

    Vor::Params::Value<std::string> name;
    Vor::Params::Value<std::string> version;
    Vor::Params::Value<std::string> boot;
    Vor::Params::Value<unsigned long long> upTime;
    Vor::Params::Value<std::string> runState;
    Vor::Params::Value<unsigned long long> frame;
    Vor::Params::Value<std::string> triggerMode;
    Vor::Params::Value<std::string> alignment;
    Vor::Params::Value<long long> encoder;
    Vor::Params::Value<bool> laser;
    Vor::Params::Value<unsigned long long> memory;
    Vor::Params::Value<std::string> dataFolder;
    Vor::Params::Value<std::string> job;
    Vor::Params::Value<bool> jobModified;
    Vor::Params::Value<std::vector<std::string>> unsaved;
    Vor::Params::Array<ServiceProperties> services;
    ProblemCounts problems;
};

} // namespace Resources
} // namespace Sensor
