#pragma once

#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/RegisterBlockParams.h"

#include <string>

/// The requests that change a register assembly. In each, an empty text and NoneGiven mean that no value is given.
namespace VorControl::ControlProtocol {

/// The request to add blocks.
class AddBlockParams : public Vor::Params::Group {
public:
    AddBlockParams();

    Vor::Params::Array<RegisterBlockParams> blocks;
    Vor::Params::Value<bool> autoShift; ///< blocks in the way move up; otherwise the new one is refused
};

/// One block of a request to remove blocks.
class RegisterBlockIdParams : public Vor::Params::Group {
public:
    RegisterBlockIdParams();

    Vor::Params::Value<unsigned short> outputId;
};

/// The request to remove blocks.
class RemoveBlockParams : public Vor::Params::Group {
public:
    RemoveBlockParams();

    Vor::Params::Array<RegisterBlockIdParams> outputIdList;
};

/// The request to close all gaps.
class CompactBlocksParams : public Vor::Params::Group {
public:
    CompactBlocksParams();

    Vor::Params::Value<unsigned short> startingOutputId; ///< by default the first one of the assembly
};

/// The new values of a block. Values that aren't given don't change.
class UpdateBlockNewParams : public Vor::Params::Group {
public:
    UpdateBlockNewParams();

    /// No value is given.
    void Reset();

    Vor::Params::Value<std::string> dataSource;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<unsigned short> outputId;
    Vor::Params::Value<unsigned short> registerCount;
};

/// The request to change one block.
class UpdateBlockParams : public Vor::Params::Group {
public:
    UpdateBlockParams();

    Vor::Params::Value<unsigned short> outputId; ///< of the block, before the change
    Vor::Params::Value<bool> autoShift;          ///< blocks in the way move up; otherwise the change is refused
    UpdateBlockNewParams newParams;
};

} // namespace VorControl::ControlProtocol
