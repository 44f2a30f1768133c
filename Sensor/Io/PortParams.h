#pragma once

#include "Sensor/Io/PortSettings.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Sensor::Io {

/// The name of a port. One that is too long or isn't plain text is refused like a value outside of its limits.
class NameParam : public Vor::Params::Value<std::string> {
public:
    static constexpr std::size_t MaxSize = 64;

    NameParam& operator=(const std::string& value) override {
        ConditionalSet(value);
        return *this;
    }

    void CheckValidation(const std::string& value, bool log) const override;
};

/// The parameters of a port, which clients read and change and which are kept with the job.
class PortParams : public Vor::Params::Group {
public:
    /// Has the default settings.
    PortParams();

    /// The values are within their limits.
    PortSettings Settings() const;
    /// Gives each parameter that is outside of its limits its value of `former`. Returns a sentence for each.
    std::vector<std::string> Mend(const PortSettings& former);

    NameParam name;
    Vor::Params::Enum<PortBehaviour> behaviour;
    Vor::Params::Value<bool> activeLow;
    Vor::Params::Enum<std::string> mode; ///< "level", "pulse"
    Vor::Params::Value<unsigned int> pulseWidth;
    Vor::Params::Value<unsigned int> delay;
    Vor::Params::Enum<std::string> schedule; ///< "now", "encoder", "time"
    Vor::Params::Enum<std::string> idle;     ///< "off", "on", "keep"
};

} // namespace Sensor::Io
