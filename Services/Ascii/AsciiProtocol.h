#pragma once

#include "Net/Wakeup.h"
#include "Services/Ascii/AsciiParams.h"
#include "Services/Ascii/ISensor.h"
#include "Services/Ascii/Outputs.h"
#include "Services/Ascii/RequestHandler.h"
#include "Services/Ascii/ResourceReader.h"
#include "Services/Common/SensorCommands.h"
#include "Services/Common/TcpService.h"
#include "Vor/AsyncRunner.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <atomic>
#include <memory>
#include <vector>

namespace Services::Ascii {

/// The service that exchanges lines of text over TCP. Clients request the blocks of one register assembly,
/// "registerAssembly-0", by their numbers, and the entries of an output map by their names. Assembly, map and
/// parameters are saved in the job.
class AsciiProtocol : public Common::TcpService, private ISensor {
public:
    explicit AsciiProtocol(const VorControl::ControlProtocol::ControlProtocolEnviron& environ);
    ~AsciiProtocol() override;

    void OnLoadBegin() override { commands.Interrupt(); }

protected:
    std::unique_ptr<Net::ITcpSession> MakeSession(bool mayWrite) override;
    void UpdateSessions() override;
    void ParamsApplied() override;
    /// Makes the current blocks and map entries the outputs of the clients: while the service runs, on the main loop
    /// after all changes of the present load.
    void MapChanged() override;
    void Stopped() override;
    bool ApplyResultSet(ResultSet set) override;
    void ResultSetsApplied(void* resultSets) override { commands.ResultsHeld(resultSets); }
    void OperationEndEventImpl(int status) override { commands.OperationEnded(status); }
    void ScanStateChangeImpl(bool started) override;

private:
    bool Run(const VorControl::ControlProtocol::ControlRegisterCommandData& command,
             const std::shared_ptr<PendingAnswer>& answer) override;
    void ReadState(const std::shared_ptr<PendingAnswer>& answer) override;
    bool ReadResource(ReadTarget target, const std::shared_ptr<PendingAnswer>& answer) override;

    void PublishOutputs();
    std::vector<OutputDefinition> Definitions() const;

    Common::TcpServerProperties properties;
    const std::shared_ptr<AsciiParams> params;
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterAssemblyBase> assembly;
    const std::shared_ptr<VorControl::ControlProtocol::TextIdStandardProtocolOutputMap> map;
    Ascii::Outputs outputs;
    Net::Wakeup wakeup;
    RequestHandler handler; ///< belongs to the network thread
    /// Whether changed outputs wait to be published on the main loop. Until then clients have the former ones: the load
    /// of a job changes the outputs several times.
    std::atomic<bool> outputsChanging{false};
    Vor::AsyncRunner mainLoop;
    Common::SensorCommands commands;
    ResourceReader reader;
};

} // namespace Services::Ascii
