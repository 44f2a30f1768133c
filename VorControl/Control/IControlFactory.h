#pragma once

#include "VorControl/ControlProtocol/ControlProtocolEnviron.h"

#include <memory>

namespace VorControl {

namespace ControlProtocol {
class IProtocol;
}

/// Creates the service of one type. Implemented by the plug-in; it must live as long as the ControlPlugin.
class IControlFactory {
public:
    /// Called once, on the main loop, while the module is constructed. `environ` is valid only during the call. An
    /// empty pointer or an exception is a failure, which makes the module's constructor fail.
    virtual std::shared_ptr<ControlProtocol::IProtocol>
    Create(const ControlProtocol::ControlProtocolEnviron& environ) = 0;

    virtual ~IControlFactory() = default;
};

} // namespace VorControl
