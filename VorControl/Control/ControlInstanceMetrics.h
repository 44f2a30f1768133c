#pragma once

#include "VorCommon/IMetricsKeeper.h"
#include "VorCommon/IMetricsSource.h"

namespace VorControl {

namespace ControlProtocol {
class IProtocol;
}

/// The figures of a service as an object that stays, however long the service lives. Main loop only.
class ControlInstanceMetrics : public VorCommon::IMetricsKeeper, public VorCommon::IMetricsSource {
public:
    /// The three operations of the interfaces throw yERROR_STATE while no service is bound.
    void UpdateMetrics() override;
    void ResetMetrics() override;
    const Vor::Properties::Structure& GetMetrics() const override;

    /// The service must live until it is cleared.
    void BindProtocol(ControlProtocol::IProtocol* service) { protocol = service; }
    void ClearProtocol() { protocol = nullptr; }

private:
    ControlProtocol::IProtocol* protocol = nullptr;
};

} // namespace VorControl
