#pragma once

#include "Sensor/Resources/FileTasks.h"
#include "Sensor/Resources/OperationRunner.h"
#include "Sensor/Resources/SensorJobs.h"

#include <functional>

namespace Sensor::Resources {

/// What the resources of the jobs share. All of it outlives them.
struct JobsEnviron {
    SensorJobs& jobs;
    FileTasks& tasks;
    VorCommon::PersistManager& persistence;
    OperationRunner& operations;
    /// Called on the main loop when a job's file, or which job is loaded or the default, has changed.
    std::function<void()> changed;
};

} // namespace Sensor::Resources
