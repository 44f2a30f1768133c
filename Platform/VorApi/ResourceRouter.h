#pragma once

#include "VorApi/IResource.h"
#include "VorApi/RequestInfo.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace VorApi {

/// Finds the resource of a path. Steps of a route that begin with a colon are parameters, which match any step that
/// isn't empty. A route whose last step is a parameter also matches without that step. Of several routes that match,
/// the one registered first is taken, those that match with all their steps before the others. Main loop only.
class ResourceRouter {
public:
    struct Match {
        IResource& resource;
        std::string route;
        RequestInfo::Keys keys; ///< values of the route's parameters, decoded
    };

    ResourceRouter() = default;
    ResourceRouter(const ResourceRouter&) = delete;
    ResourceRouter& operator=(const ResourceRouter&) = delete;

    /// The resource is borrowed until its route is deregistered. Throws `yERROR_ALREADY_EXISTS` for a route that is
    /// registered, and `yERROR_PARAMETER` for one that is no path.
    void Register(const std::string& path, IResource& resource);
    /// Throws `yERROR_NOT_FOUND` for a route that isn't registered, if `mustExist`.
    void Deregister(const std::string& path, bool mustExist);

    /// Nothing when no route matches. Throws `yERROR_FORMAT` for a step that Path::Decode refuses.
    std::optional<Match> Find(std::string_view path) const;
    /// Whether a route leads to the resource.
    bool Has(const IResource& resource) const;
    /// In order of registration.
    std::vector<std::string> Routes() const;
    /// Each resource once, in order of registration.
    std::vector<IResource*> Resources() const;

private:
    struct Route {
        std::string path;
        std::vector<std::string> steps;
        IResource* resource;
    };

    std::vector<Route> routes;
};

} // namespace VorApi
