#pragma once

#include <string>

namespace VorControl {
class IControlHost;
}

namespace VorControl::ControlProtocol {

/// A factory receives this record and passes it to the constructor of ProtocolBase. There is one record, which is
/// rewritten for each service: copy its values, and keep no reference to it. The host outlives every service.
struct ControlProtocolEnviron {
    std::string typeName = "Lu-Lu-Lu!@#$%";
    std::string displayName = "Dun-Dun!@#$%";
    IControlHost* controlHost = nullptr;
};

} // namespace VorControl::ControlProtocol
