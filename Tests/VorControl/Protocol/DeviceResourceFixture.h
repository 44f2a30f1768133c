#pragma once

#include "Tests/Support/FakeDeviceOperations.h"
#include "Tests/Support/FakeOutputDevice.h"
#include "Tests/Support/FakeScanEngineInterface.h"
#include "Tests/Support/MemoryStore.h"
#include "Tests/VorControl/Protocol/ResourceFixture.h"
#include "VorControl/Control/ControlDeviceManager.h"
#include "VorControl/Control/ControlDevicePort.h"

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {

/// A service that uses devices.
class IoService : public VorControl::ControlProtocol::ProtocolBase {
public:
    IoService(const VorControl::ControlProtocol::ControlProtocolEnviron& environ,
              VorControl::IControlScanEngineInterface& scanEngine, VorControl::IControlDeviceOperations& operations)
        : ProtocolBase(environ)
        , devices(VorControl::ControlDeviceManagerCtorArgs{.serviceId = Id(),
                                                           .serviceName = "Io",
                                                           .scanEngineInterface = scanEngine,
                                                           .deviceOperations = operations,
                                                           .autoSelectDefaultDevice = false,
                                                           .defaultSerialNumber = 0}) {
        Init({.params = &params, .deviceManager = &devices});
    }

    void Start() override {}
    void Stop() override {}
    void RegisterAssemblyUpdate(const char* assemblyId) override {
        calls.push_back(std::string("RegisterAssemblyUpdate ") + assemblyId);
        if (onAssemblyUpdate) {
            onAssemblyUpdate();
        }
    }

    Vor::Params::Group params;
    VorControl::ControlDeviceManager devices;
    std::vector<std::string> calls;
    std::function<void()> onAssemblyUpdate;
};

/// What is built before the resources and outlives them.
struct DeviceParts {
    DeviceParts() {
        scanEngine.outputs["engine"] = devices;
        for (const auto& [providerId, device] : {std::pair("p0", first), std::pair("p1", second)}) {
            devices->Put(providerId, device);
            for (const unsigned long long port : {0U, 1U}) {
                device->params[port] = std::make_shared<PortParams>();
            }
        }
    }

    FakeScanEngineInterface scanEngine;
    std::shared_ptr<FakeOutputDevices> devices = std::make_shared<FakeOutputDevices>();
    std::shared_ptr<FakeOutputDevice> first = std::make_shared<FakeOutputDevice>("modelA", "1001");
    std::shared_ptr<FakeOutputDevice> second = std::make_shared<FakeOutputDevice>("modelB", "1002");
    FakeDeviceOperations operations;
    IoService* io = nullptr;
};

/// The resources of the service "io", which may use the devices "p0" (serial number 1001) and "p1" (1002), beside those
/// of "bare" and "full". Each device has the ports 0 and 1.
class DeviceResourceFixture : public DeviceParts, public ResourceFixture {
protected:
    using Json = nlohmann::json;

    DeviceResourceFixture()
        : ResourceFixture([this](TestPlugin& plugin) {
            plugin.Add(TestPlugin::Info("io"),
                       [this](const VorControl::ControlProtocol::ControlProtocolEnviron& environ) {
                           auto made = std::make_shared<IoService>(environ, scanEngine, operations);
                           io = made.get();
                           return made;
                       });
        }) {}

    VorControl::IControlInstance& Io() { return Instance("io"); }

    /// Selects the device of that serial number as "device-0".
    void Select(const std::string& serialNumber = "1001") {
        EXPECT_EQ(io->devices.CreateSelectedDevice("engine", serialNumber), "device-0");
    }
    VorControl::ControlSelectedDeviceProp& Selected() { return io->devices.SelectedDeviceProperties("device-0"); }
    std::shared_ptr<VorControl::ControlDevicePort> Port(const std::string& id) { return Selected().ports.at(id); }

    VorRest::Answer Create(const std::string& path, const Json& body) { return Ask(VorRest::Verb::Create, path, body); }
    /// What the failed request threw.
    static void Rethrow(const VorRest::Answer& answer) {
        if (answer.failure != nullptr) {
            std::rethrow_exception(answer.failure);
        }
    }
    void Delete(const std::string& path) { Document(VorRest::Verb::Delete, path); }

    /// A request with these values in the path, for a resource that is called without a router.
    static VorApi::RequestInfoEx Request(const VorApi::RequestInfo::Keys& keys) {
        return VorApi::RequestInfoEx(keys, false);
    }
    template <class Resource>
    VorApi::VorDataTree DocumentOf(const std::string& path, const VorApi::RequestInfo::Keys& keys) {
        VorApi::ResponseInfoEx response;
        VorApi::VorDataTree data;
        As<Resource>(ResourceAt(path)).Document(Request(keys), response, data);
        return data;
    }

    /// A load during which this happens.
    void Load(const std::function<void()>& work) {
        auto handler =
            manager->AddPersistenceLoadEventHandler([&](VorControl::IControlManager::PersistenceLoadOpState state) {
                if (state == VorControl::IControlManager::PersistenceLoadOpState::Begin) {
                    work();
                }
            });
        MemoryStore store;
        manager->LoadPersistDomain(VorCommon::PersistDomain::Job, store);
        manager->RemovePersistenceLoadEventHandler(handler);
    }

    /// No request has left the gate or the lock of the devices entered.
    void ExpectClosed() {
        EXPECT_EQ(environ.gate.Depth(), 0);
        io->devices.BeginLock();
        io->devices.EndLock();
        EXPECT_EQ(StatusOf([&] { io->devices.EndLock(); }), yERROR_STATE);
    }
    /// Whether the lock of the devices is held by this thread.
    bool IsLocked() {
        const bool held = StatusOf([&] { io->devices.EndLock(); }) == yOK;
        if (held) {
            io->devices.BeginLock();
        }
        return held;
    }
};

} // namespace Tests
