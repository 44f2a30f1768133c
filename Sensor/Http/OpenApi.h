#pragma once

#include "Sensor/Http/ResourceDescription.h"
#include "Sensor/Http/ResourceMap.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace VorApi {
class ResourceRouter;
}

namespace Sensor::Http {

/// A description of all routes of a router for programs (OpenAPI 3.1). Made anew for each use, on the main loop.
class OpenApi {
public:
    using Describe = std::function<ResourceDescription(const std::string& route)>;

    /// `tags`: what resources are grouped by, each with a text. A resource whose description has none of these gets the
    /// first step of its path.
    OpenApi(const VorApi::ResourceRouter& router, const Describe& describe,
            const std::map<std::string, std::string>& tags);

    const nlohmann::ordered_json& Document() const { return document; }

    /// Such as "/sensor/jobs/{job}" for "/sensor/jobs/:job".
    static std::string TemplateOf(std::string_view route);

private:
    using Json = nlohmann::ordered_json;

    /// A path with what is there: all resources of a route, or its collection.
    struct Place {
        std::string route;
        const ResourceDescription& description;
        bool isList;
        std::string noun; ///< for the ids of its operations and for its schemas, such as "SensorJob"
        Methods methods;
        bool isStream;         ///< with 'Accept: text/event-stream'
        std::string mediaType; ///< of what is nothing but bytes; else empty
    };

    void AddPath(const Place& place);
    /// The noun of a route that no other one has.
    std::string UniqueNoun(const std::string& route);
    static Json Operation(const Place& place, const std::string& verb, const std::string& summary);
    Json Get(const Place& place);
    Json Patch(const Place& place);
    Json Post(const Place& place);
    static Json Put(const Place& place);
    static Json Delete(const Place& place);

    /// The schema of a document of hypertext.
    Json DocumentSchema(const std::string& name, const std::vector<nlohmann::json>& schemas);
    /// The schema among the components that is one of those of the tree. Empty for none.
    Json Component(const std::string& name, const std::vector<nlohmann::json>& schemas, bool isUpdate);

    Json document;
    const std::map<std::string, std::string> tags;
    std::set<std::string> listedTags;
    std::set<std::string> nouns;
};

} // namespace Sensor::Http
