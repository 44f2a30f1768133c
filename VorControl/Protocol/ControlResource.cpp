#include "VorControl/Protocol/ControlResource.h"

#include "Vor/DocumentErrors.h"
#include "Vor/DocumentValidation.h"
#include "Vor/Logging.h"
#include "Vor/VorDataTreeSerializer.h"
#include "VorApi/AtScopeEnd.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Path.h"
#include "VorCommon/ICommandTarget.h"
#include "VorControl/Control/InstanceLocks.h"
#include "VorControl/Protocol/ControlProperties.h"
#include "yApi/yStatus.h"

#include <nlohmann/json.hpp>

namespace VorControl::Protocol {

using VorApi::Path;
using VorApi::VorDataTree;

namespace {

constexpr const char* ServicePath = "/controls/:protocol";

/// Runs the call. Returns false for a service that has no parameters.
template <class Call>
bool HasParameters(const Call& call) {
    try {
        call();
        return true;
    } catch (const Vor::Exception& e) {
        if (e.Status() != yERROR_NOT_FOUND) {
            throw;
        }
        return false;
    }
}

} // namespace

ControlResource::ControlResource(IControlManager& manager)
    : ControlResourceBase(manager)
    , paramUpdates(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddParamsUpdatedEventHandler(
                  [this](const std::string& id, bool) { ResourceEventHandler(Path::Format(ServicePath, {id})); });
          },
          &IControlInstance::RemoveParamsUpdatedEventHandler,
          "Exception thrown while removing parameters update event handlers") {}

void ControlResource::OnPersistenceLoadEvent(IControlManager::PersistenceLoadOpState state) {
    ControlResourceBase::OnPersistenceLoadEvent(state);
    if (state == IControlManager::PersistenceLoadOpState::End) {
        Notify(VorApi::Notification::Reload, "/controls");
        Vor::LogInfo("Notifications saved in ControlResource: %u", NotificationsSaved());
    }
}

void ControlResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                               VorDataTree& data) {
    if (const std::string* const id = request.FindKey("protocol")) {
        ReadOne(request, response, data, *id);
    } else {
        ReadAll(response);
    }
}

void ControlResource::RequireDocument(const VorApi::RequestInfoEx& request) {
    if (const std::string* const id = request.FindKey("protocol")) {
        ResolveToInstance(*id);
    }
}

void ControlResource::ReadAll(VorApi::ResponseInfoEx& response) const {
    for (const std::string& id : controlManager.List()) {
        response.Embed("item", Path::Format(ServicePath, {id}), true, VorDataTree());
    }
}

void ControlResource::EmbedParts(const IControlInstance& instance, VorApi::ResponseInfoEx& response) {
    if (instance.HasDeviceManager()) {
        response.Embed("vor:availableIoDevices", Path::Format("/controls/:protocol/availableDevices", {instance.Id()}),
                       false, VorDataTree());
        response.Embed("vor:ioDevices", Path::Format("/controls/:protocol/devices", {instance.Id()}), false,
                       VorDataTree());
    }
    if (instance.HasProtocolOutput()) {
        response.Embed("vor:datasources", Path::Format("/controls/:protocol/outputs", {instance.Id()}), false,
                       VorDataTree());
    }
    if (instance.HasRegisterAssemblyGroup()) {
        MakeRegisterAssemblyList("/controls/:protocol/registerAssemblies/:registerAssembly", "vor:registerAssembly",
                                 instance.Id(), instance.RegisterAssemblyList(), response);
    }
}

void ControlResource::ReadOne(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response, VorDataTree& data,
                              const std::string& id) const {
    ControlProperties document;
    IControlInstance& instance = ResolveToInstance(id);
    EmbedParts(instance, response);
    if (const VorCommon::ICommandTarget* const target = instance.CommandTarget()) {
        LinkCommands(*target, "/controls/:protocol/commands/:command", {id}, response);
    }
    document.enabled = instance.IsEnabled();
    document.id = instance.Id();
    document.typeName = instance.TypeName();
    document.displayName = instance.DisplayName();
    std::shared_ptr<Vor::Params::Group> parameters;
    if (HasParameters([&] { parameters = instance.Params(); })) {
        document.Register("parameters", *parameters);
    }

    InstancePropertiesLock lock(instance);
    const Vor::Params::Group& properties = instance.Properties();
    Vor::Properties::VorDataTreeSerializer::Serialize(properties, data);
    NodeToVorDataTree(document, request, data, true);
    if (request.WantsSchema()) {
        AppendSchema(properties, data);
    }
    lock.Unlock();
}

void ControlResource::UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) {
    IControlInstance& instance = RequiredInstance(request, "Request is missing service name");
    try {
        ApplyUpdate(instance, json);
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "EXCEPTION THROWN: ");
        throw;
    }
}

void ControlResource::ApplyUpdate(IControlInstance& instance, const nlohmann::json& json) {
    ControlPropertiesUpdate update;
    update.enabled = instance.IsEnabled();
    std::shared_ptr<Vor::Params::Group> parameters;
    const bool begun = HasParameters([&] { parameters = instance.BeginUpdateParameters(); });
    Vor::AtScopeEnd updateEnd([&] {
        if (begun) {
            instance.EndUpdateParameters();
        }
    });
    const bool hasEnabled = json.is_object() && json.contains("enabled");
    const bool hasParameters = json.contains("parameters") && parameters != nullptr;
    Vor::DocumentErrors errors;
    if (hasEnabled) {
        Vor::Properties::ValidateDocument(update, json, errors, "");
    }
    if (hasParameters) {
        Vor::Properties::ValidateDocument(*parameters, json["parameters"], errors, "/parameters");
    }
    errors.ThrowIfAny();
    if (hasParameters) {
        NodeFromJson(*parameters, json["parameters"]);
        instance.ParamsUpdate();
    }
    if (hasEnabled) {
        NodeFromJson(update, json);
        instance.Enable(update.enabled);
    }
    updateEnd.End();
}

} // namespace VorControl::Protocol
