// Any request: "METHOD TARGET", lines with fields, an empty line and the body. It gets one answer, of which a client is
// to blame, and whose body is JSON.

#include "ResourceClient.h"
#include "Sensor/Http/IEventStreams.h"
#include "Sensor/Http/IRevisions.h"
#include "Sensor/Http/ResourceGateway.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorApi/ICallableResource.h"
#include "VorApi/IParentResource.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorApi/Path.h"
#include "VorApi/ResourceRouter.h"
#include "VorRest/RequestProcessor.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace {

using namespace Fuzz;
using namespace Sensor::Http;
using VorApi::RequestInfo;
using VorApi::RequestInfoEx;
using VorApi::ResponseInfoEx;
using VorApi::VorDataTree;

class Settings : public Vor::Params::Group {
public:
    Settings() {
        Register("port", port);
        Register("name", name);
        port.EnableMaximum(true);
        port.SetMaximum(1000);
    }

    Vor::Params::Value<unsigned short> port{502};
    Vor::Params::Value<std::string> name;
};

/// Settings by name, at "/items/:item".
class Items : public VorApi::DocumentResourceBase, public VorApi::IParentResource, public VorApi::ICallableResource {
public:
    void Document(const RequestInfoEx& request, ResponseInfoEx& response, VorDataTree& data) override {
        if (const std::string* const id = request.FindKey("item")) {
            NodeToVorDataTree(*Find(request), request, data, true);
            response.Link("vor:command", VorApi::Path::Format("/items/:item", {*id}), true, VorDataTree());
            return;
        }
        for (const auto& [id, item] : items) {
            response.Embed("item", VorApi::Path::Format("/items/:item", {id}), true, VorDataTree());
        }
    }
    bool IsUpdatable() const override { return true; }
    void UpdateDocument(const RequestInfo& request, const nlohmann::json& json) override {
        NodeFromJsonAndValidate(*Find(request), json);
    }
    Created Create(const RequestInfo&, const nlohmann::json& json) override {
        const auto id = json.is_object() ? json.find("id") : json.end();
        if (id == json.end() || !id->is_string() || items.size() >= 10) {
            Vor::Throw(yERROR_PARAMETER, "An id was expected.");
        }
        items[*id] = std::make_shared<Settings>();
        return {*id, VorApi::Path::Format("/items/:item", {*id})};
    }
    using IParentResource::Delete;
    void Delete(const RequestInfo& request) override {
        Find(request);
        items.erase(*request.FindKey("item"));
    }
    using ICallableResource::Invoke;
    VorDataTree Invoke(const RequestInfoEx& request, const VorDataTree& data) override {
        NodeFromVorDataTree(*Find(request), data);
        return data;
    }

private:
    std::shared_ptr<Settings> Find(const RequestInfo& request) const {
        const auto found = items.find(*request.FindKey("item"));
        if (found == items.end()) {
            Vor::Throw(yERROR_NOT_FOUND);
        }
        return found->second;
    }

    std::map<std::string, std::shared_ptr<Settings>> items{{"a", std::make_shared<Settings>()},
                                                           {"b/c", std::make_shared<Settings>()}};
};

class Revisions : public IRevisions {
public:
    std::optional<std::string> TagOf(const std::string& path) const override {
        return path.starts_with("/items/") ? std::optional("\"1\"") : std::nullopt;
    }
};

class NoStreams : public IEventStreams {
public:
    HttpResponse Open(const RequestTarget&, const HttpRequest&, Responder) override {
        Vor::Throw(yERROR_UNIMPLEMENTED);
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Vor::Logging::SetMinimumLevel(Vor::LevelError);
    static Vor::MainLoop loop(Vor::MainLoop::Mode::Manual);
    VorApi::ResourceRouter router;
    Items items;
    router.Register("/items/:item", items);
    VorRest::RequestProcessor requests(router);
    const Revisions revisions;
    NoStreams streams;
    ResourceGateway gateway({}, router, requests, revisions, streams);

    Ask(gateway, loop, ParseRequest({reinterpret_cast<const char*>(data), size}));
    return 0;
}
