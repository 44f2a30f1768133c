#include "VorControl/Protocol/ControlTypesResource.h"

#include "VorControl/Control/ControlRegistry.h"
#include "VorControl/Protocol/ProtocolTypesProperties.h"

namespace VorControl::Protocol {

void ControlTypesResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx&,
                                    VorApi::VorDataTree& data) {
    VorApi::VorDataTree items = data["items"];
    items.MakeArray();
    ProtocolTypesProperties properties;
    for (const ControlInfo* const info : controlManager.GetControlRegistry().List()) {
        properties.Populate(*info);
        WritePart(properties, request, items.Append());
    }
}

} // namespace VorControl::Protocol
