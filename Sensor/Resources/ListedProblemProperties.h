#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>

namespace Sensor::Resources {

struct ListedProblem;

/// A problem, as documents and events have it.
class ListedProblemProperties : public Vor::Params::Group {
public:
    ListedProblemProperties();

    /// Overwrites every member.
    void Populate(const ListedProblem& problem);

    Vor::Params::Value<unsigned long long> id;
    Vor::Params::Value<std::string> since;
    Vor::Params::Value<std::string> severity;
    Vor::Params::Value<std::string> source;
    Vor::Params::Value<std::string> title;
    Vor::Params::Value<std::string> text;
    Vor::Params::Value<std::string> help;
};

} // namespace Sensor::Resources
