// The section of a job with the devices of a service. Any section is accepted or refused and leaves the manager's lock
// free. What was set up can be saved, and the saved section is loaded and, where its output ids can be, saved again
// equal.

#include "Vor/Exception.h"
#include "Vor/JsonText.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorCommon/IDigitalOutputProvider.h"
#include "VorCommon/IProviderManager.h"
#include "VorControl/Control/ControlDeviceManager.h"
#include "VorControl/Control/ControlDeviceOperations.h"
#include "VorControl/Control/ControlScanEngineInterface.h"
#include "VorControl/ControlProtocol/NoneGiven.h"
#include "VorScan/IScanEngine.h"
#include "VorScan/Internal/ScanEngineManager.h"
#include "VorScan/ScanEngineInfo.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace {

using VorCommon::IDigitalOutputProvider;
using OutputManager = VorCommon::IProviderManager<IDigitalOutputProvider>;

constexpr unsigned long long PortCount = 3;

struct Params : Vor::Params::Group {
    Params() {
        Register("name", name);
        Register("delay", delay);
    }
    Vor::Params::Value<std::string> name;
    Vor::Params::Value<unsigned int> delay;
};

class OutputDevice : public IDigitalOutputProvider, public VorCommon::IDeviceProvider {
public:
    explicit OutputDevice(std::string serialNumber)
        : serialNumber(std::move(serialNumber)) {}

    VorCommon::IDeviceProvider& Device() override { return *this; }
    std::string Model() const override { return "model"; }
    std::string SerialNumber() const override { return serialNumber; }
    DeviceStatus Status() const override { return DeviceStatus::Connected; }
    ChangedEvent::CallbackId AddChangedHandler(std::function<void()> handler) override {
        return changed.Add(std::move(handler));
    }
    void RemoveChangedHandler(ChangedEvent::CallbackId& id) override { changed.Remove(id); }

    yStatus SetOutputState(unsigned long long, bool, long long) override { return yOK; }
    void Enable(bool) override {}
    int BehaviourType(unsigned long long) const override { return SoftwareEvents; }
    std::string DisplayName(unsigned long long) const override { return {}; }
    std::vector<unsigned long long> Ports() const override { return {0, 1, 2}; }
    void OnDeselected() override {}
    ParamsChangedEvent::CallbackId AddParamsChangedHandler(std::function<void(unsigned long long)> handler) override {
        return paramsChanged.Add(std::move(handler));
    }
    void RemoveParamsChangedHandler(ParamsChangedEvent::CallbackId& id) override { paramsChanged.Remove(id); }
    std::shared_ptr<const Vor::Params::Group> PortParams(unsigned long long port) const override {
        return port < PortCount ? params.at(port) : nullptr;
    }
    std::shared_ptr<Vor::Params::Group> BeginUpdatePortParams(unsigned long long port) override {
        ++updates;
        return port < PortCount ? params.at(port) : nullptr;
    }
    void EndUpdatePortParams(unsigned long long) override { --updates; }

    int updates = 0; ///< that have begun and haven't ended

private:
    const std::string serialNumber;
    std::array<std::shared_ptr<Params>, PortCount> params{std::make_shared<Params>(), std::make_shared<Params>(),
                                                          std::make_shared<Params>()};
    ChangedEvent changed;
    ParamsChangedEvent paramsChanged;
};

/// The devices "p0" and "p1".
class Devices : public OutputManager {
public:
    std::map<std::string, std::weak_ptr<IDigitalOutputProvider>> Providers() const override {
        return {{"p0", first}, {"p1", second}};
    }
    ProviderAddedEvent::CallbackId AddProviderAddedHandler(
        std::function<void(const std::string&, const std::string&, const std::shared_ptr<IDigitalOutputProvider>&)>)
        override {
        return {};
    }
    void RemoveProviderAddedHandler(ProviderAddedEvent::CallbackId&) override {}
    ProviderRemovedEvent::CallbackId
    AddProviderRemovedHandler(std::function<void(const std::string&, const std::string&)>) override {
        return {};
    }
    void RemoveProviderRemovedHandler(ProviderRemovedEvent::CallbackId&) override {}

    const std::shared_ptr<OutputDevice> first = std::make_shared<OutputDevice>("1001");
    const std::shared_ptr<OutputDevice> second = std::make_shared<OutputDevice>("1002");
};

class Engine : public VorScan::IScanEngine {
public:
    explicit Engine(const std::shared_ptr<OutputManager>& devices) { services[&typeid(OutputManager)] = devices; }
    const ServiceRegistry& Services() const override { return services; }

private:
    ServiceRegistry services;
};

/// A manager whose engine "engine" has the devices.
class Bench {
public:
    Bench() {
        manager.Add(std::make_unique<VorScan::Internal::ScanEngineInstance>("engine", VorScan::ScanEngineInfo("engine"),
                                                                            std::make_unique<Engine>(devices)));
        subject = std::make_unique<VorControl::ControlDeviceManager>(
            VorControl::ControlDeviceManagerCtorArgs{.serviceId = "fuzzed",
                                                     .serviceName = "Fuzzed",
                                                     .scanEngineInterface = scanEngineInterface,
                                                     .deviceOperations = operations});
    }

    /// False when the section is refused or loaded in part.
    bool Load(const nlohmann::json& section) {
        bool loaded = true;
        try {
            subject->Load(section);
        } catch (const std::exception&) {
            loaded = false;
        }
        if (!IsLockFree() || devices->first->updates != 0 || devices->second->updates != 0) {
            std::abort();
        }
        return loaded;
    }

    nlohmann::json Saved() {
        nlohmann::json section;
        subject->Save(section);
        return section;
    }

private:
    bool IsLockFree() {
        try {
            subject->EndLock();
        } catch (const Vor::Exception&) {
            return true;
        }
        return false;
    }

    const std::shared_ptr<Devices> devices = std::make_shared<Devices>();
    VorScan::Internal::ScanEngineManager manager;
    VorControl::ControlScanEngineInterface scanEngineInterface{&manager};
    VorControl::ControlDeviceOperations operations{scanEngineInterface};
    std::unique_ptr<VorControl::ControlDeviceManager> subject;
};

/// The ids of each port ascend, and none is the one that says that none is given, as shifted blocks may have.
bool OutputIdsAreLoadable(const nlohmann::json& section) {
    for (const auto& device : section.at("selectedDevicesList")) {
        for (const auto& port : device.at("portsList")) {
            for (const auto& assembly : port.at("registerAssemblyList")) {
                int last = -1;
                for (const auto& block : assembly.at("blocks")) {
                    const int id = block.at("outputId").get<int>();
                    if (id <= last || id == VorControl::ControlProtocol::NoneGiven) {
                        return false;
                    }
                    last = id;
                }
            }
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nlohmann::json section;
    try {
        section = Vor::ParseJson(reinterpret_cast<const char*>(data), size);
    } catch (const Vor::Exception&) {
        return 0;
    }
    Bench first;
    first.Load(section);
    const nlohmann::json saved = first.Saved();
    Bench second;
    const bool loaded = second.Load(saved);
    const nlohmann::json savedAgain = second.Saved();
    if (OutputIdsAreLoadable(saved) && (!loaded || savedAgain != saved)) {
        std::abort();
    }
    return 0;
}
