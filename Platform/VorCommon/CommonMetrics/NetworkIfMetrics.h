#pragma once

#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <cstdint>
#include <string>

namespace VorCommon::CommonMetrics {

enum class LinkState : std::int32_t { Down = 0, Up = 1 };

/// One network interface.
class NetworkIfMetrics : public Vor::Params::Group {
public:
    NetworkIfMetrics();

    Vor::Params::Value<std::string> name;
    Vor::Params::Enum<LinkState> linkState;
    Vor::Params::Value<unsigned long long> linkSpeed; ///< bits a second; 0 when unknown
};

} // namespace VorCommon::CommonMetrics
