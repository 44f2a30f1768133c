#pragma once

#include "Sensor/Http/HalDocument.h"
#include "Sensor/Http/HttpRequest.h"
#include "VorApi/RequestInfoEx.h"
#include "VorApi/ResourceRouter.h"
#include "VorRest/Request.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Sensor::Http {

class IUploadResource;

/// The methods of a resource.
struct Methods {
    bool get = false;
    bool patch = false;
    bool post = false;
    bool put = false;
    bool remove = false;

    bool Any() const { return get || AnyButGet(); }
    bool AnyButGet() const { return patch || post || put || remove; }
    /// The field Allow; empty when there is none.
    std::string Allow() const;
    /// Adds the fields Allow and, with PATCH, Accept-Patch.
    void AddTo(HttpFields& fields) const;
};

/// What the paths of a router lead to. A path whose route has a last parameter that it leaves out is a collection: what
/// is created there, is updated, deleted or invoked at the paths of its items. Main loop only.
class ResourceMap {
public:
    /// The router must outlive this.
    explicit ResourceMap(const VorApi::ResourceRouter& router)
        : router(router) {}

    /// With each step percent-coded as Path::Encode does, and without a slash at the end that changes nothing: "/a/" is
    /// "/a", but "/a//" has an empty step. Throws `yERROR_FORMAT`. From any thread.
    static std::string Canonical(std::string_view path);

    /// What the method does there; nothing when it does nothing.
    std::optional<VorRest::Verb> VerbOf(const std::string& method, const std::string& path) const;
    /// None for a path that leads nowhere. For a resource that has a document, the document exists, but for `put`,
    /// which may create it.
    Methods MethodsOf(const std::string& path) const;

    /// The methods of all that a route leads to, whether anything is there at present. A route that leaves out its last
    /// parameter is that of the collection.
    Methods MethodsOfRoute(const std::string& route) const;

    /// Of documents at the path that are bytes.
    std::string_view MediaTypeOf(const std::string& path) const;

    struct Upload {
        IUploadResource& resource;
        VorApi::RequestInfoEx request;
    };
    /// What PUT replaces or creates there; nothing when it does neither.
    std::optional<Upload> UploadOf(const std::string& path) const;

    /// The document with its relations and the links that follow from the routes: "up", "collection", "vor:metrics",
    /// "vor:commands". Relations that lead nowhere are left out.
    HalDocument Describe(const std::string& path, VorRest::Answer answer) const;

private:
    struct Place;

    std::optional<Place> Find(const std::string& path) const;
    static Methods MethodsOf(const Place& place);
    static Methods MethodsOfKind(const Place& place);
    /// Whether a GET there succeeds, or a POST does something.
    static bool Leads(const std::optional<Place>& place);
    void AddLinks(HalDocument& document) const;

    const VorApi::ResourceRouter& router;
};

} // namespace Sensor::Http
