#include "SampleService.h"
#include "Services/Common/PluginEntry.h"

#include <memory>

// Required: the one function that a plug-in needs besides its service.
void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    VorControl::ControlInfo info;
    info.SetTypeName("sample").SetDisplayName("Sample"); // Required: the type name is unique among all services.
    info.SetDescription("Keeps the last value of each measurement.").AddCategory("Examples"); // Optional.
    // Optional: without it the service runs on every platform.
    VorControl::ControlInfo::SupportedEnvironmentList environments;
    environments.vorsuiteDaemon = false;
    info.SetSupportedEnvironment(environments);
    plugin.Add(info, std::make_shared<ServiceFactory<Sample::SampleService>>()); // Required, for each type.
}
