#pragma once

#include "VorApi/LogThrown.h"
#include "VorApi/ResourceRouter.h"

#include <string>
#include <utility>

namespace VorApi {

/// A resource that is at a route as long as this lives. Main loop only.
template <class Resource>
class RoutedResource {
public:
    /// Makes the resource of `args`. The router outlives this. Throws what ResourceRouter::Register throws.
    template <class... Args>
    RoutedResource(ResourceRouter& router, std::string path, Args&&... args)
        : resource(std::forward<Args>(args)...)
        , router(router)
        , path(std::move(path)) {
        router.Register(this->path, resource);
    }
    ~RoutedResource() {
        Vor::CleanUp([this] { router.Deregister(path, true); });
    }
    RoutedResource(const RoutedResource&) = delete;
    RoutedResource& operator=(const RoutedResource&) = delete;

private:
    Resource resource;
    ResourceRouter& router;
    const std::string path;
};

} // namespace VorApi
