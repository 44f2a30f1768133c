#pragma once

#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/CommonProtocolOutputProp.h"

#include <string>
#include <vector>

/// The document of an output map with texts as ids, and the requests that change it.
namespace VorControl::ControlProtocol {

/// An entry of the map.
class TextIdStandardOutputItem : public Vor::Params::Group {
public:
    using Id = std::string;
    inline static const Id NullId;

    TextIdStandardOutputItem();

    Vor::Params::Value<std::string> outputId;
    Vor::Params::Value<std::string> source;
    /// For the service that owns the map. It is lost when an entry is inserted or its id changes.
    Vor::Params::Value<std::string> itemType;
};

/// The document of the map.
class TextIdStandardOutputs : public CommonProtocolOutputProp {
public:
    TextIdStandardOutputs();

    Vor::Params::Array<TextIdStandardOutputItem> map;
};

/// The request to add one entry.
class TextIdStandardOutputItemArgs : public TextIdStandardOutputItem {
public:
    TextIdStandardOutputItemArgs();

    Vor::Params::Value<bool> autoShift; ///< has no effect: these maps shift nothing
};

/// The request to add several entries, or to change the id of one.
class TextIdStandardOutputsArgs : public TextIdStandardOutputs {};

/// The request to remove entries: either one id or a list of them.
class TextIdStandardOutputRemoveArgs : public Vor::Params::Group {
public:
    TextIdStandardOutputRemoveArgs();

    Vor::Params::Value<std::string> outputId;
    Vor::Params::Value<std::vector<std::string>> outputIdList;
};

} // namespace VorControl::ControlProtocol
