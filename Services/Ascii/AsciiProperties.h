#pragma once

#include "Services/Common/TcpServerProperties.h"

namespace Services::Ascii {

/// What the service shows of itself.
class AsciiProperties : public Common::TcpServerProperties {
public:
    AsciiProperties();

    /// Answers with ERROR, since the service was started.
    Vor::Params::Value<unsigned long long> errors;
    /// Lines of frames that clients were too slow for.
    Vor::Params::Value<unsigned long long> dropped;
};

} // namespace Services::Ascii
