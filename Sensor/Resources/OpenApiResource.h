#pragma once

#include "Sensor/Http/IMediaResource.h"
#include "Sensor/Resources/SensorProperties.h"
#include "VorApi/DocumentResourceBase.h"

#include <string_view>

namespace VorApi {
class ResourceRouter;
}

namespace Sensor::Resources {

/// The description of all resources for programs (OpenAPI 3.1).
class OpenApiResource : public VorApi::DocumentResourceBase, public Http::IMediaResource {
public:
    static constexpr const char* Route = "/openapi.json";

    /// The router outlives this.
    OpenApiResource(VorApi::ResourceRouter& router, const SensorEnviron& environ)
        : router(router)
        , environ(environ) {}

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

    std::string_view MediaType() const override { return "application/json"; }

protected:
    void RequireDocument(const VorApi::RequestInfoEx&) override {}

private:
    VorApi::ResourceRouter& router;
    const SensorEnviron environ;
};

} // namespace Sensor::Resources
