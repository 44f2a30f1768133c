#include "Sensor/Scan/ScannerAlignment.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"

namespace Sensor::Scan {

namespace {

const std::string AlignId = "align";
const std::string ClearAlignId = "clearAlign";

[[noreturn]] void FailUnknown(const std::string& id) {
    Vor::Throw(yERROR_NOT_FOUND, "The scanner has no command '%s'.", id);
}

} // namespace

ScannerAlignment::ScannerAlignment(Settings settings)
    : settings(settings)
    , timer([this](Vor::AsyncTimer&) {
        if (this->settings.outcome == AlignOutcome::Succeed) {
            Complete(VorScan::AlignCompletionStatus::Succeeded);
        } else {
            Fail("the sensor was started with failing alignments");
        }
    }) {}

std::vector<VorCommon::CommandInfo> ScannerAlignment::ListCommands() const {
    return {{AlignId, "Align"}, {ClearAlignId, "Clear alignment"}};
}

std::shared_ptr<Vor::Params::Group> ScannerAlignment::GetCommandParams(const std::string& id) const {
    if (id != AlignId && id != ClearAlignId) {
        FailUnknown(id);
    }
    return std::make_shared<Vor::Params::Group>();
}

std::shared_ptr<Vor::Params::Group> ScannerAlignment::InvokeCommand(const std::string& id, Vor::Params::Group&) {
    if (id == AlignId) {
        Begin();
    } else if (id == ClearAlignId) {
        Clear();
    } else {
        FailUnknown(id);
    }
    return std::make_shared<Vor::Params::Group>();
}

bool ScannerAlignment::IsCommandSupported(const std::string& id) {
    return id == AlignId || id == ClearAlignId;
}

void ScannerAlignment::Begin() {
    if (CurrentState() == VorScan::AlignState::Aligning) {
        Vor::Throw(yERROR_BUSY, "The scanner is aligning already.");
    }
    if (settings.outcome != AlignOutcome::Never) {
        const auto time = std::chrono::duration_cast<std::chrono::microseconds>(settings.time);
        timer.Start(static_cast<unsigned long long>(time.count()), true);
    }
    ChangeState(VorScan::AlignState::Aligning);
}

void ScannerAlignment::Clear() {
    if (CurrentState() == VorScan::AlignState::Aligning) {
        timer.Stop();
        Fail("it was cleared before its end");
    } else if (CurrentState() == VorScan::AlignState::Aligned) {
        ChangeState(VorScan::AlignState::NotAligned);
    }
}

void ScannerAlignment::Fail(const char* reason) {
    Vor::LogUser(Vor::UserWarning, "VorScan", "The alignment has failed: %1$s.", reason);
    Complete(VorScan::AlignCompletionStatus::Failed);
}

void ScannerAlignment::Complete(VorScan::AlignCompletionStatus status) {
    ChangeState(status == VorScan::AlignCompletionStatus::Succeeded ? VorScan::AlignState::Aligned
                                                                    : VorScan::AlignState::NotAligned);
    completed.Raise(status);
}

void ScannerAlignment::ChangeState(VorScan::AlignState value) {
    state = value;
    if (stateUpdated) {
        stateUpdated();
    }
}

} // namespace Sensor::Scan
