#include "Sensor/Resources/HealthResource.h"

#include "Sensor/Resources/DocumentMembers.h"
#include "VorApi/Params/Value.h"

#include <string>

namespace Sensor::Resources {

namespace {

class HealthProperties : public Vor::Params::Group {
public:
    HealthProperties() { RegisterReadOnly(*this, "status", status, "Status"); }

    Vor::Params::Value<std::string> status{"ok"};
};

} // namespace

void HealthResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx&,
                              VorApi::VorDataTree& data) {
    NodeToVorDataTree(HealthProperties(), request, data, true);
}

} // namespace Sensor::Resources
