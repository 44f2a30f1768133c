#include "VorControl/Control/ControlInstanceMetrics.h"

#include "Vor/Exception.h"
#include "VorControl/ControlProtocol/IProtocol.h"
#include "yApi/yStatus.h"

namespace VorControl {

void ControlInstanceMetrics::UpdateMetrics() {
    if (protocol == nullptr) {
        Vor::Throw(yERROR_STATE, "No protocol implementation available for the metrics update operation");
    }
    protocol->UpdateMetrics();
}

void ControlInstanceMetrics::ResetMetrics() {
    if (protocol == nullptr) {
        Vor::Throw(yERROR_STATE, "No protocol implementation available for the metrics reset operation");
    }
    protocol->ResetMetrics();
}

const Vor::Properties::Structure& ControlInstanceMetrics::GetMetrics() const {
    if (protocol == nullptr) {
        Vor::Throw(yERROR_STATE, "No protocol implementation available for the metrics fetch operation");
    }
    return protocol->GetMetrics();
}

} // namespace VorControl
