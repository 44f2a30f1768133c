#pragma once

#include "Sensor/Scan/AlignOutcome.h"
#include "Vor/AsyncTimer.h"
#include "VorApi/Event.h"
#include "VorApi/Params/Value.h"
#include "VorCommon/ICommandTarget.h"
#include "VorScan/AlignCompletionStatus.h"
#include "VorScan/AlignState.h"

#include <chrono>
#include <functional>
#include <utility>

namespace Sensor::Scan {

/// The alignment of the virtual scanner with its commands "align" and "clearAlign", which have no parameters and an
/// empty result. For the main loop, where all events are raised. The end of an alignment sets the state, calls
/// `stateUpdated`, and raises the completed event, in this order.
class ScannerAlignment : public VorCommon::ICommandTarget {
public:
    struct Settings {
        /// How long an alignment takes. With 0 it ends in the next turn of the loop.
        std::chrono::milliseconds time{1000};
        AlignOutcome outcome = AlignOutcome::Succeed;
    };

    explicit ScannerAlignment(Settings settings);

    /// Sets a function that is called after each change of the state.
    void SetStateUpdated(std::function<void()> function) { stateUpdated = std::move(function); }

    VorScan::AlignState CurrentState() const { return state.Get(); }
    Vor::Params::Value<VorScan::AlignState>& State() { return state; }
    Vor::Event<VorScan::AlignCompletionStatus>& CompletedEvent() { return completed; }

    std::vector<VorCommon::CommandInfo> ListCommands() const override;
    /// Throws yERROR_NOT_FOUND for an unknown command.
    std::shared_ptr<Vor::Params::Group> GetCommandParams(const std::string& id) const override;
    /// "align" begins an alignment and returns; it throws yERROR_BUSY while one runs. "clearAlign" sets the
    /// state to not aligned; a running alignment fails before the call returns. Throws yERROR_NOT_FOUND for
    /// an unknown command.
    std::shared_ptr<Vor::Params::Group> InvokeCommand(const std::string& id, Vor::Params::Group& params) override;
    bool IsCommandSupported(const std::string& id) override;

private:
    void Begin();
    void Clear();
    void Fail(const char* reason);
    void Complete(VorScan::AlignCompletionStatus status);
    void ChangeState(VorScan::AlignState value);

    const Settings settings;
    Vor::Params::Value<VorScan::AlignState> state;
    Vor::Event<VorScan::AlignCompletionStatus> completed;
    std::function<void()> stateUpdated;
    Vor::AsyncTimer timer;
};

} // namespace Sensor::Scan
