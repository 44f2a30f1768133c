#pragma once

#include "Vor/ByteVector.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>
#include <vector>

namespace VorControl {

class ControlInfo;

namespace Protocol {

class ProtocolIconProperties : public Vor::Params::Group {
public:
    ProtocolIconProperties();

    Vor::Params::Value<std::string> mimeType;
    Vor::Params::Value<Vor::Properties::ByteVector> data;
};

/// One type of service.
class ProtocolTypesProperties : public Vor::Params::Group {
public:
    ProtocolTypesProperties();

    /// Overwrites every member.
    void Populate(const ControlInfo& info);

    Vor::Params::Value<std::string> type;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<std::string> description;
    Vor::Params::Value<std::string> helpHtml;
    Vor::Params::Value<std::string> helpUrl;
    Vor::Params::Value<std::vector<std::string>> categories;
    ProtocolIconProperties icon;
};

} // namespace Protocol
} // namespace VorControl
