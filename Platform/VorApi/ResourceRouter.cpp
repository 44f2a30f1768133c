#include "VorApi/ResourceRouter.h"

#include "Vor/Exception.h"
#include "VorApi/Path.h"

#include <algorithm>
#include <cstddef>

namespace VorApi {

namespace {

bool StepMatches(const std::string& ofRoute, const std::string& step) {
    return Path::IsParameter(ofRoute) ? !step.empty() : ofRoute == step;
}

} // namespace

void ResourceRouter::Register(const std::string& path, IResource& resource) {
    const auto steps = Path::Split(path);
    const auto routed = Routes();
    if (std::find(routed.begin(), routed.end(), path) != routed.end()) {
        Vor::Throw(yERROR_ALREADY_EXISTS, "The route %s is registered already.", path);
    }
    routes.push_back({path, {steps.begin(), steps.end()}, &resource});
}

void ResourceRouter::Deregister(const std::string& path, bool mustExist) {
    if (std::erase_if(routes, [&](const Route& route) { return route.path == path; }) == 0 && mustExist) {
        Vor::Throw(yERROR_NOT_FOUND, "The route %s isn't registered.", path);
    }
}

std::optional<ResourceRouter::Match> ResourceRouter::Find(std::string_view path) const {
    if (path.empty() || path.front() != '/') {
        return std::nullopt;
    }
    std::vector<std::string> steps;
    for (const std::string_view step : Path::Split(path)) {
        steps.push_back(Path::Decode(step));
    }
    for (const bool asCollection : {false, true}) {
        for (const Route& route : routes) {
            if (asCollection && (route.steps.empty() || !Path::IsParameter(route.steps.back()))) {
                continue;
            }
            const auto end = route.steps.end() - (asCollection ? 1 : 0);
            if (std::equal(route.steps.begin(), end, steps.begin(), steps.end(), StepMatches)) {
                Match match{*route.resource, route.path, {}};
                for (std::size_t i = 0; i < steps.size(); ++i) {
                    if (Path::IsParameter(route.steps[i])) {
                        match.keys.emplace(route.steps[i].substr(1), steps[i]);
                    }
                }
                return match;
            }
        }
    }
    return std::nullopt;
}

bool ResourceRouter::Has(const IResource& resource) const {
    return std::any_of(routes.begin(), routes.end(), [&](const Route& route) { return route.resource == &resource; });
}

std::vector<IResource*> ResourceRouter::Resources() const {
    std::vector<IResource*> resources;
    for (const Route& route : routes) {
        if (std::find(resources.begin(), resources.end(), route.resource) == resources.end()) {
            resources.push_back(route.resource);
        }
    }
    return resources;
}

std::vector<std::string> ResourceRouter::Routes() const {
    std::vector<std::string> paths;
    paths.reserve(routes.size());
    for (const Route& route : routes) {
        paths.push_back(route.path);
    }
    return paths;
}

} // namespace VorApi
