#pragma once

#include "VorControl/Control/ControlPlugin.h"
#include "VorControl/Control/IControlFactory.h"

#include <memory>

namespace Services::Common {

/// Written by each service, and all that its plug-in needs: adds the service's types. What it throws is logged, and the
/// plug-in is refused.
void FillPlugin(VorControl::ControlPlugin& plugin);

/// Makes services of one class.
template <typename Service>
class ServiceFactory : public VorControl::IControlFactory {
public:
    std::shared_ptr<VorControl::ControlProtocol::IProtocol>
    Create(const VorControl::ControlProtocol::ControlProtocolEnviron& environ) override {
        return std::make_shared<Service>(environ);
    }
};

} // namespace Services::Common
