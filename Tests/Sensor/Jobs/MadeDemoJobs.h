#pragma once

#include "Sensor/Jobs/DemoJobs.h"
#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/Scan/PartGenerator.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/MemoryStore.h"
#include "VorPlugin/PluginManager.h"

#include <string>

#include <nlohmann/json.hpp>

namespace Sensor::Jobs {

/// The demo jobs of the program's own services. For the main loop's thread, while no service exists.
inline DemoJobs MadeDemoJobs(const Scan::Recording& recording = Scan::GeneratePart()) {
    VorPlugin::PluginManager plugins;
    plugins.LoadFolder(Tests::BuiltFile("plugins"));
    return DemoJobs(plugins, recording);
}

/// The document of a service in a demo job.
inline nlohmann::json DemoConfig(const DemoJobs& jobs, const std::string& serviceId,
                                 const std::string& job = DemoJobs::Demo) {
    Tests::MemoryStore store;
    jobs.Fill(job, store);
    return JobFormat::Read(store, JobFormat::PathOf(serviceId));
}

} // namespace Sensor::Jobs
