#pragma once

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/RecordingScanResults.h"
#include "VorControl/Control/ControlInstance.h"

#include <memory>
#include <utility>

namespace Tests {

/// What an instance of the service gets, without names.
inline VorControl::ControlInstanceParams
InstanceParams(HostEnviron& environ, RecordingScanResults& scanResults, const VorControl::ControlInfo& info,
               std::shared_ptr<VorControl::ControlProtocol::IProtocol> service) {
    VorControl::ControlInstanceParams params;
    params.info = &info;
    params.updateGate = &environ.application.gate;
    params.scanResults = &scanResults;
    params.problemsManager = &environ.application.problems;
    params.protocol = std::move(service);
    return params;
}

} // namespace Tests
