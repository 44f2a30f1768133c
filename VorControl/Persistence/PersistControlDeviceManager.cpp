#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Persistence/PersistControl.h"
#include "VorControl/Persistence/PersistLog.h"
#include "VorControl/Persistence/RunUpdate.h"
#include "yApi/yStatus.h"

#include <exception>
#include <string>

#include <nlohmann/json.hpp>

namespace VorControl {

using nlohmann::json;
using Persistence::LogForUser;
using Persistence::PersistLoadResult;
using Persistence::RunUpdate;

namespace {

constexpr const char* DeviceManagerKey = "deviceManager";
constexpr const char* DeviceListKey = "selectedDevicesList";

/// Runs a step of a save. A failure of it is reported to the user and with `record`, and thrown as one of the service.
template <class Step>
void RunSavingDevices(const std::string& name, const Step& step, const Vor::LocatedFormat& record) {
    try {
        step();
    } catch (const std::exception& e) {
        LogForUser(Vor::UserError, "Error saving device manager for service '%s'.", name);
        Vor::LogThrown(e, record, name);
        Vor::ThrowNested(Vor::Exception::StatusOf(e), "Error saving device manager for service '%s'", name);
    }
}

} // namespace

void PersistControl::LoadControlInstanceDeviceManager(IControlInstance& instance, const json& section) {
    const auto devices = section.find(DeviceManagerKey);
    if (devices == section.end() || !instance.HasDeviceManager() || !devices->is_object() ||
        !devices->contains(DeviceListKey)) {
        return;
    }
    try {
        LoadDeviceManagerSelectedDevicesList(instance, *devices);
        instance.RegisterAssemblyUpdate("");
    } catch (const std::exception& e) {
        const std::string& name = instance.DisplayName();
        LogForUser(Vor::UserError, "Error loading device manager for service '%s'.", name);
        Vor::LogThrown(e, "Error loading device manager for service '%s'", name);
        Vor::ThrowNested(Vor::Exception::StatusOf(e), "Error loading device manager for service '%s'", name);
    }
}

void PersistControl::LoadDeviceManagerSelectedDevicesList(IControlInstance& instance, const json& devices) {
    try {
        instance.DeviceManager().Load(devices);
    } catch (const Vor::Exception& e) {
        // What could be applied was applied.
        if (e.Status() != yERROR_PARTIAL) {
            throw;
        }
        lastLoadResult = PersistLoadResult::PartMissing;
    }
}

void PersistControl::SaveControlInstanceDeviceManager(IControlInstance& instance, json& section) const {
    if (!instance.HasDeviceManager()) {
        return;
    }
    const std::string& name = instance.DisplayName();
    const auto runLocking = [&](const auto& step) {
        RunSavingDevices(name, step, "Error locking/unlocking device manager for service '%s'");
    };
    const auto save = [&] { instance.DeviceManager().Save(section[DeviceManagerKey]); };
    runLocking([&] { instance.DeviceManagerBeginLock(); });
    RunUpdate([&] { RunSavingDevices(name, save, "Error saving device manager for service '%s'"); },
              [&] { runLocking([&] { instance.DeviceManagerEndLock(); }); });
}

} // namespace VorControl
