#include "Sensor/Scan/ScannerActions.h"

#include "Vor/Exception.h"
#include "VorApi/Params/PropertyValue.h"
#include "VorApi/Params/Value.h"

#include <utility>

namespace Sensor::Scan {

namespace {

const std::string TriggerId = "trigger";
const std::string BlinkLedId = "blinkLed";
const std::string ScannerInfoId = "scannerInfo";

constexpr const char* BlinkEnabledKey = "ledBlinkEnabled";
constexpr const char* LightOnKey = "ledLightOn";

/// The parameters of an action that has none.
class NoParameters : public Vor::Properties::Structure {
public:
    NoParameters()
        : Structure(true) {}
};

class BlinkLedParameters : public Vor::Properties::Structure {
public:
    BlinkLedParameters()
        : Structure(true) {
        Register(BlinkEnabledKey, ledBlinkEnabled);
        Register(LightOnKey, ledLightOn);
    }

private:
    Vor::Properties::Value<bool> ledBlinkEnabled;
    Vor::Properties::Value<bool> ledLightOn;
};

class ScannerInfoResult : public Vor::Params::Group {
public:
    explicit ScannerInfoResult(const ScannerState& state)
        : laserEnabled(state.scanning)
        , currentEncoderValue(state.encoder)
        , currentSyncTime((state.time * 1024 + 999) / 1000) {
        Register("laserEnabled", laserEnabled);
        Register("currentEncoderValue", currentEncoderValue);
        Register("currentSyncTime", currentSyncTime);
    }

private:
    Vor::Params::Value<bool> laserEnabled;
    Vor::Params::Value<long long> currentEncoderValue;
    Vor::Params::Value<unsigned long long> currentSyncTime;
};

bool ReadBool(const Vor::Properties::Structure& params, const char* key) {
    const auto* const value = dynamic_cast<const Vor::Properties::Value<bool>*>(params.Find(key));
    if (value == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "The action '%s' needs the parameter '%s'.", BlinkLedId, key);
    }
    return value->Get();
}

} // namespace

ScannerActions::ScannerActions(Environ environ)
    : environ(std::move(environ)) {}

std::vector<VorCommon::ActionInfo> ScannerActions::Actions() const {
    return {{TriggerId, "Trigger"}, {BlinkLedId, "Blink LED"}, {ScannerInfoId, "Scanner info"}};
}

bool ScannerActions::HasAction(const std::string& id) const {
    return id == TriggerId || id == BlinkLedId || id == ScannerInfoId;
}

std::shared_ptr<Vor::Properties::Structure> ScannerActions::ActionParameters(const std::string& id) {
    if (id == BlinkLedId) {
        return std::make_shared<BlinkLedParameters>();
    }
    return HasAction(id) ? std::make_shared<NoParameters>() : nullptr;
}

std::shared_ptr<Vor::Params::Group>
ScannerActions::ExecuteAction(const std::string& id, const std::shared_ptr<Vor::Properties::Structure>& params) {
    if (id == ScannerInfoId) {
        return std::make_shared<ScannerInfoResult>(environ.state());
    }
    if (id == TriggerId) {
        environ.trigger();
    } else if (id == BlinkLedId) {
        BlinkLed(params.get());
    } else {
        Vor::Throw(yERROR_NOT_FOUND, "The scanner has no action '%s'.", id);
    }
    return std::make_shared<Vor::Params::Group>();
}

void ScannerActions::BlinkLed(const Vor::Properties::Structure* params) const {
    if (params == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "The action '%s' needs its parameters.", BlinkLedId);
    }
    const bool ledBlinkEnabled = ReadBool(*params, BlinkEnabledKey);
    const bool ledLightOn = ReadBool(*params, LightOnKey);
    environ.blinkLed(ledBlinkEnabled, ledLightOn);
}

} // namespace Sensor::Scan
