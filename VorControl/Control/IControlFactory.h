#pragma once

#include "VorControl/ControlProtocol/ControlProtocolEnviron.h"

#include <memory>

namespace VorControl {

namespace ControlProtocol {
class IProtocol;
}

/// Makes the service of one type. Implemented by the plug-in, which keeps it alive as long as its ControlPlugin.
class IControlFactory {
public:
    /// Called once, when the module is built, on the main loop. `environ` is valid only during the call. An empty
    /// pointer or an exception is a failure, and the module isn't built.
    virtual std::shared_ptr<ControlProtocol::IProtocol>
    Create(const ControlProtocol::ControlProtocolEnviron& environ) = 0;

    virtual ~IControlFactory() = default;
};

} // namespace VorControl
