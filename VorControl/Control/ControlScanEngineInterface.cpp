#include "VorControl/Control/ControlScanEngineInterface.h"

#include "Vor/JsonSerializer.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Params/PropertyValue.h"
#include "VorScan/Internal/ScanEngineManager.h"
#include "yApi/yString.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace VorControl {

namespace {

using VorScan::Internal::ScanEngineInstance;
using VorScan::Internal::ScanEngineManager;
using VorScan::Internal::ScannerInstance;

const char* const ActionTrigger = "trigger";
const char* const ActionBlinkLed = "blinkLed";
const char* const ActionScannerInfo = "scannerInfo";

void SetFlag(const Vor::Properties::Structure& parameters, const char* name, bool value) {
    dynamic_cast<Vor::Properties::Value<bool>&>(parameters.At(name)) = value;
}

/// Null when the scanner doesn't report it.
const nlohmann::json* Reported(const nlohmann::json& result, const char* key) {
    if (!result.is_object() || !result.contains(key) || result.at(key).is_null()) {
        return nullptr;
    }
    return &result.at(key);
}

} // namespace

ControlScanEngineInterface::ControlScanEngineInterface(ScanEngineManager* scanEngineManager)
    : scanEngineManager(scanEngineManager) {}

void ControlScanEngineInterface::SoftwareTrigger(const std::string& scannerId) {
    try {
        ScannerInstance& scanner = GetScannerInstance(scanEngineManager, scannerId);
        VorCommon::IActionTarget& target = GetActionTarget(scanner);
        Vor::LogInfo("Attempting software trigger for scanner %s", scanner.Id());
        if (!IsActionSupported(target, ActionTrigger)) {
            Vor::Throw(yERROR_COMMAND, "Software trigger operation is not supported by scanner %s", scanner.Id());
        }
        target.ExecuteAction(ActionTrigger, ExistingActionParameters(target, ActionTrigger));
    } catch (const Vor::Exception& e) {
        Vor::LogThrown(e, "Failed to initiate software trigger operation for scanner %s", scannerId);
        throw;
    }
}

void ControlScanEngineInterface::Alignment(const std::string& scannerId) {
    AlignmentCommandHelper(scannerId, "align", "alignment");
}

void ControlScanEngineInterface::ClearAlignment(const std::string& scannerId) {
    AlignmentCommandHelper(scannerId, "clearAlign", "clear alignment");
}

void ControlScanEngineInterface::AlignmentCommandHelper(const std::string& scannerId, const std::string& actionName,
                                                        const std::string& label) {
    try {
        ScannerInstance& scanner = GetScannerInstance(scanEngineManager, scannerId);
        VorCommon::ICommandTarget& target = GetCommandTarget(scanner);
        Vor::LogInfo("Attempting %s for scanner %s", label, scanner.Id());
        if (!IsCommandSupported(target, actionName)) {
            Vor::Throw(yERROR_COMMAND, "No support for %s by scanner %s", label, scanner.Id());
        }
        const auto parameters = target.GetCommandParams(actionName);
        if (!parameters) {
            Vor::Throw(yERROR_PARAMETER);
        }
        target.InvokeCommand(actionName, *parameters);
    } catch (const Vor::Exception& e) {
        Vor::LogThrown(e, "Failed %s for scanner %s", label, scannerId);
        throw;
    }
}

void ControlScanEngineInterface::BlinkLed(bool ledBlinkEnabled, bool ledLightOn) {
    VorCommon::IActionTarget& target = GetActionTarget(GetScannerInstance(scanEngineManager, std::string()));
    if (!IsActionSupported(target, ActionBlinkLed)) {
        return;
    }
    const auto parameters = ExistingActionParameters(target, ActionBlinkLed);
    SetFlag(*parameters, "ledBlinkEnabled", ledBlinkEnabled);
    SetFlag(*parameters, "ledLightOn", ledLightOn);
    target.ExecuteAction(ActionBlinkLed, parameters);
}

Vor::Event<VorScan::AlignCompletionStatus>&
ControlScanEngineInterface::AlignmentCompletedEvent(const std::string& scannerId) {
    try {
        return GetScannerInstance(scanEngineManager, scannerId).Scanner().AlignmentCompletedEvent();
    } catch (const Vor::Exception& e) {
        Vor::LogError("Failed to get alignment complete event for scanner %s", scannerId);
        Vor::Exception::LogException(e);
        throw;
    }
}

