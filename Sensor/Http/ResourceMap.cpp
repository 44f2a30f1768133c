#include "Sensor/Http/ResourceMap.h"

#include "Sensor/Http/IMediaResource.h"
#include "Sensor/Http/IUploadResource.h"
#include "Sensor/Http/MediaTypes.h"
#include "Vor/Exception.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorApi/ICallableResource.h"
#include "VorApi/IParentResource.h"
#include "VorApi/Path.h"
#include "VorApi/RequestInfoEx.h"
#include "VorApi/ResponseInfoEx.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Sensor::Http {

using VorApi::Path;
using VorApi::VorDataTree;
using VorRest::Verb;
using Relation = VorApi::ResponseInfoEx::Relation;

namespace {

/// Also nothing for a relation whose path is none.
std::optional<VorApi::ResourceRouter::Match> FindMatch(const VorApi::ResourceRouter& router, const std::string& path) {
    try {
        return router.Find(path);
    } catch (const Vor::Exception&) {
        return std::nullopt;
    }
}

} // namespace

struct ResourceMap::Place {
    VorApi::RequestInfoEx request;
    std::string route;
    bool isCollection;
    bool hasItems; ///< the route ends with a parameter
    VorApi::DocumentResourceBase* document;
    VorApi::IParentResource* parent;
    VorApi::ICallableResource* command;
    IUploadResource* upload;

    bool IsUpdatable() const { return document != nullptr && !isCollection; }
    bool Creates() const { return parent != nullptr && (isCollection || !hasItems) && parent->Creates(); }
    bool Deletes() const { return parent != nullptr && !isCollection && parent->Deletes(); }
    bool IsCommand() const { return command != nullptr && !isCollection; }
    bool IsUpload() const { return upload != nullptr && !isCollection; }
};

std::string Methods::Allow() const {
    std::string allow;
    for (const auto& [has, text] :
         {std::pair(get, "GET, HEAD, "), std::pair(patch, "PATCH, "), std::pair(post, "POST, "),
          std::pair(put, "PUT, "), std::pair(remove, "DELETE, ")}) {
        allow += has ? text : "";
    }
    return allow.empty() ? allow : allow + "OPTIONS";
}

void Methods::AddTo(HttpFields& fields) const {
    fields.Add("Allow", Allow());
    if (patch) {
        fields.Add("Accept-Patch", std::string(MergePatchTypes));
    }
}

std::string ResourceMap::Canonical(std::string_view path) {
    std::string canonical;
    for (const std::string_view step : Path::Split(path)) {
        canonical += '/';
        canonical += Path::Encode(Path::Decode(step));
    }
    const bool endsWithEmptyStep = canonical.ends_with('/');
    return canonical.empty() || endsWithEmptyStep ? canonical + '/' : canonical;
}

std::optional<ResourceMap::Place> ResourceMap::Find(const std::string& path) const {
    auto match = FindMatch(router, path);
    if (!match) {
        return std::nullopt;
    }
    const auto steps = Path::Split(match->route);
    return Place{.request = VorApi::RequestInfoEx(std::move(match->keys), false),
                 .route = match->route,
                 .isCollection = steps.size() > Path::Split(path).size(),
                 .hasItems = !steps.empty() && Path::IsParameter(steps.back()),
                 .document = dynamic_cast<VorApi::DocumentResourceBase*>(&match->resource),
                 .parent = dynamic_cast<VorApi::IParentResource*>(&match->resource),
                 .command = dynamic_cast<VorApi::ICallableResource*>(&match->resource),
                 .upload = dynamic_cast<IUploadResource*>(&match->resource)};
}

std::optional<Verb> ResourceMap::VerbOf(const std::string& method, const std::string& path) const {
    const auto place = Find(path);
    if (!place) {
        return std::nullopt;
    }
    if ((method == "GET" || method == "HEAD") && place->document != nullptr) {
        return Verb::Read;
    }
    if (method == "PATCH" && place->IsUpdatable()) {
        return Verb::Update;
    }
    if (method == "POST" && place->IsCommand()) {
        return Verb::Invoke;
    }
    if (method == "POST" && place->Creates()) {
        return Verb::Create;
    }
    if (method == "DELETE" && place->Deletes()) {
        return Verb::Delete;
    }
    return std::nullopt;
}

