#include "VorControl/Protocol/ControlResourceBase.h"

#include "Vor/DocumentValidation.h"
#include "Vor/VorDataTreeSerializer.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Path.h"
#include "VorCommon/ICommandTarget.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorControl/Protocol/CommandProperties.h"

#include <nlohmann/json.hpp>

namespace VorControl::Protocol {

using ControlProtocol::IProtocolRegisterAssembly;
using VorApi::Path;
using VorApi::VorDataTree;

namespace {

/// Calls `add(path, properties)` for each command.
template <class Add>
void ForEachCommand(const VorCommon::ICommandTarget& target, const char* pattern, std::vector<std::string> values,
                    const Add& add) {
    values.emplace_back();
    for (const VorCommon::CommandInfo& command : target.ListCommands()) {
        values.back() = command.Id();
        add(Path::Format(pattern, values));
    }
}

/// Writes an array with an element for each entry of a list that is valid while the assembly is locked.
template <class List, class Write>
void WriteList(const IProtocolRegisterAssembly& assembly, VorDataTree array, const List& list, const Write& write) {
    array.MakeArray();
    ControlProtocol::AssemblyLock lock(assembly);
    for (const auto& entry : list()) {
        write(*entry, array.Append());
    }
    lock.Unlock();
}

} // namespace

ControlResourceBase::ControlResourceBase(IControlManager& manager)
    : controlManager(manager)
    , persistenceLoadHandle(manager.AddPersistenceLoadEventHandler(
          [this](IControlManager::PersistenceLoadOpState state) { OnPersistenceLoadEvent(state); })) {}

ControlResourceBase::~ControlResourceBase() {
    Vor::CleanUp([this] { controlManager.RemovePersistenceLoadEventHandler(persistenceLoadHandle); });
}

void ControlResourceBase::OnPersistenceLoadEvent(IControlManager::PersistenceLoadOpState state) {
    const bool begins = state == IControlManager::PersistenceLoadOpState::Begin;
    if (begins) {
        notificationsSaved.store(0, std::memory_order_relaxed);
    }
    notificationsHeld.store(begins, std::memory_order_relaxed);
}

IControlInstance& ControlResourceBase::ResolveToInstance(const std::string& id) const {
    return controlManager.GetInstance(id);
}

IControlInstance& ControlResourceBase::RequiredInstance(const VorApi::RequestInfo& request,
                                                        const char* failureText) const {
    return ResolveToInstance(RequiredKey(request, "protocol", failureText));
}

void ControlResourceBase::AppendSchema(const Vor::Properties::Node& node, VorDataTree tree) {
    Vor::Properties::VorDataTreeSerializer::SerializeSchema(node, tree["_schema"]);
}

void ControlResourceBase::WritePart(const Vor::Properties::Node& node, const VorApi::RequestInfoEx& request,
                                    const VorDataTree& tree) {
    NodeToVorDataTree(node, request, tree, false);
    if (request.WantsSchema()) {
        AppendSchema(node, tree);
    }
}

void ControlResourceBase::ResourceEventHandler(const std::string& path) {
    if (notificationsHeld.load(std::memory_order_relaxed)) {
        notificationsSaved.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    Notify(VorApi::Notification::Changed, path);
}

void ControlResourceBase::MakeRegisterAssemblyList(const char* pattern, const std::string& relation,
                                                   const std::string& serviceId, const std::vector<std::string>& ids,
                                                   VorApi::ResponseInfoEx& response) {
    for (const std::string& id : ids) {
        response.Embed(relation, Path::Format(pattern, {serviceId, id}), true, VorDataTree());
    }
}

void ControlResourceBase::WriteAssembly(IProtocolRegisterAssembly& assembly, const VorApi::RequestInfoEx& request,
                                        VorDataTree& data) {
    WritePart(assembly.Properties(), request, data);
    WritePart(assembly.Attributes(), request, data["attributes"]);
    const auto write = [&](const Vor::Properties::Node& node, const VorDataTree& element) {
        WritePart(node, request, element);
    };
    WriteList(
        assembly, data["supportedBlockTypes"], [&]() -> const auto& { return assembly.SupportedRegisterBlockTypes(); },
        write);
    WriteList(
        assembly, data["blocks"], [&]() -> const auto& { return assembly.AddedRegisterBlocks(); }, write);
}

void ControlResourceBase::EmbedCommands(const VorCommon::ICommandTarget& target, const char* pattern,
                                        const Values& values, VorApi::ResponseInfoEx& response) {
    ForEachCommand(target, pattern, values,
                   [&](const std::string& path) { response.Embed("item", path, true, VorDataTree()); });
}

void ControlResourceBase::LinkCommands(const VorCommon::ICommandTarget& target, const char* pattern,
                                       const Values& values, VorApi::ResponseInfoEx& response) {
    ForEachCommand(target, pattern, values,
                   [&](const std::string& path) { response.Link("vor:command", path, true, VorDataTree()); });
}

void ControlResourceBase::DescribeCommand(const VorCommon::ICommandTarget& target, const std::string& command,
                                          const VorApi::RequestInfoEx& request, const VorDataTree& data) {
    const std::shared_ptr<Vor::Params::Group> parameters = target.GetCommandParams(command);
    CommandProperties document;
    document.id = command;
    document.Register("parameters", *parameters);
    NodeToVorDataTree(document, request, data, true);
}

std::shared_ptr<Vor::Params::Group> ControlResourceBase::InvokeCommand(VorCommon::ICommandTarget& target,
                                                                       const std::string& command,
                                                                       const VorDataTree& data) {
    const std::shared_ptr<Vor::Params::Group> arguments = target.GetCommandParams(command);
    if (!data.IsNull()) {
        NodeFromVorDataTree(*arguments, data);
    }
    if (data.Contains("parameters")) {
        Vor::Properties::DeserializeDocument(*arguments, data["parameters"].ToJson(), "/parameters");
    }
    return target.InvokeCommand(command, *arguments);
}

VorDataTree ControlResourceBase::ResultDocument(const std::shared_ptr<Vor::Params::Group>& result,
                                                const VorApi::RequestInfoEx& request) {
    VorDataTree document;
    document.MakeObject();
    if (result != nullptr) {
        NodeToVorDataTree(*result, request, document, true);
    }
    return document;
}

} // namespace VorControl::Protocol
