#include "Services/Common/Registers/StateRecords.h"

#include <algorithm>

namespace Services::Common {

using namespace VorControl;
using namespace VorControl::ControlProtocol;

DefaultSystemStateData SystemState(const IControlSystemInterface::SystemStats& stats) {
    DefaultSystemStateData state;
    state.stateValue = stats.coreMetric0;
    state.firstStateByte = stats.runState;
    state.thirdStateByte = static_cast<std::uint8_t>(std::min<std::uint64_t>(stats.coreMetric1, 100));
    const std::size_t length = std::min(stats.loadedJob.size(), state.jobFileName.size());
    state.jobFileNameLength = static_cast<std::uint8_t>(length);
    std::copy_n(stats.loadedJob.begin(), length, state.jobFileName.begin());
    return state;
}

DefaultScannerStateData ScannerState(const IControlScanEngineInterface::ScannerStateInfo& info) {
    DefaultScannerStateData state;
    state.signedScannerValue = info.currentEncoderValue;
    state.unsignedScannerValue = info.currentSyncTime;
    state.firstScannerByte = info.alignmentState;
    state.secondScannerByte = info.laserEnabled;
    return state;
}

} // namespace Services::Common