Methods ResourceMap::MethodsOf(const Place& place) {
    const bool exists = place.document == nullptr || place.document->HasDocument(place.request);
    if (exists) {
        return MethodsOfKind(place);
    }
    Methods methods;
    methods.post = place.IsCommand() && place.command->IsCommand(place.request);
    methods.put = place.IsUpload();
    return methods;
}

Methods ResourceMap::MethodsOfKind(const Place& place) {
    Methods methods;
    methods.get = place.document != nullptr;
    methods.patch = place.IsUpdatable() && place.document->IsUpdatable();
    methods.post = place.IsCommand() || place.Creates();
    methods.put = place.IsUpload();
    methods.remove = place.Deletes();
    return methods;
}

Methods ResourceMap::MethodsOfRoute(const std::string& route) const {
    const auto place = Find(route);
    return place ? MethodsOfKind(*place) : Methods();
}

Methods ResourceMap::MethodsOf(const std::string& path) const {
    const auto place = Find(path);
    return place ? MethodsOf(*place) : Methods();
}

std::string_view ResourceMap::MediaTypeOf(const std::string& path) const {
    const auto match = FindMatch(router, path);
    const auto* const resource = match ? dynamic_cast<const IMediaResource*>(&match->resource) : nullptr;
    return resource == nullptr ? OctetStream : resource->MediaType();
}

std::optional<ResourceMap::Upload> ResourceMap::UploadOf(const std::string& path) const {
    const auto place = Find(path);
    return place && place->IsUpload() ? std::optional(Upload{*place->upload, place->request}) : std::nullopt;
}

bool ResourceMap::Leads(const std::optional<Place>& place) {
    if (!place) {
        return false;
    }
    const Methods methods = MethodsOf(*place);
    return methods.get || methods.post;
}

HalDocument ResourceMap::Describe(const std::string& path, VorRest::Answer answer) const {
    HalDocument document{path, std::move(answer.document)};
    for (Relation& relation : answer.relations) {
        if (!Leads(Find(relation.path))) {
            continue;
        }
        HalDocument::Link link{std::move(relation.name), std::move(relation.path), relation.asArray,
                               std::move(relation.properties)};
        if (relation.kind == Relation::Kind::Link) {
            document.links.push_back(std::move(link));
        } else {
            document.embedded.push_back({std::move(link)});
        }
    }
    AddLinks(document);
    return document;
}

void ResourceMap::AddLinks(HalDocument& document) const {
    const auto add = [&](const char* relation, const std::string& path) {
        if (!document.HasLink(relation) && Leads(Find(path))) {
            document.links.push_back({relation, path});
        }
    };
    const std::string base = document.path == "/" ? "" : document.path;
    for (std::string path = base; !path.empty() && !document.HasLink("up");) {
        path.erase(path.rfind('/'));
        add("up", path.empty() ? "/" : path);
    }
    const auto place = Find(document.path);
    if (place && place->hasItems && !place->isCollection) {
        add("collection", base.substr(0, base.rfind('/')));
    }
    // Only a route that names the step itself counts, not one with a parameter in its place.
    const std::size_t depth = Path::Split(document.path).size();
    for (const char* const part : {"metrics", "commands"}) {
        const std::string path = base + '/' + part;
        const auto child = Find(path);
        const std::string relation = std::string("vor:") + part;
        if (child && Path::Split(child->route)[depth] == part && !document.HasLink(relation) && Leads(child)) {
            document.links.push_back({relation, path});
        }
    }
    const auto isOwn = [](const std::string& relation) { return relation.starts_with("vor:"); };
    if (std::ranges::any_of(document.links, isOwn, &HalDocument::Link::relation) ||
        std::ranges::any_of(document.embedded, isOwn, [](const auto& part) { return part.link.relation; })) {
        VorDataTree properties;
        properties["name"].Set("vor");
        properties["templated"].Set(true);
        document.links.push_back({"curies", "/rels/{rel}", true, properties});
    }
}

} // namespace Sensor::Http
