#pragma once

#include "Sensor/Scan/ScannerState.h"
#include "VorCommon/IActionTarget.h"

#include <functional>

namespace Sensor::Scan {

/// The actions of the virtual scanner, for the main loop:
/// - "trigger" publishes one frame.
/// - "blinkLed" has the parameters "ledBlinkEnabled" and "ledLightOn", both Vor::Properties::Value<bool>.
/// - "scannerInfo" returns "laserEnabled", true while scanning; "currentEncoderValue", that of the last frame;
///   "currentSyncTime", the time since the scan started in 1024ths of a millisecond, rounded up, so that
///   (value * 1000) >> 10 is the number of whole microseconds.
class ScannerActions : public VorCommon::IActionTarget {
public:
    /// What the actions call. Exceptions are passed on. None may be empty.
    struct Environ {
        std::function<void()> trigger;
        std::function<void(bool ledBlinkEnabled, bool ledLightOn)> blinkLed;
        std::function<ScannerState()> state;
    };

    explicit ScannerActions(Environ environ);

    std::vector<VorCommon::ActionInfo> Actions() const override;
    bool HasAction(const std::string& id) const override;
    /// Null for an unknown action.
    std::shared_ptr<Vor::Properties::Structure> ActionParameters(const std::string& id) override;
    /// The result of "trigger" and "blinkLed" is empty. Throws yERROR_NOT_FOUND for an unknown action and
    /// yERROR_PARAMETER for missing or invalid parameters of "blinkLed".
    std::shared_ptr<Vor::Params::Group>
    ExecuteAction(const std::string& id, const std::shared_ptr<Vor::Properties::Structure>& params) override;

private:
    void BlinkLed(const Vor::Properties::Structure* params) const;

    const Environ environ;
};

} // namespace Sensor::Scan
