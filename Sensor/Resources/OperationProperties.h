#pragma once

#include "Sensor/Resources/OperationRunner.h"
#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>
#include <vector>

namespace Sensor::Resources {

/// What a load had to report about a service.
class LoadNotesProperties : public Vor::Params::Group {
public:
    LoadNotesProperties();

    /// Overwrites every member.
    void Populate(const VorControl::ServiceLoadNotes& notes);

    Vor::Params::Value<std::string> service;
    Vor::Params::Value<std::string> result;
    Vor::Params::Value<std::vector<std::string>> texts;
};

/// The document of an operation.
class OperationProperties : public Vor::Params::Group {
public:
    explicit OperationProperties(const Operation& operation);

    /// The path of an operation.
    static std::string PathOf(const Operation& operation);

    Vor::Params::Value<std::string> id;
    Vor::Params::Value<std::string> command;
    Vor::Params::Value<std::string> argument;
    Vor::Params::Value<std::string> state;
    Vor::Params::Value<long long> code;
    Vor::Params::Value<std::string> text;
    Vor::Params::Array<LoadNotesProperties> notes;
};

} // namespace Sensor::Resources