Vor::Event<>& ControlScanEngineInterface::AlignmentStateUpdatedEvent(const std::string& engineId) {
    return GetScannerInstanceByEngineId(engineId).ScannerAlignStateUpdatedEvent();
}

Vor::Params::Value<VorScan::AlignState>& ControlScanEngineInterface::GetAlignmentState(const std::string& engineId) {
    return GetScannerInstanceByEngineId(engineId).Scanner().AlignmentState();
}

void ControlScanEngineInterface::ScannerInfo(const std::string& scannerId, ScannerStateInfo& out) {
    ScannerInstance& scanner = GetScannerInstance(scanEngineManager, scannerId);
    VorCommon::IActionTarget& target = GetActionTarget(scanner);
    if (!IsActionSupported(target, ActionScannerInfo)) {
        return;
    }
    const auto result = target.ExecuteAction(ActionScannerInfo, ExistingActionParameters(target, ActionScannerInfo));
    if (!result) {
        Vor::Throw(yERROR_FORMAT);
    }
    out.id = scanner.Id();
    out.alignmentState = MapScannerAlignState(scanner.Scanner().AlignmentState().Get());
    ParseScannerInfo(*result, out);
}

std::vector<ControlAvailableDeviceProp> ControlScanEngineInterface::FindAvailableSensors() {
    std::vector<ControlAvailableDeviceProp> found;
    if (scanEngineManager == nullptr) {
        return found;
    }
    for (const std::string& name : scanEngineManager->List()) {
        const auto manager = GetDigitalOutputProviderManager(name);
        if (!manager) {
            continue;
        }
        for (const auto& [providerId, weakProvider] : manager->Providers()) {
            if (const auto provider = weakProvider.lock()) {
                const VorCommon::IDeviceProvider& device = provider->Device();
                found.push_back({.device = provider,
                                 .engineId = name,
                                 .deviceModel = device.Model(),
                                 .serialNumber = device.SerialNumber(),
                                 .providerId = providerId,
                                 .deviceStatus = device.Status()});
            }
        }
    }
    return found;
}

std::shared_ptr<VorCommon::IProviderManager<VorCommon::IDigitalOutputProvider>>
ControlScanEngineInterface::GetDigitalOutputProviderManager(const std::string& engineId) {
    using Manager = VorCommon::IProviderManager<VorCommon::IDigitalOutputProvider>;
    const auto& services = GetScanEngineInstanceByEngineId(engineId).Engine().Services();
    const auto entry = services.find(&typeid(Manager));
    return entry == services.end() ? nullptr : std::static_pointer_cast<Manager>(entry->second.lock());
}

yStatus ControlScanEngineInterface::SetDigitalOutputState(std::shared_ptr<VorCommon::IDigitalOutputProvider> provider,
                                                          unsigned long long outputId, bool state, long long time) {
    if (!provider) {
        Vor::Throw(yERROR_STATE);
    }
    return provider->SetOutputState(outputId, state, time);
}

std::vector<std::string> ControlScanEngineInterface::GetScanEngineList() {
    return Existing(scanEngineManager).List();
}

bool ControlScanEngineInterface::IsScanEngineManagerValid() {
    return scanEngineManager != nullptr;
}

ScanEngineManager& ControlScanEngineInterface::Existing(ScanEngineManager* manager) {
    if (manager == nullptr) {
        Vor::Throw(yERROR_STATE, "Scan engine manager reference is uninitialized.");
    }
    return *manager;
}

ScanEngineInstance& ControlScanEngineInterface::GetEngineInstance(ScanEngineManager* manager) {
    const auto names = Existing(manager).List();
    if (names.empty()) {
        Vor::Throw(yERROR_NOT_FOUND, "No scan engines found");
    }
    for (const std::string& name : names) {
        ScanEngineInstance& engine = manager->GetInstance(name);
        if (IsGoodEngine(engine)) {
            return engine;
        }
    }
    Vor::Throw(yERROR_NOT_FOUND, "No usable scan engines found");
}

ScannerInstance& ControlScanEngineInterface::GetScannerInstance(ScanEngineManager* manager,
                                                                const std::string& scannerId) {
    ScanEngineInstance& engine = GetEngineInstance(manager);
    if (!scannerId.empty()) {
        return engine.FindScanner(scannerId);
    }
    const auto scanners = engine.ListScanners();
    if (scanners.empty()) {
        Vor::Throw(yERROR_NOT_FOUND, "No scanners found for scan engine <%s>", engine.Id());
    }
    return engine.FindScanner(scanners.front());
}

