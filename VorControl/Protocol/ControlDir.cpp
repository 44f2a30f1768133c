#include "VorControl/Protocol/ControlDir.h"

#include "VorApi/LogThrown.h"
#include "VorApi/ResourceRouter.h"
#include "VorControl/Control/IControlManager.h"
#include "VorControl/Control/IControlMetrics.h"
#include "VorControl/Protocol/ControlCommandResource.h"
#include "VorControl/Protocol/ControlMetricsResource.h"
#include "VorControl/Protocol/ControlOutputsCommandResource.h"
#include "VorControl/Protocol/ControlOutputsResource.h"
#include "VorControl/Protocol/ControlRegisterAssemblyCommandResource.h"
#include "VorControl/Protocol/ControlRegisterAssemblyResource.h"
#include "VorControl/Protocol/ControlResource.h"
#include "VorControl/Protocol/ControlTypesResource.h"

#include <string>
#include <utility>

namespace VorControl {

class ControlDirImpl {
public:
    ControlDirImpl(VorApi::ResourceRouter& router, IControlManager& manager, IControlMetrics& metrics)
        : types(router, "/controlTypes", manager)
        , control(router, "/controls/:protocol", manager)
        , command(router, "/controls/:protocol/commands/:command", manager)
        , metrics(router, "/controls/:protocol/metrics", metrics)
        , outputs(router, "/controls/:protocol/outputs", manager)
        , outputsCommand(router, "/controls/:protocol/outputs/commands/:command", manager)
        , assembly(router, "/controls/:protocol/registerAssemblies/:registerAssembly", manager)
        , assemblyCommand(router, "/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command",
                          manager) {}

private:
    class Route {
    public:
        Route(VorApi::ResourceRouter& router, std::string path, VorApi::IResource& resource)
            : router(router)
            , path(std::move(path)) {
            router.Register(this->path, resource);
        }
        ~Route() {
            Vor::CleanUp([this] { router.Deregister(path, true); });
        }
        Route(const Route&) = delete;
        Route& operator=(const Route&) = delete;

    private:
        VorApi::ResourceRouter& router;
        const std::string path;
    };

    template <class Resource>
    struct RoutedResource {
        template <class... Args>
        RoutedResource(VorApi::ResourceRouter& router, const char* path, Args&... args)
            : resource(args...)
            , route(router, path, resource) {}

        Resource resource;
        Route route;
    };

    RoutedResource<Protocol::ControlTypesResource> types;
    RoutedResource<Protocol::ControlResource> control;
    RoutedResource<Protocol::ControlCommandResource> command;
    RoutedResource<Protocol::ControlMetricsResource> metrics;
    RoutedResource<Protocol::ControlOutputsResource> outputs;
    RoutedResource<Protocol::ControlOutputsCommandResource> outputsCommand;
    RoutedResource<Protocol::ControlRegisterAssemblyResource> assembly;
    RoutedResource<Protocol::ControlRegisterAssemblyCommandResource> assemblyCommand;
};

ControlDir::ControlDir(VorApi::ResourceRouter& router, IControlManager& manager, IControlMetrics& metrics)
    : impl(std::make_unique<ControlDirImpl>(router, manager, metrics)) {}

ControlDir::~ControlDir() = default;

} // namespace VorControl
