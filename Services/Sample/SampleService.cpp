#include "SampleService.h"

#include "VorApi/LogThrown.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "yApi/yArrayList.h"

#include <string_view>
#include <utility>

namespace Services::Sample {

using namespace VorControl::ControlProtocol;

namespace {

constexpr const char* AssemblyId = "registerAssembly-0";

/// One address space of 256 registers of one byte each, with one type of block.
std::shared_ptr<ProtocolRegisterAssemblyBase> MakeAssembly() {
    auto assembly = std::make_shared<ProtocolRegisterAssemblyBase>(
        true, 0, 255, AssemblyId, IProtocolRegisterAssembly::DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME);
    assembly->AddSupportedBlockType(std::make_unique<DefaultMeasurementValueRegisterBlockInfo>());
    return assembly;
}

/// The result of a data source in a set, or null.
ResultItem FindItem(ResultSet set, std::string_view source) {
    const unsigned long id = ResultInfo_IdOfText(source);
    for (std::size_t i = 0; i < ResultSet_Count(set); ++i) {
        const ResultItem item = ResultSet_At(set, i);
        if (ResultInfo_NumericId(ResultItem_ResultInfo(item)) == id) {
            return item;
        }
    }
    return nullptr;
}

} // namespace

SampleService::SampleService(const ControlProtocolEnviron& environ)
    : ProtocolBase(environ) // Required: the base class copies what it needs of the record; keep no reference to it.
    , assembly(MakeAssembly()) {
    assemblies.Add(assembly);
    // Required, once: the framework saves, publishes and resets what is bound here.
    ProtocolInitParams init;
    init.nonPersistentProperties = &properties; // Optional: without them the service has the status only.
    init.params = &params;                      // Required: a group, empty if there are no parameters.
    init.registerAssemblyGroup = &assemblies;   // Optional: a service without registers binds none.
    Init(init);
}

void SampleService::Start() {
    // Required: the status reports the progress of the start.
    UpdateProtocolStatus(ProtocolStatus::Starting);
    try {
        Rebuild();
        // Required for scan results: the sources for the filter, and that results are wanted, at each Start.
        GetControlHost().UpdateScanResultsOutputMap(Id(), DataSourceList());
        SetForwardScanResultsToProtocol(true);
        // Optional: without the filter the service receives complete result sets.
        GetControlHost().SetScanResultsFiltering(Id(), true);
    } catch (const std::exception& e) {
        // Required: logs the failure, sets the status and throws again, so that the user gets the reason.
        UpdateStatusAndRethrow(e, ProtocolStatus::FailedToStart);
    }
    UpdateProtocolStatus(ProtocolStatus::Running);
}

void SampleService::Stop() {
    // A service is also stopped when it doesn't run, such as at a reset; then there are no results to end.
    const bool wasRunning = GetProtocolStatus() == ProtocolStatus::Running;
    UpdateProtocolStatus(ProtocolStatus::Stopping);
    try {
        if (wasRunning) {
            // Optional: from here on no results are processed. They end anyway when the service's handler is removed.
            SetForwardScanResultsToProtocol(false);
        }
        if (!params.keepAtStop.Get()) {
            Rebuild();
        }
    } catch (const std::exception& e) {
        UpdateStatusAndRethrow(e, ProtocolStatus::FailedToStop);
    }
    UpdateProtocolStatus(ProtocolStatus::Stopped);
}

void SampleService::ParamsReset() {
    params.Reset();
}

void SampleService::ParamsUpdate() {
    Rebuild();
}

void SampleService::ConfigureDefaultRegisterAssembly() {
    // The service has no default blocks: the user adds them.
    assembly->InitDefaultRegisterBlocksForRegisterAssembly();
    Rebuild();
}

void SampleService::RegisterAssemblyUpdate(const char* /*assemblyId*/) {
    // The framework updates the filter of the scan results.
    Rebuild();
}

void SampleService::Rebuild() {
    std::vector<unsigned char> bytes;
    {
        const AssemblyLock lock(*assembly); // Required around each use of the blocks.
        assembly->ChangeBigEndianSupportedBlocks(params.isBigEndian.Get());
        everyNth = params.everyNth.Get();
        skipped = 0;
        registers.clear();
        for (const auto& block : assembly->AddedRegisterBlocks()) {
            registers.resize(block->OutputId() + block->SerializedOutputSize());
            auto& scanBlock = dynamic_cast<ProtocolScanOutputRegisterBlock&>(*block);
            scanBlock.SerializeNullMsg(registers.data() + block->OutputId(), 0);
        }
        bytes = registers;
    }
    SetProperties(std::move(bytes), 0);
}

void SampleService::ProcessResultSets(void* resultSets) {
    const auto sets = static_cast<yArrayList>(resultSets);
    for (std::size_t i = 0; i < yArrayList_Count(sets); ++i) {
        // Required: no exception may leave this function, or the rest of the batch is lost.
        try {
            Process(yArrayList_At(sets, i));
        } catch (const std::exception& e) {
            Vor::LogThrown(e, "A result could not be written.");
        }
    }
}

void SampleService::Process(ResultSet set) {
    std::vector<unsigned char> bytes;
    {
        const AssemblyLock lock(*assembly);
        if (++skipped < everyNth) {
            return;
        }
        skipped = 0;
        for (const auto& block : assembly->AddedRegisterBlocks()) {
            const ResultItem item = FindItem(set, block->DataSource());
            const std::size_t size = block->SerializedOutputSize();
            if (item == nullptr || block->OutputId() + size > registers.size()) {
                continue; // The set has no result for the block, or the block was added after Rebuild.
            }
            const ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData data{item, 0};
            block->Serialize(registers.data() + block->OutputId(), size, &data, sizeof(data));
        }
        bytes = registers;
    }
    SetProperties(std::move(bytes), 1);
}

void SampleService::SetProperties(std::vector<unsigned char> bytes, unsigned long long addedResults) {
    const PropertiesLock lock(*this); // Required: properties other than the status change only under this lock.
    properties.registers = Vor::Properties::ByteVector(std::move(bytes));
    properties.resultCount = properties.resultCount.Get() + addedResults;
}

} // namespace Services::Sample
