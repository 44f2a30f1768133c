// The operations of the interfaces have the places in their tables of virtual functions that libraries built elsewhere
// count on.

#include "VorCommon/ICommandTarget.h"
#include "VorCommon/IMetricsKeeper.h"
#include "VorCommon/IPersistHandler.h"
#include "VorControl/Control/IControlDataCache.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Control/IControlDeviceOperations.h"
#include "VorControl/Control/IControlDevicePort.h"
#include "VorControl/Control/IControlHost.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/IControlManager.h"
#include "VorControl/Control/IControlMetrics.h"
#include "VorControl/Control/IControlScanEngineInterface.h"
#include "VorControl/Control/IControlScanResults.h"
#include "VorControl/Control/IControlScanResultsDispatcher.h"
#include "VorControl/Control/IControlSystemInterface.h"
#include "VorControl/ControlProtocol/IProtocol.h"
#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssemblyGroup.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"
#include "VorControl/Providers/IControlPersistenceProvider.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace VorControl {
namespace {

using ControlProtocol::IProtocol;
using ControlProtocol::IProtocolOutput;
using ControlProtocol::IProtocolRegisterAssembly;
using ControlProtocol::IProtocolRegisterAssemblyGroup;
using Vor::Params::Group;
using VorCommon::PersistDomain;

/// The index of a virtual function in the table of its class (Itanium C++ ABI, 2.3): a pointer to it is the offset,
/// plus 1 where that isn't told from the adjustment of `this`.
template <class Function, class Class>
std::size_t SlotOf(Function Class::*member) {
    struct {
        std::uintptr_t pointer;
        std::uintptr_t adjustment;
    } parts;
    static_assert(sizeof(parts) == sizeof(member));
    std::memcpy(&parts, &member, sizeof(parts));
    const bool isArm = (parts.adjustment & 1U) != 0;
    return (parts.pointer - (isArm ? 0 : 1)) / sizeof(void*);
}

/// The places that follow each other from `first` on.
std::vector<std::size_t> From(std::size_t first, std::size_t count) {
    std::vector<std::size_t> slots(count);
    std::iota(slots.begin(), slots.end(), first);
    return slots;
}

/// Behind the two of the destructor.
constexpr std::size_t AfterDestructor = 2;

void ExpectFrom(std::size_t first, const std::vector<std::size_t>& slots) {
    EXPECT_EQ(slots, From(first, slots.size()));
}

/// Its protected operations.
struct Hooks : IProtocol {
    using IProtocol::BeginUpdateOutputsMapImpl;
    using IProtocol::BeginUpdateParamsImpl;
    using IProtocol::BeginUpdateRegisterAssemblyImpl;
    using IProtocol::EndUpdateOutputsMapImpl;
    using IProtocol::EndUpdateParamsImpl;
    using IProtocol::EndUpdateRegisterAssemblyImpl;
    using IProtocol::OperationEndEventImpl;
    using IProtocol::OutputsMapResetImpl;
    using IProtocol::ParamsResetImpl;
    using IProtocol::RegisterAssemblyGroupResetImpl;
    using IProtocol::ScanStateChangeImpl;
    using IProtocol::UpdateDynamicParamsImpl;
};
struct Categories : Providers::ControlPersistenceProvider {
    using ControlPersistenceProvider::InitOutputsMap;
    using ControlPersistenceProvider::InitParameters;
    using ControlPersistenceProvider::InitRegisterAssemblyGroup;
    using ControlPersistenceProvider::LoadOutputsMap;
    using ControlPersistenceProvider::LoadParameters;
    using ControlPersistenceProvider::LoadRegisterAssemblyGroup;
    using ControlPersistenceProvider::SaveOutputsMap;
    using ControlPersistenceProvider::SaveParameters;
    using ControlPersistenceProvider::SaveRegisterAssemblyGroup;
};

TEST(SlotsTest, IPersistHandler) {
    ExpectFrom(AfterDestructor,
               {SlotOf(&VorCommon::IPersistHandler::Component), SlotOf(&VorCommon::IPersistHandler::InitPersistDomain),
                SlotOf(&VorCommon::IPersistHandler::LoadPersistDomain),
                SlotOf(&VorCommon::IPersistHandler::SavePersistDomain)});
}

TEST(SlotsTest, IControlManager) {
    ExpectFrom(AfterDestructor + 4,
               {SlotOf(&IControlManager::List), SlotOf(&IControlManager::GetInstance),
                SlotOf(&IControlManager::GetControlRegistry), SlotOf(&IControlManager::AddPersistenceLoadEventHandler),
                SlotOf(&IControlManager::RemovePersistenceLoadEventHandler)});
}

TEST(SlotsTest, IControlInstance) {
    ExpectFrom(AfterDestructor, {SlotOf(&IControlInstance::Info),
                                 SlotOf(&IControlInstance::TypeName),
                                 SlotOf(&IControlInstance::Id),
                                 SlotOf(&IControlInstance::DisplayName),
                                 SlotOf(&IControlInstance::Enable),
                                 SlotOf(&IControlInstance::IsEnabled),
                                 SlotOf(&IControlInstance::GetProtocolStatus),
                                 SlotOf(&IControlInstance::AddParamsUpdatedEventHandler),
                                 SlotOf(&IControlInstance::RemoveParamsUpdatedEventHandler),
                                 SlotOf(&IControlInstance::AddOutputsUpdatedEventHandler),
                                 SlotOf(&IControlInstance::RemoveOutputsUpdatedEventHandler),
                                 SlotOf(&IControlInstance::AddRegisterAssemblyUpdatedEventHandler),
                                 SlotOf(&IControlInstance::RemoveRegisterAssemblyUpdatedEventHandler),
                                 SlotOf(&IControlInstance::AddPersistenceDomainChangeEventHandler),
                                 SlotOf(&IControlInstance::RemovePersistenceDomainChangeEventHandler),
                                 SlotOf(&IControlInstance::AddAvailableDeviceListUpdatedEventHandler),
                                 SlotOf(&IControlInstance::RemoveAvailableDeviceListUpdatedEventHandler),
                                 SlotOf(&IControlInstance::AddDeviceRegisterAssemblyUpdatedEventHandler),
                                 SlotOf(&IControlInstance::RemoveDeviceRegisterAssemblyUpdatedEventHandler),
                                 SlotOf(&IControlInstance::AddDeviceUpdatedEventHandler),
                                 SlotOf(&IControlInstance::RemoveDeviceUpdatedEventHandler),
                                 SlotOf(&IControlInstance::AddDeviceRemovedEventHandler),
                                 SlotOf(&IControlInstance::RemoveDeviceRemovedEventHandler),
                                 SlotOf(&IControlInstance::BeginUpdateParameters),
                                 SlotOf(&IControlInstance::EndUpdateParameters),
                                 SlotOf(&IControlInstance::BeginUpdateOutputsMap),
                                 SlotOf(&IControlInstance::EndUpdateOutputsMap),
                                 SlotOf<void()>(&IControlInstance::BeginUpdateRegisterAssembly),
                                 SlotOf<std::shared_ptr<IProtocolRegisterAssembly>(const char*)>(
                                     &IControlInstance::BeginUpdateRegisterAssembly),
                                 SlotOf(&IControlInstance::EndUpdateRegisterAssembly),
                                 SlotOf(&IControlInstance::BeginUpdateDeviceRegisterAssembly),
                                 SlotOf(&IControlInstance::EndUpdateDeviceRegisterAssembly),
                                 SlotOf(&IControlInstance::MetricsKeeper),
                                 SlotOf(&IControlInstance::MetricsSource),
                                 SlotOf(&IControlInstance::Properties),
                                 SlotOf(&IControlInstance::NonPersistentPropertiesBeginLock),
                                 SlotOf(&IControlInstance::NonPersistentPropertiesEndLock),
                                 SlotOf(&IControlInstance::Params),
                                 SlotOf(&IControlInstance::ParamsVersion),
                                 SlotOf(&IControlInstance::ParamsUpdate),
                                 SlotOf(&IControlInstance::HasProtocolOutput),
                                 SlotOf(&IControlInstance::OutputsMapBeginLock),
                                 SlotOf(&IControlInstance::OutputsMapEndLock),
                                 SlotOf(&IControlInstance::OutputsMap),
                                 SlotOf(&IControlInstance::HasOutputsCommandTarget),
                                 SlotOf(&IControlInstance::OutputsCommandTarget),
                                 SlotOf(&IControlInstance::OutputsUpdate),
                                 SlotOf(&IControlInstance::HasRegisterAssemblyCommandTarget),
                                 SlotOf(&IControlInstance::RegisterAssemblyCommandTarget),
                                 SlotOf(&IControlInstance::HasRegisterAssemblyGroup),
                                 SlotOf(&IControlInstance::HasRegisterAssembly),
                                 SlotOf(&IControlInstance::RegisterAssembly),
                                 SlotOf(&IControlInstance::RegisterAssemblyList),
                                 SlotOf(&IControlInstance::RegisterAssemblyBeginLock),
                                 SlotOf(&IControlInstance::RegisterAssemblyEndLock),
                                 SlotOf(&IControlInstance::RegisterAssemblyUpdate),
                                 SlotOf(&IControlInstance::HasDeviceManager),
                                 SlotOf(&IControlInstance::DeviceManager),
                                 SlotOf(&IControlInstance::BeginUpdateDeviceManager),
                                 SlotOf(&IControlInstance::EndUpdateDeviceManager),
                                 SlotOf(&IControlInstance::DeviceManagerBeginLock),
                                 SlotOf(&IControlInstance::DeviceManagerEndLock),
                                 SlotOf(&IControlInstance::ResetInstance),
                                 SlotOf(&IControlInstance::CommandTarget),
                                 SlotOf(&IControlInstance::OnPreStartScan),
                                 SlotOf(&IControlInstance::OnPostStopScan),
                                 SlotOf(&IControlInstance::OnFactoryRestore),
                                 SlotOf(&IControlInstance::OnPersistDomainLoaded),
                                 SlotOf(&IControlInstance::WorkspacePersistData),
                                 SlotOf(&IControlInstance::HasPersistOption),
                                 SlotOf(&IControlInstance::PersistenceProvider),
                                 SlotOf(&IControlInstance::ResetProtocolToDefaultEnabledState),
                                 SlotOf(&IControlInstance::ProtocolAutoEnableSetting)});
}

TEST(SlotsTest, IControlHost) {
    ExpectFrom(AfterDestructor, {SlotOf(&IControlHost::StartScan),
                                 SlotOf(&IControlHost::StopScan),
                                 SlotOf(&IControlHost::StartAlignment),
                                 SlotOf(&IControlHost::ClearAlignment),
                                 SlotOf(&IControlHost::LoadJob),
                                 SlotOf(&IControlHost::SoftwareTrigger),
                                 SlotOf(&IControlHost::FactoryRestore),
                                 SlotOf(&IControlHost::Restart),
                                 SlotOf(&IControlHost::SetNextIpConfig),
                                 SlotOf(&IControlHost::BlinkLed),
                                 SlotOf(&IControlHost::SystemStats),
                                 SlotOf(&IControlHost::ScannerInfo),
                                 SlotOf(&IControlHost::PlatformAttributes),
                                 SlotOf(&IControlHost::ProfinetServiceRunningState),
                                 SlotOf(&IControlHost::SetProfinetServiceRunningState),
                                 SlotOf(&IControlHost::SetForwardScanResultsToService),
                                 SlotOf(&IControlHost::UpdateScanResultsOutputMap),
                                 SlotOf(&IControlHost::SetScanResultsFiltering),
                                 SlotOf(&IControlHost::AddDataSourceEventHandler),
                                 SlotOf(&IControlHost::RemoveDataSourceEventHandler),
                                 SlotOf(&IControlHost::DataSourceProperties),
                                 SlotOf(&IControlHost::LiveJob),
                                 SlotOf(&IControlHost::ProblemsManager),
                                 SlotOf(&IControlHost::ReadResource),
                                 SlotOf(&IControlHost::ScanEngineInterface),
                                 SlotOf(&IControlHost::DeviceOperations),
                                 SlotOf(&IControlHost::LocalNodeId),
                                 SlotOf(&IControlHost::ControlChannelPort),
                                 SlotOf(&IControlHost::VdpPort),
                                 SlotOf(&IControlHost::PipeAllocator),
                                 SlotOf(&IControlHost::LocalNodeDateTime),
                                 SlotOf(&IControlHost::SetLocalNodeDateTime),
                                 SlotOf(&IControlHost::LocalNodeNtpHost),
                                 SlotOf(&IControlHost::SetLocalNodeNtpHost),
                                 SlotOf(&IControlHost::LocalNodeSyncTime)});
}

TEST(SlotsTest, IProtocol) {
    ExpectFrom(AfterDestructor + 2,
               {SlotOf(&IProtocol::DisplayName),
                SlotOf(&IProtocol::GetProtocolStatus),
                SlotOf(&IProtocol::ParamsUpdate),
                SlotOf<void()>(&IProtocol::ParamsReset),
                SlotOf(&IProtocol::Start),
                SlotOf(&IProtocol::Stop),
                SlotOf(&IProtocol::Properties),
                SlotOf(&IProtocol::NonPersistentPropertiesBeginLock),
                SlotOf(&IProtocol::NonPersistentPropertiesEndLock),
                SlotOf<void(const char*)>(&IProtocol::BeginUpdateParams),
                SlotOf<void()>(&IProtocol::EndUpdateParams),
                SlotOf<Group&() const>(&IProtocol::Params),
                SlotOf<const char*() const>(&IProtocol::ParamsVersion),
                SlotOf(&IProtocol::AddParamsInternalUpdateEventHandler),
                SlotOf(&IProtocol::RemoveParamsInternalUpdateEventHandler),
                SlotOf(&IProtocol::NotifyParamsInternalUpdateEventHandler),
                SlotOf(&IProtocol::AddOutputsInternalUpdateEventHandler),
                SlotOf(&IProtocol::RemoveOutputsInternalUpdateEventHandler),
                SlotOf(&IProtocol::NotifyOutputsInternalUpdateEventHandler),
                SlotOf(&IProtocol::AddPersistenceDomainChangeEventHandler),
                SlotOf(&IProtocol::RemovePersistenceDomainChangeEventHandler),
                SlotOf(&IProtocol::NotifyPersistenceDomainChangeEventHandler),
                SlotOf(&IProtocol::OutputsUpdate),
                SlotOf(&IProtocol::HasProtocolOutput),
                SlotOf<IProtocolOutput&() const>(&IProtocol::Outputs),
                SlotOf(&IProtocol::HasOutputsCommandTarget),
                SlotOf(&IProtocol::OutputsCommandTarget),
                SlotOf(&IProtocol::ProcessResultSets),
                SlotOf(&IProtocol::AddControlScanResultsHandler),
                SlotOf(&IProtocol::RemoveControlScanResultsHandler),
                SlotOf(&IProtocol::CommandTarget),
                SlotOf(&IProtocol::RegisterAssemblyUpdate),
                SlotOf(&IProtocol::HasRegisterAssemblyCommandTarget),
                SlotOf(&IProtocol::RegisterAssemblyCommandTarget),
                SlotOf(&IProtocol::HasRegisterAssemblyGroup),
                SlotOf(&IProtocol::HasRegisterAssembly),
                SlotOf(&IProtocol::RegisterAssembly),
                SlotOf(&IProtocol::RegisterAssemblyList),
                SlotOf(&IProtocol::ConfigureDefaultRegisterAssembly),
                SlotOf(&IProtocol::HasDeviceManager),
                SlotOf(&IProtocol::DeviceManager),
                SlotOf<std::vector<std::string>() const>(&IProtocol::DataSourceList),
                SlotOf(&IProtocol::OnPreStartScan),
                SlotOf(&IProtocol::OnPostStopScan),
                SlotOf(&IProtocol::OnFactoryRestore),
                SlotOf(&IProtocol::CompletedOperationStatus),
                SlotOf(&IProtocol::HasPersistOption),
                SlotOf(&IProtocol::OnPersistDomainLoaded),
                SlotOf(&IProtocol::WorkspacePersistData),
                SlotOf(&IProtocol::PersistOptions),
                SlotOf<std::vector<std::string>(PersistDomain)>(&IProtocol::DataSourceList),
                SlotOf<std::shared_ptr<Group>(PersistDomain) const>(&IProtocol::Params),
                SlotOf<const char*(PersistDomain) const>(&IProtocol::ParamsVersion),
                SlotOf(&IProtocol::SupportedParamsVersion),
                SlotOf<void(PersistDomain)>(&IProtocol::ParamsReset),
                SlotOf(&IProtocol::UpdateDynamicParams),
                SlotOf<std::shared_ptr<Group>(PersistDomain, const char*)>(&IProtocol::BeginUpdateParams),
                SlotOf<void(PersistDomain, const char*)>(&IProtocol::EndUpdateParams),
                SlotOf<std::shared_ptr<IProtocolOutput>(PersistDomain)>(&IProtocol::Outputs),
                SlotOf(&IProtocol::OutputsMapReset),
                SlotOf(&IProtocol::BeginUpdateOutputsMap),
                SlotOf(&IProtocol::EndUpdateOutputsMap),
                SlotOf(&IProtocol::RegisterAssemblyGroup),
                SlotOf(&IProtocol::RegisterAssemblyGroupReset),
                SlotOf(&IProtocol::RegisterAssemblyVersion),
                SlotOf(&IProtocol::SupportedRegisterAssemblyVersion),
                SlotOf(&IProtocol::BeginUpdateRegisterAssembly),
                SlotOf(&IProtocol::EndUpdateRegisterAssembly),
                SlotOf(&IProtocol::PersistenceProvider),
                SlotOf<IControlHost&()>(&IProtocol::GetControlHost),
                SlotOf<const IControlHost&() const>(&IProtocol::GetControlHost)});
    ExpectFrom(AfterDestructor + 73,
               {SlotOf(&Hooks::ScanStateChangeImpl), SlotOf(&Hooks::OperationEndEventImpl),
                SlotOf(&Hooks::ParamsResetImpl), SlotOf(&Hooks::OutputsMapResetImpl),
                SlotOf(&Hooks::RegisterAssemblyGroupResetImpl), SlotOf(&Hooks::UpdateDynamicParamsImpl),
                SlotOf(&Hooks::BeginUpdateParamsImpl), SlotOf(&Hooks::BeginUpdateOutputsMapImpl),
                SlotOf(&Hooks::BeginUpdateRegisterAssemblyImpl), SlotOf(&Hooks::EndUpdateParamsImpl),
                SlotOf(&Hooks::EndUpdateOutputsMapImpl), SlotOf(&Hooks::EndUpdateRegisterAssemblyImpl)});
}

TEST(SlotsTest, IProtocolOutput) {
    ExpectFrom(AfterDestructor,
               {SlotOf(&IProtocolOutput::BeginLock), SlotOf(&IProtocolOutput::EndLock),
                SlotOf(&IProtocolOutput::OutputMap), SlotOf(&IProtocolOutput::CreateOutputMapItemArgs),
                SlotOf(&IProtocolOutput::CreateOutputMapItemRemoveArgs), SlotOf(&IProtocolOutput::CreateOutputsArgs),
                SlotOf(&IProtocolOutput::Add), SlotOf(&IProtocolOutput::AddAll), SlotOf(&IProtocolOutput::Remove),
                SlotOf(&IProtocolOutput::Count), SlotOf(&IProtocolOutput::At), SlotOf(&IProtocolOutput::Clear),
                SlotOf(&IProtocolOutput::DataSourceList), SlotOf(&IProtocolOutput::CompactId),
                SlotOf(&IProtocolOutput::UpdateId), SlotOf(&IProtocolOutput::CommandTarget)});
}

TEST(SlotsTest, ICommandTarget) {
    ExpectFrom(AfterDestructor,
               {SlotOf(&VorCommon::ICommandTarget::ListCommands), SlotOf(&VorCommon::ICommandTarget::GetCommandParams),
                SlotOf(&VorCommon::ICommandTarget::InvokeCommand),
                SlotOf(&VorCommon::ICommandTarget::IsCommandSupported)});
}

TEST(SlotsTest, IProtocolRegisterAssembly) {
    ExpectFrom(AfterDestructor, {SlotOf(&IProtocolRegisterAssembly::BeginLock),
                                 SlotOf(&IProtocolRegisterAssembly::EndLock),
                                 SlotOf(&IProtocolRegisterAssembly::AddSupportedBlockType),
                                 SlotOf(&IProtocolRegisterAssembly::Add),
                                 SlotOf(&IProtocolRegisterAssembly::Remove),
                                 SlotOf(&IProtocolRegisterAssembly::RemoveAll),
                                 SlotOf(&IProtocolRegisterAssembly::Compact),
                                 SlotOf(&IProtocolRegisterAssembly::Update),
                                 SlotOf(&IProtocolRegisterAssembly::ResetRegisterAssembly),
                                 SlotOf(&IProtocolRegisterAssembly::InitDefaultRegisterBlocksForRegisterAssembly),
                                 SlotOf(&IProtocolRegisterAssembly::SupportedRegisterBlockTypes),
                                 SlotOf(&IProtocolRegisterAssembly::SupportedRegisterBlockTypesCount),
                                 SlotOf(&IProtocolRegisterAssembly::AddedRegisterBlocks),
                                 SlotOf(&IProtocolRegisterAssembly::AddedRegisterBlocksCount),
                                 SlotOf(&IProtocolRegisterAssembly::FindAddedBlocksOfTypes),
                                 SlotOf(&IProtocolRegisterAssembly::FindAddedScanOutputBlocksSortedByDataSource),
                                 SlotOf(&IProtocolRegisterAssembly::Attributes),
                                 SlotOf(&IProtocolRegisterAssembly::Properties),
                                 SlotOf(&IProtocolRegisterAssembly::DataSourceList),
                                 SlotOf(&IProtocolRegisterAssembly::Id),
                                 SlotOf(&IProtocolRegisterAssembly::DisplayName),
                                 SlotOf(&IProtocolRegisterAssembly::CommandTarget),
                                 SlotOf(&IProtocolRegisterAssembly::CopySupportedRegisterBlocks)});
}

TEST(SlotsTest, IProtocolRegisterAssemblyGroup) {
    ExpectFrom(AfterDestructor,
               {SlotOf(&IProtocolRegisterAssemblyGroup::Add), SlotOf(&IProtocolRegisterAssemblyGroup::Empty),
                SlotOf(&IProtocolRegisterAssemblyGroup::List),
                SlotOf(&IProtocolRegisterAssemblyGroup::HasRegisterAssembly),
                SlotOf(&IProtocolRegisterAssemblyGroup::RegisterAssembly),
                SlotOf(&IProtocolRegisterAssemblyGroup::CommandTarget),
                SlotOf(&IProtocolRegisterAssemblyGroup::DataSourceList),
                SlotOf(&IProtocolRegisterAssemblyGroup::DisplayName)});
}

TEST(SlotsTest, IControlScanEngineInterface) {
    ExpectFrom(
        0, {SlotOf(&IControlScanEngineInterface::SoftwareTrigger), SlotOf(&IControlScanEngineInterface::Alignment),
            SlotOf(&IControlScanEngineInterface::ClearAlignment), SlotOf(&IControlScanEngineInterface::BlinkLed),
            SlotOf(&IControlScanEngineInterface::AlignmentCompletedEvent),
            SlotOf(&IControlScanEngineInterface::AlignmentStateUpdatedEvent),
            SlotOf(&IControlScanEngineInterface::GetAlignmentState), SlotOf(&IControlScanEngineInterface::ScannerInfo),
            SlotOf(&IControlScanEngineInterface::FindAvailableSensors),
            SlotOf(&IControlScanEngineInterface::GetDigitalOutputProviderManager),
            SlotOf(&IControlScanEngineInterface::SetDigitalOutputState),
            SlotOf(&IControlScanEngineInterface::GetScanEngineList),
            SlotOf(&IControlScanEngineInterface::IsScanEngineManagerValid)});
}

TEST(SlotsTest, IControlSystemInterface) {
    ExpectFrom(
        AfterDestructor,
        {SlotOf(&IControlSystemInterface::Start), SlotOf(&IControlSystemInterface::Stop),
         SlotOf(&IControlSystemInterface::FactoryRestore), SlotOf(&IControlSystemInterface::Restart),
         SlotOf(&IControlSystemInterface::LoadJob), SlotOf(&IControlSystemInterface::Stats),
         SlotOf(&IControlSystemInterface::SetNextIpConfig), SlotOf(&IControlSystemInterface::BlinkLed),
         SlotOf(&IControlSystemInterface::AddDataSourceEventHandler),
         SlotOf(&IControlSystemInterface::RemoveDataSourceEventHandler),
         SlotOf(&IControlSystemInterface::DataSourceProperties), SlotOf(&IControlSystemInterface::LiveJob),
         SlotOf(&IControlSystemInterface::LocalNodeDateTime), SlotOf(&IControlSystemInterface::SetLocalNodeDateTime),
         SlotOf(&IControlSystemInterface::LocalNodeNtpHost), SlotOf(&IControlSystemInterface::SetLocalNodeNtpHost),
         SlotOf(&IControlSystemInterface::LocalNodeSyncTime)});
}

TEST(SlotsTest, IControlDataCache) {
    ExpectFrom(AfterDestructor, {SlotOf(&IControlDataCache::SystemStats), SlotOf(&IControlDataCache::ScannerInfo)});
}

TEST(SlotsTest, IControlScanResults) {
    ExpectFrom(0, {SlotOf(&IControlScanResults::AddResultHandler), SlotOf(&IControlScanResults::RemoveResultHandler),
                   SlotOf(&IControlScanResults::ProcessResultSet), SlotOf(&IControlScanResults::UpdateOutputMap),
                   SlotOf(&IControlScanResults::SetForwardScanResultsToProtocol),
                   SlotOf(&IControlScanResults::SetScanResultsFiltering)});
}

TEST(SlotsTest, IControlScanResultsDispatcher) {
    ExpectFrom(
        AfterDestructor,
        {SlotOf(&IControlScanResultsDispatcher::AddResultHandler),
         SlotOf(&IControlScanResultsDispatcher::RemoveResultHandler), SlotOf(&IControlScanResultsDispatcher::AddResult),
         SlotOf(&IControlScanResultsDispatcher::ResultHandlerCount), SlotOf(&IControlScanResultsDispatcher::Start),
         SlotOf(&IControlScanResultsDispatcher::Stop), SlotOf(&IControlScanResultsDispatcher::SetForwardScanResults),
         SlotOf(&IControlScanResultsDispatcher::ForwardScanResults),
         SlotOf(&IControlScanResultsDispatcher::SetScanResultsFiltering),
         SlotOf(&IControlScanResultsDispatcher::ScanResultsFiltering)});
}

TEST(SlotsTest, IControlDeviceManager) {
    ExpectFrom(AfterDestructor, {SlotOf(&IControlDeviceManager::AvailableDevices),
                                 SlotOf(&IControlDeviceManager::MaxSelectableDeviceCount),
                                 SlotOf(&IControlDeviceManager::SelectedDevices),
                                 SlotOf(&IControlDeviceManager::SelectedDeviceProperties),
                                 SlotOf(&IControlDeviceManager::DeleteSelectedDevice),
                                 SlotOf(&IControlDeviceManager::CreateSelectedDevice),
                                 SlotOf(&IControlDeviceManager::EnableSelectedDevices),
                                 SlotOf(&IControlDeviceManager::SelectedDeviceAddedEvent),
                                 SlotOf(&IControlDeviceManager::SelectedDeviceRemovedEvent),
                                 SlotOf(&IControlDeviceManager::SelectedDeviceUpdatedEvent),
                                 SlotOf(&IControlDeviceManager::SelectedDeviceParamsChangedEvent),
                                 SlotOf(&IControlDeviceManager::DeviceCommandTarget),
                                 SlotOf(&IControlDeviceManager::AvailableDeviceListUpdatedEvent),
                                 SlotOf(&IControlDeviceManager::DataSourceList),
                                 SlotOf(&IControlDeviceManager::BeginLock),
                                 SlotOf(&IControlDeviceManager::EndLock),
                                 SlotOf(&IControlDeviceManager::DevicePortMetricsSource),
                                 SlotOf(&IControlDeviceManager::UpdateDevicePortMetrics),
                                 SlotOf(&IControlDeviceManager::IsSelectedDefaultDevice),
                                 SlotOf(&IControlDeviceManager::Save),
                                 SlotOf(&IControlDeviceManager::Load),
                                 SlotOf(&IControlDeviceManager::Reset)});
}

TEST(SlotsTest, IControlDevicePort) {
    ExpectFrom(AfterDestructor + 2,
               {SlotOf(&IControlDevicePort::PortNumber), SlotOf(&IControlDevicePort::SetDropCount),
                SlotOf(&IControlDevicePort::SetHighCount), SlotOf(&IControlDevicePort::SetLowCount),
                SlotOf(&IControlDevicePort::IncrementDiscardCount), SlotOf(&IControlDevicePort::ResetDiscardCount),
                SlotOf(&IControlDevicePort::RegisterAssembly), SlotOf(&IControlDevicePort::RegisterAssemblyCmdTarget)});
}

TEST(SlotsTest, IControlDeviceOperations) {
    ExpectFrom(0, {SlotOf(&IControlDeviceOperations::AddOpEndEventHandler),
                   SlotOf(&IControlDeviceOperations::RemoveOpEndEventHandler),
                   SlotOf(&IControlDeviceOperations::FindAvailableSensors),
                   SlotOf(&IControlDeviceOperations::SetDigitalOutputState),
                   SlotOf(&IControlDeviceOperations::ClearPendingOperations)});
}

TEST(SlotsTest, IMetricsKeeper) {
    ExpectFrom(AfterDestructor,
               {SlotOf(&VorCommon::IMetricsKeeper::UpdateMetrics), SlotOf(&VorCommon::IMetricsKeeper::ResetMetrics)});
}

TEST(SlotsTest, IControlMetrics) {
    ExpectFrom(AfterDestructor, {SlotOf(&IControlMetrics::LastReport), SlotOf(&IControlMetrics::AddReportHandler),
                                 SlotOf(&IControlMetrics::RemoveReportHandler)});
}

TEST(SlotsTest, IControlPersistenceProvider) {
    ExpectFrom(AfterDestructor, {SlotOf(&Providers::IControlPersistenceProvider::Init),
                                 SlotOf(&Providers::IControlPersistenceProvider::Load),
                                 SlotOf(&Providers::IControlPersistenceProvider::Save),
                                 SlotOf(&Providers::IControlPersistenceProvider::RegisterParams),
                                 SlotOf(&Providers::IControlPersistenceProvider::RegisterOutputsMap),
                                 SlotOf(&Providers::IControlPersistenceProvider::RegisterRegisterAssemblyGroup)});
    ExpectFrom(AfterDestructor + 6,
               {SlotOf(&Categories::InitParameters), SlotOf(&Categories::InitOutputsMap),
                SlotOf(&Categories::InitRegisterAssemblyGroup), SlotOf(&Categories::SaveParameters),
                SlotOf(&Categories::SaveOutputsMap), SlotOf(&Categories::SaveRegisterAssemblyGroup),
                SlotOf(&Categories::LoadParameters), SlotOf(&Categories::LoadOutputsMap),
                SlotOf(&Categories::LoadRegisterAssemblyGroup)});
}

} // namespace
} // namespace VorControl
