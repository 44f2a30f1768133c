#pragma once

#include "VorApi/Event.h"
#include "VorApi/Params/Value.h"
#include "VorCommon/IProviderManager.h"
#include "VorControl/Control/ControlAvailableDeviceProp.h"
#include "VorScan/AlignCompletionStatus.h"
#include "VorScan/AlignState.h"
#include "yApi/yStatus.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace VorControl {

/// Access to the scan engines. Main loop only; other threads use the operations of IControlHost. An empty scanner id
/// means the first scanner of the first engine that has scanners. Failures are Vor::Exception: yERROR_STATE without
/// scan engines or provider, yERROR_NOT_FOUND without the engine or scanner, yERROR_UNIMPLEMENTED and yERROR_COMMAND
/// when the scanner doesn't offer the operation.
class IControlScanEngineInterface {
public:
    struct ScannerStateInfo {
        std::string id;
        /// NoEncoderValue when the scanner doesn't report it.
        std::int64_t currentEncoderValue = 0;
        /// Microseconds; NoSyncTime when the scanner doesn't report it.
        std::uint64_t currentSyncTime = 0;
        std::uint8_t alignmentState = 0; ///< a value of VorScan::AlignState
        bool laserEnabled = true;

        static constexpr std::int64_t NoEncoderValue = std::numeric_limits<std::int64_t>::min();
        static constexpr std::uint64_t NoSyncTime = std::numeric_limits<std::uint64_t>::max();
    };

    virtual void SoftwareTrigger(const std::string& scannerId) = 0;
    /// Starts an alignment; AlignmentCompletedEvent reports its end.
    virtual void Alignment(const std::string& scannerId) = 0;
    virtual void ClearAlignment(const std::string& scannerId) = 0;
    /// Does nothing when the default scanner can't blink.
    virtual void BlinkLed(bool ledBlinkEnabled, bool ledLightOn) = 0;
    virtual Vor::Event<VorScan::AlignCompletionStatus>& AlignmentCompletedEvent(const std::string& scannerId) = 0;
    virtual Vor::Event<>& AlignmentStateUpdatedEvent(const std::string& engineId) = 0;
    virtual Vor::Params::Value<VorScan::AlignState>& GetAlignmentState(const std::string& engineId) = 0;
    /// Leaves `out` as it is when the scanner doesn't report its state.
    virtual void ScannerInfo(const std::string& scannerId, ScannerStateInfo& out) = 0;
    virtual std::vector<ControlAvailableDeviceProp> FindAvailableSensors() = 0;
    /// Null when the engine has no digital outputs.
    virtual std::shared_ptr<VorCommon::IProviderManager<VorCommon::IDigitalOutputProvider>>
    GetDigitalOutputProviderManager(const std::string& engineId) = 0;
    virtual yStatus SetDigitalOutputState(std::shared_ptr<VorCommon::IDigitalOutputProvider> provider,
                                          unsigned long long outputId, bool state, long long time) = 0;
    virtual std::vector<std::string> GetScanEngineList() = 0;
    virtual bool IsScanEngineManagerValid() = 0;

protected:
    ~IControlScanEngineInterface() = default;
};

} // namespace VorControl