ScanEngineInstance& ControlScanEngineInterface::GetScanEngineInstanceByEngineId(const std::string& engineId) {
    for (const std::string& name : Existing(scanEngineManager).List()) {
        ScanEngineInstance& engine = scanEngineManager->GetInstance(name);
        if (engine.Info().TypeName() == engineId) {
            return engine;
        }
    }
    Vor::Throw(yERROR_NOT_FOUND);
}

ScannerInstance& ControlScanEngineInterface::GetScannerInstanceByEngineId(const std::string& engineId) {
    const auto names = Existing(scanEngineManager).List();
    if (names.empty()) {
        Vor::Throw(yERROR_NOT_FOUND, "No scan engines found.");
    }
    for (const std::string& name : names) {
        ScanEngineInstance& engine = scanEngineManager->GetInstance(name);
        if (engine.Info().TypeName() != engineId) {
            continue;
        }
        for (const std::string& scannerId : engine.ListScanners()) {
            ScannerInstance& scanner = engine.FindScanner(scannerId);
            if (IsGoodScanner(scanner)) {
                return scanner;
            }
        }
    }
    Vor::Throw(yERROR_NOT_FOUND);
}

VorCommon::IActionTarget& ControlScanEngineInterface::GetActionTarget(ScannerInstance& scanner) {
    VorCommon::IActionTarget* const target = scanner.Scanner().ActionTarget();
    if (target == nullptr) {
        Vor::Throw(yERROR_UNIMPLEMENTED, "No actions supported by scanner %s", scanner.Id());
    }
    return *target;
}

VorCommon::ICommandTarget& ControlScanEngineInterface::GetCommandTarget(ScannerInstance& scanner) {
    VorCommon::ICommandTarget* const target = scanner.CommandTarget();
    if (target == nullptr) {
        Vor::Throw(yERROR_UNIMPLEMENTED, "No commands supported by scanner %s", scanner.Id());
    }
    return *target;
}

bool ControlScanEngineInterface::IsGoodEngine(const ScanEngineInstance& engine) {
    return !engine.ListScanners().empty();
}

bool ControlScanEngineInterface::IsGoodScanner(const ScannerInstance& scanner) {
    return !scanner.ListSensors().empty();
}

bool ControlScanEngineInterface::IsActionSupported(const VorCommon::IActionTarget& target, const std::string& name) {
    return std::ranges::any_of(target.Actions(), [&](const VorCommon::ActionInfo& info) {
        return yStrEquals(info.Id().c_str(), name.c_str());
    });
}

bool ControlScanEngineInterface::IsCommandSupported(const VorCommon::ICommandTarget& target, const std::string& name) {
    return std::ranges::any_of(target.ListCommands(), [&](const VorCommon::CommandInfo& info) {
        return yStrEquals(info.Id().c_str(), name.c_str());
    });
}

std::shared_ptr<Vor::Properties::Structure>
ControlScanEngineInterface::ExistingActionParameters(VorCommon::IActionTarget& target, const std::string& name) {
    auto parameters = target.ActionParameters(name);
    if (!parameters) {
        Vor::Throw(yERROR_PARAMETER, "Action parameters returned a nullptr.");
    }
    return parameters;
}

std::uint8_t ControlScanEngineInterface::MapScannerAlignState(VorScan::AlignState state) {
    const auto value = static_cast<std::uint32_t>(state);
    if (value >= 3) {
        Vor::LogError("The scan align state %u read from scanner is invalid", value);
        return 0;
    }
    return static_cast<std::uint8_t>(value);
}

void ControlScanEngineInterface::ParseScannerInfo(const Vor::Params::Group& result, ScannerStateInfo& out) {
    try {
        const nlohmann::json json = Vor::Properties::JsonSerializer::Serialize(result);
        const auto* const laserEnabled = Reported(json, "laserEnabled");
        out.laserEnabled = laserEnabled == nullptr || laserEnabled->get<bool>();
        const auto* const encoder = Reported(json, "currentEncoderValue");
        out.currentEncoderValue = encoder != nullptr ? encoder->get<std::int64_t>() : ScannerStateInfo::NoEncoderValue;
        const auto* const ticks = Reported(json, "currentSyncTime");
        // 1024 ticks are 1000 microseconds.
        out.currentSyncTime =
            ticks != nullptr ? (ticks->get<std::uint64_t>() * 1000) >> 10 : ScannerStateInfo::NoSyncTime;
    } catch (const nlohmann::json::exception&) {
        Vor::ThrowNested(yERROR_FORMAT);
    }
}

} // namespace VorControl
