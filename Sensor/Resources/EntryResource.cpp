#include "Sensor/Resources/EntryResource.h"

#include "Sensor/Resources/DocumentMembers.h"
#include "Sensor/Resources/OpenApiResource.h"
#include "VorApi/Params/Value.h"
#include "VorApi/Path.h"
#include "VorApi/ResourceRouter.h"

#include <string_view>
#include <utility>
#include <vector>

namespace Sensor::Resources {

namespace {

class EntryProperties : public Vor::Params::Group {
public:
    EntryProperties() {
        RegisterReadOnly(*this, "name", name, "Name");
        RegisterReadOnly(*this, "version", version, "Version");
        RegisterReadOnly(*this, "boot", boot, "Id of this run of the program");
    }

    Vor::Params::Value<std::string> name;
    Vor::Params::Value<std::string> version;
    Vor::Params::Value<std::string> boot;
};

} // namespace

EntryResource::EntryResource(const VorApi::ResourceRouter& router, std::string boot)
    : router(router)
    , boot(std::move(boot)) {}

void EntryResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                             VorApi::VorDataTree& data) {
    EntryProperties document;
    document.name = "vorsensor";
    document.version = VOR_VERSION;
    document.boot = boot;
    NodeToVorDataTree(document, request, data, true);
    for (const std::string& route : router.Routes()) {
        const std::vector<std::string_view> steps = VorApi::Path::Split(route);
        const bool isAtTop = steps.size() == 1 || (steps.size() == 2 && VorApi::Path::IsParameter(steps[1]));
        if (route == OpenApiResource::Route) {
            response.Link("service-desc", route, false, VorApi::VorDataTree()); // RFC 8631
        } else if (isAtTop) {
            const std::string name(steps[0]);
            response.Link("vor:" + name, "/" + name, false, VorApi::VorDataTree());
        }
    }
}

} // namespace Sensor::Resources
