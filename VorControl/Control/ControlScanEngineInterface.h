#pragma once

#include "Vor/Structure.h"
#include "VorApi/Params/Group.h"
#include "VorCommon/IActionTarget.h"
#include "VorCommon/ICommandTarget.h"
#include "VorControl/Control/IControlScanEngineInterface.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace VorScan::Internal {
class ScanEngineInstance;
class ScanEngineManager;
class ScannerInstance;
} // namespace VorScan::Internal

namespace VorControl {

/// A scanner id is looked for on the first engine that has scanners and on no other. An engine id is the type name of
/// an engine.
class ControlScanEngineInterface : public IControlScanEngineInterface {
public:
    /// The manager outlives the object; null means that there are no scan engines.
    explicit ControlScanEngineInterface(VorScan::Internal::ScanEngineManager* scanEngineManager);

    void SoftwareTrigger(const std::string& scannerId) override;
    void Alignment(const std::string& scannerId) override;
    void ClearAlignment(const std::string& scannerId) override;
    void BlinkLed(bool ledBlinkEnabled, bool ledLightOn) override;
    Vor::Event<VorScan::AlignCompletionStatus>& AlignmentCompletedEvent(const std::string& scannerId) override;
    Vor::Event<>& AlignmentStateUpdatedEvent(const std::string& engineId) override;
    Vor::Params::Value<VorScan::AlignState>& GetAlignmentState(const std::string& engineId) override;
    void ScannerInfo(const std::string& scannerId, ScannerStateInfo& out) override;
    std::vector<ControlAvailableDeviceProp> FindAvailableSensors() override;
    std::shared_ptr<VorCommon::IProviderManager<VorCommon::IDigitalOutputProvider>>
    GetDigitalOutputProviderManager(const std::string& engineId) override;
    yStatus SetDigitalOutputState(std::shared_ptr<VorCommon::IDigitalOutputProvider> provider,
                                  unsigned long long outputId, bool state, long long time) override;
    std::vector<std::string> GetScanEngineList() override;
    bool IsScanEngineManagerValid() override;

private:
    VorScan::Internal::ScanEngineManager* scanEngineManager;

    static VorScan::Internal::ScanEngineManager& Existing(VorScan::Internal::ScanEngineManager* manager);
    static VorScan::Internal::ScanEngineInstance& GetEngineInstance(VorScan::Internal::ScanEngineManager* manager);
    static VorScan::Internal::ScannerInstance& GetScannerInstance(VorScan::Internal::ScanEngineManager* manager,
                                                                  const std::string& scannerId);
    VorScan::Internal::ScanEngineInstance& GetScanEngineInstanceByEngineId(const std::string& engineId);
    VorScan::Internal::ScannerInstance& GetScannerInstanceByEngineId(const std::string& engineId);
    static VorCommon::IActionTarget& GetActionTarget(VorScan::Internal::ScannerInstance& scanner);
    static VorCommon::ICommandTarget& GetCommandTarget(VorScan::Internal::ScannerInstance& scanner);
    static bool IsGoodEngine(const VorScan::Internal::ScanEngineInstance& engine);
    static bool IsGoodScanner(const VorScan::Internal::ScannerInstance& scanner);
    static bool IsActionSupported(const VorCommon::IActionTarget& target, const std::string& name);
    static bool IsCommandSupported(const VorCommon::ICommandTarget& target, const std::string& name);
    static std::shared_ptr<Vor::Properties::Structure> ExistingActionParameters(VorCommon::IActionTarget& target,
                                                                                const std::string& name);
    void AlignmentCommandHelper(const std::string& scannerId, const std::string& actionName, const std::string& label);
    static std::uint8_t MapScannerAlignState(VorScan::AlignState state);
    static void ParseScannerInfo(const Vor::Params::Group& result, ScannerStateInfo& out);
};

} // namespace VorControl
