#pragma once

#include "Services/Common/TcpServerProperties.h"

namespace Services::Ascii {

/// The properties of the service.
class AsciiProperties : public Common::TcpServerProperties {
public:
    AsciiProperties();

    /// Lines of frames that were dropped because their clients read too slowly.
    Vor::Params::Value<unsigned long long> dropped;
};

} // namespace Services::Ascii
