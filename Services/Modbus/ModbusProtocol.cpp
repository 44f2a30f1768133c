#include "Services/Modbus/ModbusProtocol.h"

#include "Services/Common/PropertiesLock.h"
#include "Services/Modbus/BlockTypes.h"
#include "Services/Modbus/StateRecords.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "yApi/yArrayList.h"

namespace Services::Modbus {

using VorControl::IControlHost;
using namespace VorControl::ControlProtocol;

namespace {

constexpr unsigned short FirstRegister = 0;
constexpr unsigned short LastRegister = 65534;

template <class Work>
void Attempt(const Work& work) {
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

} // namespace

ModbusProtocol::ModbusProtocol(const ControlProtocolEnviron& environ)
    : ProtocolBase(environ)
    , assembly(MakeAssembly())
    , control(image, *this)
    , registers(assembly, image, control) {
    assemblies.Add(assembly);
    Init({.nonPersistentProperties = &properties, .params = &params, .registerAssemblyGroup = &assemblies});
}

ModbusProtocol::~ModbusProtocol() {
    server.reset();
    try {
        StopOperationEndEvents();
    } catch (const std::exception& e) {
        Vor::LogError("Exception thrown in destructor");
        Vor::Exception::LogException(e);
        Vor::Exception::LogBackTrace(e);
    }
}

void ModbusProtocol::Start() {
    UpdateProtocolStatus(ProtocolStatus::Starting);
    try {
        Close();
        Open();
    } catch (const std::exception& e) {
        server.reset();
        Show("", e.what());
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
    const ServerSettings settings = params.Settings();
    assembly->ChangeBigEndianSupportedBlocks(params.IsBigEndian());
    ShowMap();
    counters.Reset();
    server = std::make_unique<ModbusServer>(control, counters, settings, [this] { Poll(); });
    GetControlHost().UpdateScanResultsOutputMap(Id(), DataSourceList());
    GetControlHost().SetScanResultsFiltering(Id(), true);
    SetForwardScanResultsToProtocol(true);
    Show(server->Url(), "");
    SetIsRunning(true);
}

void ModbusProtocol::Close() {
    if (!IsRunning()) {
        return;
    }
    SetIsRunning(false);
    server.reset();
    registers.ForgetValues();
    Show("", "");
    SetForwardScanResultsToProtocol(false);
}

void ModbusProtocol::Show(const std::string& address, const std::string& failure) {
    const Common::PropertiesLock lock(*this);
    properties.address = address;
    properties.failure = failure;
}

void ModbusProtocol::ParamsReset() {
    params.Reset();
}

void ModbusProtocol::ParamsUpdate() {
    if (!IsRunning()) {
        return;
    }
    const ServerSettings settings = params.Settings();
    try {
        server->Update(settings);
    } catch (const std::exception& e) {
        if (server->IsListening()) {
            Show(server->Url(), e.what());
            throw;
        }
        Close();
        Show("", e.what());
        UpdateStatusAndRethrow(e, ProtocolStatus::FailedToStart);
    }
    Show(server->Url(), "");
    assembly->ChangeBigEndianSupportedBlocks(params.IsBigEndian());
    if (!mapChanging) {
        ShowMap();
    }
}

void ModbusProtocol::ConfigureDefaultRegisterAssembly() {
    assembly->InitDefaultRegisterBlocksForRegisterAssembly();
    if (IsRunning()) {
        mapChanging = true;
        mainLoop.Run([this] {
            if (mapChanging) {
                ShowMap();
            }
        });
    } else {
        ShowMap();
    }
    GetControlHost().UpdateScanResultsOutputMap(Id(), DataSourceList());
}

void ModbusProtocol::RegisterAssemblyUpdate(const char*) {
    ShowMap();
}

void ModbusProtocol::ShowMap() {
    mapChanging = false;
    registers.Rebuild();
}

void ModbusProtocol::NonPersistentPropertiesBeginLock() {
    ProtocolBase::NonPersistentPropertiesBeginLock();
    properties.connected = counters.connected.load(std::memory_order_relaxed);
    properties.refused = counters.refused.load(std::memory_order_relaxed);
    properties.requests = counters.requests.load(std::memory_order_relaxed);
    properties.exceptions = counters.exceptions.load(std::memory_order_relaxed);
}

// A command that can't be read, a load of a job without a name for instance, has failed.
void ModbusProtocol::Run(const CommandInput& input) {
    ControlRegisterCommandData command;
    try {
        command = commandReader.Read(input);
    } catch (const Vor::Exception& e) {
        OperationCompleted(e.Status());
        return;
    }
    ProcessReceivedCommonCommands(command);
}

void ModbusProtocol::OperationEndEventImpl(int) {
    control.EndCommand(GetCommandStatus());
}

// A state that can't be had leaves the last one.
void ModbusProtocol::Poll() {
    if (!control.HasStates()) {
        return;
    }
    IControlHost& host = GetControlHost();
    Attempt([&] { control.SetSystemState(SystemState(host.SystemStats(0))); });
    Attempt([&] {
        const auto info = host.ScannerInfo("", 0);
        // A record without an id is of no scanner.
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
