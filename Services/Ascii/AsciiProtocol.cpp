#include "Services/Ascii/AsciiProtocol.h"

#include "Services/Ascii/AsciiSession.h"
#include "Services/Common/Translate.h"
#include "Vor/Exception.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "yApi/yStatus.h"

#include <chrono>
#include <utility>

namespace Services::Ascii {

using namespace VorControl::ControlProtocol;

namespace {

constexpr unsigned short FirstNumber = 0;
constexpr unsigned short LastNumber = 65534;
constexpr unsigned short MaxNames = 65535;

std::shared_ptr<ProtocolRegisterAssemblyBase> MakeAssembly() {
    auto assembly = std::make_shared<ProtocolRegisterAssemblyBase>(
        false, FirstNumber, LastNumber, "registerAssembly-0",
        IProtocolRegisterAssembly::DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME);
    assembly->AddSupportedBlockType(std::make_unique<DefaultMeasurementValueAndDecisionRegisterBlockInfo>());
    assembly->AddSupportedBlockType(std::make_unique<DefaultMeasurementValueRegisterBlockInfo>());
    assembly->AddSupportedBlockType(std::make_unique<DefaultMeasurementDecisionRegisterBlockInfo>());
    assembly->AddSupportedBlockType(std::make_unique<DefaultStampRegisterBlockInfo>());
    assembly->AddSupportedBlockType(std::make_unique<DefaultStringRegisterBlockInfo>(1));
    return assembly;
}

ValueKind KindOf(const std::string& type) {
    if (type == "Measurement") {
        return ValueKind::Measurement;
    }
    if (type == "MeasurementValue") {
        return ValueKind::Value;
    }
    if (type == "MeasurementDecision") {
        return ValueKind::Decision;
    }
    return type == "Stamp" ? ValueKind::Stamp : ValueKind::Text;
}

/// The document of a resource, on the main loop. Throws with a text for the client.
std::string DocumentOf(VorControl::IControlHost& host, const std::string& path) {
    std::string document;
    try {
        constexpr std::chrono::microseconds Limit = ResourceReader::DefaultTimeLimit;
        host.ReadResource(path, document, static_cast<unsigned long long>(Limit.count()));
    } catch (const Vor::Exception& e) {
        if (e.Status() == yERROR_NOT_FOUND) {
            Vor::Throw(yERROR_NOT_FOUND, "there is nothing to read at %s", path);
        }
        if (e.Status() == yERROR_BUSY) {
            Vor::Throw(yERROR_BUSY, "busy: another service reads a resource");
        }
        Vor::Throw(yERROR, "%s can't be read; the sensor's log says why", path);
    }
    return document;
}

} // namespace

AsciiProtocol::AsciiProtocol(const ControlProtocolEnviron& environ)
    : TcpService(environ)
    , properties("errors", Common::Translate("Errors"), "dropped")
    , params(std::make_shared<AsciiParams>())
    , assembly(MakeAssembly())
    , map(std::make_shared<TextIdStandardProtocolOutputMap>(MaxNames))
    , outputs(Counters())
    , handler(outputs, *this, Counters(), LineFormat())
    , commands({.host = GetControlHost(),
                .process = [this](const auto& command) { ProcessReceivedCommonCommands(command); },
                .beginOfTrigger = [this] { return BeginOfLastTrigger(); },
                .sources = [this] { return DataSourceList(); }})
    , reader([this](const std::string& path) { return DocumentOf(GetControlHost(), path); }, [this] { wakeup.Set(); }) {
    Init({.assemblies = {assembly}, .outputs = map},
         {.threadName = "AsciiNet", .params = params, .properties = properties, .wakeup = &wakeup});
}

AsciiProtocol::~AsciiProtocol() {
    CloseServer();
    StopOperationEndEvents();
}

std::unique_ptr<Net::ITcpSession> AsciiProtocol::MakeSession(bool mayWrite) {
    return std::make_unique<AsciiSession>(handler, mayWrite);
}

void AsciiProtocol::UpdateSessions() {
    handler.SetFormat(params->Format());
    handler.SetAllowsRead(params->allowRead.Get());
}

void AsciiProtocol::ParamsApplied() {
    outputs.SetFormat(params->Format());
    commands.SetTriggerTimeout(params->triggerTimeout.Time());
}

void AsciiProtocol::Stopped() {
    outputs.Reset();
    commands.Interrupt();
    reader.Stop();
}

void AsciiProtocol::ScanStateChangeImpl(bool started) {
    if (!started) {
        commands.Interrupt();
    }
}

void AsciiProtocol::PublishOutputs() {
    outputsChanging = false;
    outputs.Replace(Definitions());
    commands.Interrupt();
}

void AsciiProtocol::MapChanged() {
    if (!IsRunning()) {
        PublishOutputs();
        return;
    }
    outputsChanging = true;
    mainLoop.Run([this] {
        if (outputsChanging) {
            PublishOutputs();
        }
    });
}

std::vector<OutputDefinition> AsciiProtocol::Definitions() const {
    std::vector<OutputDefinition> definitions;
    {
        const AssemblyLock lock(*assembly);
        for (const auto& block : assembly->AddedRegisterBlocks()) {
            definitions.push_back({.id = std::to_string(block->OutputId()),
                                   .isBlock = true,
                                   .kind = KindOf(block->Type()),
                                   .dataSource = block->DataSource()});
        }
    }
    const OutputMapLock lock(*map);
    const auto& entries = map->OutputMap().map;
    for (unsigned long i = 0; i < entries.Count(); ++i) {
        definitions.push_back({.id = entries.At(i).outputId.Get(), .dataSource = entries.At(i).source.Get()});
    }
    return definitions;
}

bool AsciiProtocol::Run(const ControlRegisterCommandData& command, const std::shared_ptr<PendingAnswer>& answer) {
    return commands.Run(command, [this, answer](yStatus status) {
        const auto end = [this, answer, status] {
            answer->End(status);
            wakeup.Set();
        };
        if (outputsChanging) { // the answer to LOADJOB comes after the job's outputs are published
            mainLoop.Run(end);
        } else {
            end();
        }
    });
}

void AsciiProtocol::ReadState(const std::shared_ptr<PendingAnswer>& answer) {
    commands.ReadState([this, answer](const Common::SensorState& state) {
        if (state.status == yOK) {
            answer->isScanning = state.system->runState != 0;
            answer->job = state.system->loadedJob;
            answer->alignment = state.scanner->alignmentState;
            answer->isBusy = commands.IsBusy();
        }
        answer->End(state.status);
        wakeup.Set();
    });
}

bool AsciiProtocol::ReadResource(ReadTarget target, const std::shared_ptr<PendingAnswer>& answer) {
    return reader.Add(std::move(target), answer);
}

bool AsciiProtocol::ApplyResultSet(ResultSet set) {
    if (outputs.Process(set)) {
        wakeup.Set();
    }
    return true;
}

} // namespace Services::Ascii
