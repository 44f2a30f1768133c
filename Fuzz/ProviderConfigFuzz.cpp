#include "Vor/Exception.h"
#include "Vor/JsonText.h"
#include "Vor/LogOutput.h"
#include "VorApi/Params/Array.h"
#include "VorApi/ResourceRouter.h"
#include "VorCommon/PlatformAttributes.h"
#include "VorCommon/ProblemsManager.h"
#include "VorCommon/RuntimeCache.h"
#include "VorCommon/UpdateGate.h"
#include "VorControl/Control/ControlDataCache.h"
#include "VorControl/Control/ControlDeviceOperations.h"
#include "VorControl/Control/ControlHost.h"
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
#include "VorControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "VorControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"
#include "VorRest/RequestProcessor.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;
using VorCommon::PersistDomain;
using VorControl::Persistence::PersistLoadResult;
using namespace VorControl::ControlProtocol;

class Settings : public Vor::Params::Group {
public:
    Settings() {
        Register("port", port);
        Register("names", names);
    }

    Vor::Params::Value<unsigned short> port{502};
    Vor::Params::Value<std::vector<std::string>> names;
};

/// Saves parameters, two assemblies and an output map in the job, and uses no scan results.
class Service : public ProtocolBase {
public:
    Service(const ControlProtocolEnviron& environ, std::shared_ptr<IProtocolOutput> map)
        : ProtocolBase(environ)
        , map(std::move(map)) {
        for (const auto& assembly :
             {std::make_shared<ProtocolRegisterAssemblyBase>(true, 100, 999, "addressed", "Map"),
              std::make_shared<ProtocolRegisterAssemblyBase>(false, 0, 99, "numbered", "List")}) {
            assembly->AddSupportedBlockType(std::make_unique<DefaultMeasurementValueRegisterBlockInfo>());
            assembly->AddSupportedBlockType(std::make_unique<DefaultStampRegisterBlockInfo>());
            group->Add(assembly);
        }
        provider.RegisterParams(PersistDomain::Job);
        provider.RegisterOutputsMap(PersistDomain::Job);
        provider.RegisterRegisterAssemblyGroup(PersistDomain::Job);
    }

    void Start() override {}
    void Stop() override {}
    using ProtocolBase::Params;
    std::shared_ptr<Vor::Params::Group> Params(PersistDomain) const override { return settings; }
    using ProtocolBase::ParamsVersion;
    const char* ParamsVersion(PersistDomain) const override { return "2"; }
    bool SupportedParamsVersion(PersistDomain, const char* version) const override { return version[0] == '1'; }
    using ProtocolBase::Outputs;
    std::shared_ptr<IProtocolOutput> Outputs(PersistDomain) override { return map; }
    std::shared_ptr<IProtocolRegisterAssemblyGroup> RegisterAssemblyGroup(PersistDomain) override { return group; }
    const char* RegisterAssemblyVersion(PersistDomain, const char*) override { return "2"; }

    VorControl::Providers::ControlPersistenceProvider provider{*this};

protected:
    void ParamsResetImpl(PersistDomain) override {
        settings->port = 502;
        settings->names = std::vector<std::string>();
    }
    std::shared_ptr<Vor::Params::Group> BeginUpdateParamsImpl(PersistDomain, const char*) override { return settings; }
    /// The set of parameters changes again as long as the port is odd.
    bool UpdateDynamicParamsImpl(PersistDomain) override { return settings->port.Get() % 2 != 0; }
    void OutputsMapResetImpl(PersistDomain) override { map->Clear(); }
    std::shared_ptr<IProtocolOutput> BeginUpdateOutputsMapImpl(PersistDomain, const char*) override { return map; }
    void RegisterAssemblyGroupResetImpl(PersistDomain) override {
        for (const std::string& id : group->List()) {
            group->RegisterAssembly(id.c_str())->InitDefaultRegisterBlocksForRegisterAssembly();
        }
    }
    std::shared_ptr<IProtocolRegisterAssembly> BeginUpdateRegisterAssemblyImpl(PersistDomain, const char* id,
                                                                               const char*) override {
        return group->RegisterAssembly(id);
    }

private:
    const std::shared_ptr<Settings> settings = std::make_shared<Settings>();
    const std::shared_ptr<IProtocolOutput> map;
    const std::shared_ptr<ProtocolRegisterAssemblyGroup> group = std::make_shared<ProtocolRegisterAssemblyGroup>();
};

/// What the services need of the sensor.
class Sensor {
public:
    Service Make(std::shared_ptr<IProtocolOutput> map) {
        ControlProtocolEnviron environ;
        environ.typeName = "fuzzed";
        environ.displayName = "Fuzzed";
        environ.controlHost = &host;
        return {environ, std::move(map)};
    }

private:
    VorCommon::PlatformAttributes platform{VorCommon::PlatformKind::VirtualSensor};
    VorCommon::RuntimeCache runtimeCache;
    VorCommon::ProblemsManager problems;
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
};

json Saved(Service& service) {
    json section;
    service.provider.Save(PersistDomain::Job, section);
    return section;
}

/// What a service has loaded must be saved, and when another service loads that without changes, saved again equal.
template <class Map, class... Arguments>
void RunOn(Sensor& sensor, const json& section, const Arguments&... arguments) {
    auto first = sensor.Make(std::make_shared<Map>(arguments...));
    first.provider.Load(PersistDomain::Job, section);
    const json saved = Saved(first);
    auto second = sensor.Make(std::make_shared<Map>(arguments...));
    if (second.provider.Load(PersistDomain::Job, saved) == PersistLoadResult::None &&
        Saved(second).dump() != saved.dump()) {
        std::abort();
    }
    first.provider.Init(PersistDomain::Job);
    auto fresh = sensor.Make(std::make_shared<Map>(arguments...));
    if (Saved(first) != Saved(fresh)) {
        std::abort();
    }
}

} // namespace

/// A service with a persistence provider accepts or refuses any section of a job's file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Sensor sensor;
    json section;
    try {
        section = Vor::ParseJson(reinterpret_cast<const char*>(data), size);
    } catch (const Vor::Exception&) {
        return 0;
    }
    RunOn<StandardProtocolOutputMap>(sensor, section, std::uint16_t{8}, std::uint16_t{0}, std::uint16_t{99});
    RunOn<TextIdStandardProtocolOutputMap>(sensor, section, std::uint16_t{8});
    return 0;
}
