#include "FuzzedService.h"
#include "VorApi/ResourceRouter.h"
#include "VorCommon/ArchiveStore.h"
#include "VorCommon/PlatformAttributes.h"
#include "VorCommon/ProblemsManager.h"
#include "VorCommon/RuntimeCache.h"
#include "VorCommon/UpdateGate.h"
#include "VorControl/Control/ControlDataCache.h"
#include "VorControl/Control/ControlDeviceOperations.h"
#include "VorControl/Control/ControlHost.h"
#include "VorControl/Control/ControlInfo.h"
#include "VorControl/Control/ControlInstance.h"
#include "VorControl/Control/ControlProtocolOperations.h"
#include "VorControl/Control/ControlResourceAdaptor.h"
#include "VorControl/Control/ControlScanEngineInterface.h"
#include "VorControl/Control/ControlScanResults.h"
#include "VorControl/Control/ControlSystemInterface.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "VorControl/Persistence/PersistControl.h"
#include "VorRest/RequestProcessor.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

using Fuzz::Service;
using VorCommon::PersistDomain;
using namespace VorControl::ControlProtocol;

constexpr const char* Path = "/controls/fuzzed/config.json";

/// One service with what it needs of the sensor.
class Bench {
public:
    Bench()
        : instance(Record()) {}

    /// Returns false when the file is refused.
    bool Load(const VorCommon::IPersistStore& store) {
        bool loaded = true;
        try {
            control.Load(instance, PersistDomain::Job, store);
        } catch (const std::exception&) {
            loaded = false;
        }
        if (gate.Depth() != 0) {
            std::abort();
        }
        return loaded;
    }

    void Save(VorCommon::IPersistStore& store) { control.Save(instance, PersistDomain::Job, store); }

    bool IsEnabled() const { return instance.IsEnabled(); }

private:
    VorControl::ControlInstanceParams Record() {
        ControlProtocolEnviron environ;
        environ.typeName = "fuzzed";
        environ.displayName = "Fuzzed";
        environ.controlHost = &host;
        info.SetTypeName("fuzzed").SetDisplayName("Fuzzed");
        VorControl::ControlInstanceParams record;
        record.info = &info;
        record.updateGate = &gate;
        record.scanResults = &scanResults;
        record.problemsManager = &problems;
        record.protocol = std::make_shared<Service>(environ);
        record.typeName = environ.typeName;
        record.displayName = environ.displayName;
        return record;
    }

    VorCommon::PlatformAttributes platform{VorCommon::PlatformKind::VirtualSensor};
    VorCommon::RuntimeCache runtimeCache;
    VorCommon::ProblemsManager problems;
    VorCommon::UpdateGate gate;
    VorControl::ControlScanResults scanResults{nullptr, nullptr};
    VorControl::ControlSystemInterface systemInterface{nullptr, nullptr, nullptr};
    VorControl::ControlScanEngineInterface scanEngineInterface{nullptr};
    VorControl::ControlProtocolOperations operations{systemInterface, scanEngineInterface, runtimeCache};
    VorControl::ControlDeviceOperations deviceOperations{scanEngineInterface};
    VorControl::ControlDataCache dataCache{systemInterface, scanEngineInterface};
    VorApi::ResourceRouter router;
    VorRest::RequestProcessor requests{router};
    VorControl::ControlResourceAdaptor resources{requests};
    VorControl::ControlHost host{scanResults, operations,          dataCache,        resources, platform, runtimeCache,
                                 &problems,   scanEngineInterface, deviceOperations, 1,         3190,     3195,
                                 nullptr};
    VorControl::ControlInfo info;
    VorControl::ControlInstance instance;
    VorControl::PersistControl control;
};

std::string Content(const VorCommon::IPersistStore& store) {
    const VorCommon::PersistBuffer buffer = store.Read(Path);
    return {reinterpret_cast<const char*>(buffer.pointer) + buffer.offset, buffer.size};
}

} // namespace

/// Any file is accepted or refused, and leaves the update gate open. A service that has loaded one can be saved, and
/// the saved file is loaded and saved again equal.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    VorCommon::ArchiveStore store("never-committed.vrjob");
    store.Write(Path, data, size);
    Bench first;
    const bool loaded = first.Load(store);
    VorCommon::ArchiveStore saved("never-committed.vrjob");
    first.Save(saved);
    if (!loaded || !first.IsEnabled()) {
        return 0;
    }
    Bench second;
    VorCommon::ArchiveStore again("never-committed.vrjob");
    if (!second.Load(saved)) {
        std::abort();
    }
    second.Save(again);
    if (Content(saved) != Content(again)) {
        std::abort();
    }
    return 0;
}
