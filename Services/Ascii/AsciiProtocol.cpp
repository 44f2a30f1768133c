#include "Services/Ascii/AsciiProtocol.h"

#include "Services/Ascii/AsciiSession.h"
#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "yApi/yArrayList.h"

#include <thread>

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

} // namespace

AsciiProtocol::AsciiProtocol(const ControlProtocolEnviron& environ)
    : TcpService(environ)
    , params(std::make_shared<AsciiParams>())
    , assembly(MakeAssembly())
    , map(std::make_shared<TextIdStandardProtocolOutputMap>(MaxNames))
    , handler(outputs, *this, Counters(), LineFormat()) {
    Init({.assemblies = {assembly}, .outputs = map},
         {.threadName = "AsciiNet", .params = params, .properties = properties, .wakeup = &wakeup});
}

AsciiProtocol::~AsciiProtocol() {
    CloseServer();
    Vor::CleanUp([this] { StopOperationEndEvents(); });
}

std::unique_ptr<Net::ITcpSession> AsciiProtocol::MakeSession(bool mayWrite) {
    return std::make_unique<AsciiSession>(handler, mayWrite);
}

void AsciiProtocol::UpdateSessions() {
    handler.SetFormat(params->Format());
}

void AsciiProtocol::ParamsApplied() {
    outputs.SetFormat(params->Format());
}

void AsciiProtocol::Stopped() {
    outputs.Reset();
}

void AsciiProtocol::PublishOutputs() {
    outputsChanging = false;
    outputs.Replace(Definitions());
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

void AsciiProtocol::NonPersistentPropertiesBeginLock() {
    TcpService::NonPersistentPropertiesBeginLock();
    properties.dropped = outputs.Dropped();
}

bool AsciiProtocol::Run(const ControlRegisterCommandData& command, const std::shared_ptr<PendingAnswer>& answer) {
    {
        const std::lock_guard lock(commandMutex);
        if (running != nullptr || OperationInProgress()) {
            return false;
        }
        running = answer;
        runner = std::this_thread::get_id();
    }
    ProcessReceivedCommonCommands(command);
    const std::lock_guard lock(commandMutex);
    runner = {};
    return true;
}

void AsciiProtocol::OperationEndEventImpl(int status) {
    std::shared_ptr<PendingAnswer> ended;
    bool hasBegun = true;
    {
        const std::lock_guard lock(commandMutex);
        ended.swap(running);
        hasBegun = runner != std::this_thread::get_id();
    }
    if (ended == nullptr) {
        return;
    }
    const auto answer = [this, ended, hasBegun, status] {
        // A command that fails before it has begun was refused because another service's operation runs.
        ended->End(status == yERROR && !hasBegun ? yERROR_BUSY : status);
        wakeup.Set();
    };
    if (outputsChanging) { // the answer to LOADJOB comes after the job's outputs are published
        mainLoop.Run(answer);
    } else {
        answer();
    }
}

void AsciiProtocol::ReadState(const std::shared_ptr<PendingAnswer>& answer) {
    mainLoop.Run([this, answer] {
        yStatus status = yOK;
        try {
            const auto stats = GetControlHost().SystemStats(0);
            answer->isScanning = stats.runState != 0;
            answer->job = stats.loadedJob;
            answer->isBusy = OperationInProgress();
            answer->alignment = GetControlHost().ScannerInfo("", 0).alignmentState;
        } catch (const Vor::Exception& e) {
            status = e.Status();
        }
        answer->End(status);
        wakeup.Set();
    });
}

void AsciiProtocol::ProcessResultSets(void* resultSets) {
    const auto sets = static_cast<yArrayList>(resultSets);
    const std::size_t count = yArrayList_Count(sets);
    bool pushed = false;
    for (std::size_t i = 0; i < count; ++i) {
        pushed = outputs.Process(yArrayList_At(sets, i)) || pushed;
    }
    if (pushed) {
        wakeup.Set();
    }
}

} // namespace Services::Ascii
