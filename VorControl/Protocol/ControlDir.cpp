#include "VorControl/Protocol/ControlDir.h"

#include "VorApi/RoutedResource.h"
#include "VorControl/Control/IControlManager.h"
#include "VorControl/Control/IControlMetrics.h"
#include "VorControl/Protocol/ControlAvailableDeviceResource.h"
#include "VorControl/Protocol/ControlCommandResource.h"
#include "VorControl/Protocol/ControlDeviceCommandResource.h"
#include "VorControl/Protocol/ControlDeviceMetricsResource.h"
#include "VorControl/Protocol/ControlDevicePortResource.h"
#include "VorControl/Protocol/ControlDeviceRegisterAssemblyCommandResource.h"
#include "VorControl/Protocol/ControlDeviceRegisterAssemblyResource.h"
#include "VorControl/Protocol/ControlDeviceResource.h"
#include "VorControl/Protocol/ControlMetricsResource.h"
#include "VorControl/Protocol/ControlOutputsCommandResource.h"
#include "VorControl/Protocol/ControlOutputsResource.h"
#include "VorControl/Protocol/ControlRegisterAssemblyCommandResource.h"
#include "VorControl/Protocol/ControlRegisterAssemblyResource.h"
#include "VorControl/Protocol/ControlResource.h"
#include "VorControl/Protocol/ControlTypesResource.h"

namespace VorControl {

class ControlDirImpl {
public:
    ControlDirImpl(VorApi::ResourceRouter& router, IControlManager& manager, IControlMetrics& metrics)
        : types(router, "/controlTypes", manager)
        , control(router, "/controls/:protocol", manager)
        , command(router, "/controls/:protocol/commands/:command", manager)
        , availableDevice(router, "/controls/:protocol/availableDevices", manager)
        , metrics(router, "/controls/:protocol/metrics", metrics)
        , outputs(router, "/controls/:protocol/outputs", manager)
        , outputsCommand(router, "/controls/:protocol/outputs/commands/:command", manager)
        , assembly(router, "/controls/:protocol/registerAssemblies/:registerAssembly", manager)
        , assemblyCommand(router, "/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command", manager)
        , device(router, "/controls/:protocol/devices/:device", manager)
        , devicePort(router, "/controls/:protocol/devices/:device/ports/:port", manager)
        , deviceCommand(router, "/controls/:protocol/devices/:device/ports/:port/commands/:command", manager)
        , deviceMetrics(router, "/controls/:protocol/devices/:device/ports/:port/metrics", metrics, manager)
        , deviceAssembly(router, "/controls/:protocol/devices/:device/ports/:port/registerAssemblies/:registerAssembly",
                         manager)
        , deviceAssemblyCommand(router,
                                "/controls/:protocol/devices/:device/ports/:port/registerAssemblies/:registerAssembly/"
                                "commands/:command",
                                manager) {}

private:
    VorApi::RoutedResource<Protocol::ControlTypesResource> types;
    VorApi::RoutedResource<Protocol::ControlResource> control;
    VorApi::RoutedResource<Protocol::ControlCommandResource> command;
    VorApi::RoutedResource<Protocol::ControlAvailableDeviceResource> availableDevice;
    VorApi::RoutedResource<Protocol::ControlMetricsResource> metrics;
    VorApi::RoutedResource<Protocol::ControlOutputsResource> outputs;
    VorApi::RoutedResource<Protocol::ControlOutputsCommandResource> outputsCommand;
    VorApi::RoutedResource<Protocol::ControlRegisterAssemblyResource> assembly;
    VorApi::RoutedResource<Protocol::ControlRegisterAssemblyCommandResource> assemblyCommand;
    VorApi::RoutedResource<Protocol::ControlDeviceResource> device;
    VorApi::RoutedResource<Protocol::ControlDevicePortResource> devicePort;
    VorApi::RoutedResource<Protocol::ControlDeviceCommandResource> deviceCommand;
    VorApi::RoutedResource<Protocol::ControlDeviceMetricsResource> deviceMetrics;
    VorApi::RoutedResource<Protocol::ControlDeviceRegisterAssemblyResource> deviceAssembly;
    VorApi::RoutedResource<Protocol::ControlDeviceRegisterAssemblyCommandResource> deviceAssemblyCommand;
};

ControlDir::ControlDir(VorApi::ResourceRouter& router, IControlManager& manager, IControlMetrics& metrics)
    : impl(std::make_unique<ControlDirImpl>(router, manager, metrics)) {}

ControlDir::~ControlDir() = default;

} // namespace VorControl
