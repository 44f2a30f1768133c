#include "VorControl/Protocol/ProtocolTypesProperties.h"

#include "VorControl/Control/ControlInfo.h"
#include "VorControl/Protocol/DocumentMembers.h"

namespace VorControl::Protocol {

ProtocolIconProperties::ProtocolIconProperties() {
    RegisterReadOnly(*this, "mimeType", mimeType, "Icon MIME Type");
    RegisterReadOnly(*this, "data", data, "Icon Data");
}

ProtocolTypesProperties::ProtocolTypesProperties() {
    RegisterReadOnly(*this, "type", type, "Identifier");
    RegisterReadOnly(*this, "displayName", displayName, "Display Type");
    RegisterReadOnly(*this, "description", description, "Description");
    RegisterReadOnly(*this, "helpHtml", helpHtml, "Help In HTML");
    RegisterReadOnly(*this, "helpUrl", helpUrl, "Help URL");
    RegisterReadOnly(*this, "categories", categories, "Categories");
    RegisterReadOnly(*this, "icon", icon, "Icon");
}

void ProtocolTypesProperties::Populate(const ControlInfo& info) {
    type = info.TypeName();
    displayName = info.DisplayName();
    description = info.Description();
    helpHtml = info.HelpHtml();
    helpUrl = info.HelpUrl();
    std::vector<std::string> names;
    for (std::size_t index = 0; index < info.CategoryCount(); ++index) {
        names.push_back(info.CategoryAt(index));
    }
    categories = names;
    icon.mimeType = info.Icon().name;
    icon.data = Vor::Properties::ByteVector(info.Icon().bytes);
}

} // namespace VorControl::Protocol
