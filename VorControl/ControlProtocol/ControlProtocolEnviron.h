#pragma once

#include <string>

namespace VorControl {
class IControlHost;
}

namespace VorControl::ControlProtocol {

/// What a factory receives and hands to the constructor of ProtocolBase. There is one record, which is rewritten for
/// each service: copy what is needed, and keep no reference to it. The host outlives every service.
struct ControlProtocolEnviron {
    std::string typeName = "Lu-Lu-Lu!@#$%";
    std::string displayName = "Dun-Dun!@#$%";
    IControlHost* controlHost = nullptr;
};

} // namespace VorControl::ControlProtocol
