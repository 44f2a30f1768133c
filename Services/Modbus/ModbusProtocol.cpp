#include "Services/Modbus/ModbusProtocol.h"

#include "Services/Common/Translate.h"
#include "Services/Modbus/StateRecords.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorControl/ControlProtocol/RegisterBlockParams.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "yApi/yArrayList.h"

namespace Services::Modbus {

using VorCommon::PersistDomain;
using VorControl::IControlHost;
using namespace VorControl::ControlProtocol;

namespace {

constexpr unsigned short FirstRegister = 0;
constexpr unsigned short LastRegister = 65534;
constexpr const char* AssemblyVersion = "1";

/// A state that can't be read leaves the last one in the registers.
template <class Work>
void IgnoreFailure(const Work& work) {
    try {
        work();
    } catch (const Vor::Exception&) {
        return;
    }
}

std::shared_ptr<ProtocolRegisterAssemblyBase> MakeAssembly() {
    auto assembly = std::make_shared<ProtocolRegisterAssemblyBase>(
        true, FirstRegister, LastRegister, "registerAssembly-0",
        IProtocolRegisterAssembly::DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME);
    AddScanBlockTypes(*assembly);
    AddControlBlockTypes(*assembly);
    return assembly;
}

/// Big endian: the client's registers arrive high byte first.
BlockType MakeCommandType() {
    BlockType type = MakeControlInputType();
    type->SetIsProtocolBigEndian(true);
    return type;
}

} // namespace

ModbusProtocol::ModbusProtocol(const ControlProtocolEnviron& environ)
    : ProtocolBase(environ)
    , assembly(MakeAssembly())
    , control(image, *this)
    , registers(assembly, image, control)
    , commandType(MakeCommandType())
    , commandBlock(commandType->ConstructBlock(RegisterBlockParams())) {
    assemblies->Add(assembly);
    Init({.nonPersistentProperties = &properties, .params = params.get(), .registerAssemblyGroup = assemblies.get()});
    provider->RegisterParams(PersistDomain::Job);
    provider->RegisterRegisterAssemblyGroup(PersistDomain::Job);
}

ModbusProtocol::~ModbusProtocol() {
    server.reset();
    Vor::CleanUp([this] { StopOperationEndEvents(); });
}

void ModbusProtocol::Start() {
    UpdateProtocolStatus(ProtocolStatus::Starting);
    try {
        Close();
        Open();
    } catch (const std::exception& e) {
        server.reset();
        SetProperties("", e.what());
        UpdateStatusAndRethrow(e, ProtocolStatus::FailedToStart);
    }
    UpdateProtocolStatus(ProtocolStatus::Running);
}

void ModbusProtocol::Stop() {
    UpdateProtocolStatus(ProtocolStatus::Stopping);
    try {
        Close();
    } catch (const std::exception& e) {
        UpdateStatusAndRethrow(e, ProtocolStatus::FailedToStop);
    }
    UpdateProtocolStatus(ProtocolStatus::Stopped);
}

void ModbusProtocol::Open() {
    const ServerSettings settings = params->Settings();
    assembly->ChangeBigEndianSupportedBlocks(params->IsBigEndian());
    registers.Rebuild();
    counters.Reset();
    server = std::make_unique<ModbusServer>(control, counters, settings, [this] { ReadStates(); });
    GetControlHost().UpdateScanResultsOutputMap(Id(), DataSourceList());
    GetControlHost().SetScanResultsFiltering(Id(), true);
    SetForwardScanResultsToProtocol(true);
    SetProperties(server->Url(), "");
    SetIsRunning(true);
}

void ModbusProtocol::Close() {
    if (!IsRunning()) {
        return;
    }
    SetIsRunning(false);
    server.reset();
    registers.ForgetValues();
    SetProperties("", "");
    SetForwardScanResultsToProtocol(false);
}

void ModbusProtocol::SetProperties(const std::string& address, const std::string& failure) {
    const PropertiesLock lock(*this);
    properties.address = address;
    properties.failure = failure;
}

std::shared_ptr<Vor::Params::Group> ModbusProtocol::Params(PersistDomain domain) const {
    return domain == PersistDomain::Job ? params : nullptr;
}

const char* ModbusProtocol::ParamsVersion(PersistDomain domain) const {
    return domain == PersistDomain::Job ? ParamsVersion() : nullptr;
}

std::shared_ptr<IProtocolRegisterAssemblyGroup> ModbusProtocol::RegisterAssemblyGroup(PersistDomain domain) {
    return domain == PersistDomain::Job ? assemblies : nullptr;
}

const char* ModbusProtocol::RegisterAssemblyVersion(PersistDomain domain, const char* assemblyId) {
    return domain == PersistDomain::Job && HasRegisterAssembly(assemblyId) ? AssemblyVersion : nullptr;
}

std::shared_ptr<VorControl::Providers::IControlPersistenceProvider> ModbusProtocol::PersistenceProvider() {
    return provider;
}

void ModbusProtocol::ParamsReset() {
    params->Reset();
}

void ModbusProtocol::ParamsResetImpl(PersistDomain domain) {
    if (domain == PersistDomain::Job) {
        ParamsReset();
    }
}

std::shared_ptr<Vor::Params::Group> ModbusProtocol::BeginUpdateParamsImpl(PersistDomain domain, const char*) {
    paramsUpdated = false;
    return Params(domain);
}

void ModbusProtocol::EndUpdateParamsImpl(PersistDomain, const char*) {
    if (paramsUpdated) {
        return;
    }
    try {
        ParamsUpdate();
    } catch (const std::exception& e) {
        Vor::LogUser(Vor::UserError, "VorControl", Common::Translate("%1$s can't take its parameters: %2$s."),
                     DisplayName(), e.what());
    }
}

void ModbusProtocol::ParamsUpdate() {
    paramsUpdated = true;
    if (!IsRunning()) {
        return;
    }
    const ServerSettings settings = params->Settings();
    try {
        server->Update(settings);
    } catch (const std::exception& e) {
        if (server->IsListening()) {
            SetProperties(server->Url(), e.what());
            throw;
        }
        Close();
        SetProperties("", e.what());
        UpdateStatusAndRethrow(e, ProtocolStatus::FailedToStart);
    }
    SetProperties(server->Url(), "");
    assembly->ChangeBigEndianSupportedBlocks(params->IsBigEndian());
    registers.Rebuild();
}

void ModbusProtocol::ConfigureDefaultRegisterAssembly() {
    RegisterAssemblyGroupReset(PersistDomain::Job);
}

void ModbusProtocol::RegisterAssemblyGroupResetImpl(PersistDomain domain) {
    if (domain == PersistDomain::Job) {
        assembly->InitDefaultRegisterBlocksForRegisterAssembly();
        registers.Rebuild();
    }
}

std::shared_ptr<IProtocolRegisterAssembly>
ModbusProtocol::BeginUpdateRegisterAssemblyImpl(PersistDomain domain, const char* assemblyId, const char*) {
    return domain == PersistDomain::Job && HasRegisterAssembly(assemblyId) ? assembly : nullptr;
}

// Until now clients have read the former map.
void ModbusProtocol::EndUpdateRegisterAssemblyImpl(PersistDomain, const char*, const char*) {
    registers.Rebuild();
}

void ModbusProtocol::RegisterAssemblyUpdate(const char*) {
    registers.Rebuild();
}

void ModbusProtocol::NonPersistentPropertiesBeginLock() {
    ProtocolBase::NonPersistentPropertiesBeginLock();
    properties.connected = counters.connected.load(std::memory_order_relaxed);
    properties.refused = counters.refused.load(std::memory_order_relaxed);
    properties.requests = counters.requests.load(std::memory_order_relaxed);
    properties.exceptions = counters.exceptions.load(std::memory_order_relaxed);
}

// A command that can't be read, such as the load of a job without a name, has failed.
void ModbusProtocol::Run(const CommandInput& input) {
    ControlRegisterCommandData command;
    try {
        commandBlock->Deserialize(&command, sizeof command, input.data(), input.size());
    } catch (const Vor::Exception& e) {
        OperationCompleted(e.Status());
        return;
    }
    ProcessReceivedCommonCommands(command);
}

void ModbusProtocol::OperationEndEventImpl(int) {
    control.EndCommand(GetCommandStatus());
}

void ModbusProtocol::ReadStates() {
    if (!control.HasStates()) {
        return;
    }
    IControlHost& host = GetControlHost();
    IgnoreFailure([&] { control.SetSystemState(SystemState(host.SystemStats(0))); });
    IgnoreFailure([&] {
        const auto info = host.ScannerInfo("", 0);
        // Without an id there is no scanner.
        if (!info.id.empty()) {
            control.SetScannerState(ScannerState(info));
        }
    });
}

void ModbusProtocol::ProcessResultSets(void* resultSets) {
    const auto sets = static_cast<yArrayList>(resultSets);
    const std::size_t count = yArrayList_Count(sets);
    for (std::size_t i = 0; i < count; ++i) {
        registers.Process(yArrayList_At(sets, i));
    }
}

} // namespace Services::Modbus
