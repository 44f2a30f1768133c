#include "Sensor/Resources/OpenApiResource.h"

#include "Sensor/Http/OpenApi.h"
#include "Sensor/Resources/ResourceDescriptions.h"
#include "Vor/ByteVector.h"

#include <string>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

void OpenApiResource::Document(const VorApi::RequestInfoEx&, VorApi::ResponseInfoEx&, VorApi::VorDataTree& data) {
    ResourceDescriptions descriptions(router, environ);
    const Http::OpenApi api(
        router, [&](const std::string& route) { return descriptions.Of(route); }, ResourceDescriptions::Tags());
    const std::string text = api.Document().dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    data.Set(Vor::Properties::ByteVector(text.data(), text.size()));
}

} // namespace Sensor::Resources
