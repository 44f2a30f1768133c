#pragma once

#include <memory>
#include <string>

namespace VorCommon {
class IUpdateGate;
class ProblemsManager;
} // namespace VorCommon

namespace VorControl {

class ControlInfo;
class IControlScanResults;

namespace ControlProtocol {
class IProtocol;
}

/// The arguments of ControlInstance's constructor. The info, the gate, the scan results and the problems manager
/// outlive it.
struct ControlInstanceParams {
    const ControlInfo* info = nullptr;
    VorCommon::IUpdateGate* updateGate = nullptr;
    IControlScanResults* scanResults = nullptr;
    VorCommon::ProblemsManager* problemsManager = nullptr;
    std::shared_ptr<ControlProtocol::IProtocol> protocol;
    std::string typeName;
    std::string displayName;
};

} // namespace VorControl
