#pragma once

#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/CommonProtocolOutputProp.h"
#include "VorControl/ControlProtocol/NoneGiven.h"

#include <string>
#include <vector>

/// The document of an output map with numbers as ids, and the requests that change it.
namespace VorControl::ControlProtocol {

/// An entry of the map.
class StandardOutputItem : public Vor::Params::Group {
public:
    using Id = unsigned short;
    static constexpr Id NullId = NoneGiven;

    StandardOutputItem();

    Vor::Params::Value<unsigned short> outputId;
    Vor::Params::Value<std::string> source;
};

/// The range of ids, for clients only: the map accepts ids outside of it.
class StandardOutputsAttributes : public Vor::Params::Group {
public:
    StandardOutputsAttributes();

    Vor::Params::Value<unsigned short> outputIdMin;
    Vor::Params::Value<unsigned short> outputIdMax;
};

/// The document of the map.
class StandardOutputs : public CommonProtocolOutputProp {
public:
    StandardOutputs();

    StandardOutputsAttributes attributes;
    Vor::Params::Array<StandardOutputItem> map;
};

/// The request to add one entry.
class StandardOutputItemArgs : public StandardOutputItem {
public:
    StandardOutputItemArgs();

    Vor::Params::Value<bool> autoShift; ///< entries in the way move up; otherwise the new one is refused
};

/// The request to add several entries, or to change the id of one.
class StandardOutputsArgs : public StandardOutputs {
public:
    StandardOutputsArgs();

    Vor::Params::Value<bool> autoShift; ///< entries in the way of a changed id move up; otherwise it is refused
};

/// The request to remove entries: either one id or a list of them.
class StandardOutputRemoveArgs : public Vor::Params::Group {
public:
    StandardOutputRemoveArgs();

    Vor::Params::Value<unsigned short> outputId;
    Vor::Params::Value<std::vector<unsigned short>> outputIdList;
};

} // namespace VorControl::ControlProtocol
