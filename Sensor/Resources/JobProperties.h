#pragma once

#include "Sensor/Resources/SensorJobs.h"
#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>
#include <vector>

namespace Sensor::Resources {

/// The document of a job.
class JobProperties : public Vor::Params::Group {
public:
    explicit JobProperties(const SensorJobs::Job& job);

    /// The path of a job.
    static std::string PathOf(const std::string& name);

    Vor::Params::Value<std::string> name;
    Vor::Params::Value<unsigned long long> size;
    Vor::Params::Value<std::string> modified;
    Vor::Params::Value<bool> loaded;
    Vor::Params::Value<bool> isDefault;
    Vor::Params::Value<std::vector<std::string>> services;
    Vor::Params::Value<std::string> failure;
};

/// What differs in one place.
class JobChangeProperties : public Vor::Params::Group {
public:
    JobChangeProperties();

    /// Overwrites every member.
    void Populate(const Jobs::JobChanges::Change& change);

    Vor::Params::Value<std::string> service;
    Vor::Params::Value<std::string> entry;
    Vor::Params::Value<std::string> pointer;
    Vor::Params::Value<std::string> before;
    Vor::Params::Value<std::string> after;
};

/// The document of what differs from the file of the loaded job.
class JobChangesProperties : public Vor::Params::Group {
public:
    explicit JobChangesProperties(const Jobs::JobChanges& changes);

    Vor::Params::Value<unsigned long long> count;
    Vor::Params::Array<JobChangeProperties> changes;
};

} // namespace Sensor::Resources
