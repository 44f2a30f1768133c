#include "VorControl/Protocol/ProtocolTypesProperties.h"

#include "VorControl/Control/ControlInfo.h"
#include "VorControl/Protocol/DocumentMembers.h"

namespace VorControl::Protocol {

ProtocolIconProperties::ProtocolIconProperties() {
    RegisterReadOnly(*this, "mimeType", mimeType, Title("Icon MIME Type"));
    RegisterReadOnly(*this, "data", data, Title("Icon Data"));
}

ProtocolTypesProperties::ProtocolTypesProperties() {
    RegisterReadOnly(*this, "type", type, Title("Identifier"));
    RegisterReadOnly(*this, "displayName", displayName, Title("Display Type"));
    RegisterReadOnly(*this, "description", description, Title("Description"));
    RegisterReadOnly(*this, "helpHtml", helpHtml, Title("Help In HTML"));
    RegisterReadOnly(*this, "helpUrl", helpUrl, Title("Help URL"));
    RegisterReadOnly(*this, "categories", categories, Title("Categories"));
    RegisterReadOnly(*this, "icon", icon, Title("Icon"));
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
