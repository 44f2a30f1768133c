#pragma once

#include "Vor/Exception.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/IControlManager.h"
#include "VorControl/Control/RunCaught.h"
#include "VorControl/Protocol/RequiredKey.h"

#include <atomic>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace Vor::Params {
class Group;
}

namespace VorCommon {
class ICommandTarget;
}

namespace VorControl::ControlProtocol {
class IProtocolRegisterAssembly;
}

namespace VorControl::Protocol {

/// What the resources of the services have in common. A failure of a resource is a Vor::Exception, or what a service
/// has thrown.
class ControlResourceBase : public VorApi::DocumentResourceBase {
public:
    /// The manager outlives it.
    explicit ControlResourceBase(IControlManager& manager);
    ~ControlResourceBase() override;

protected:
    using Values = std::vector<std::string>;

    /// Called on the thread that loads. While a load lasts, changes are counted instead of notified.
    virtual void OnPersistenceLoadEvent(IControlManager::PersistenceLoadOpState state);

    IControlInstance& ResolveToInstance(const std::string& id) const;
    IControlInstance& RequiredInstance(const VorApi::RequestInfo& request, const char* failureText = nullptr) const;

    /// Writes the schema of the node into the member "_schema".
    static void AppendSchema(const Vor::Properties::Node& node, VorApi::VorDataTree tree);
    /// As NodeToVorDataTree, for a node that is one of several in the document: with a schema of its own if the client
    /// wants it.
    static void WritePart(const Vor::Properties::Node& node, const VorApi::RequestInfoEx& request,
                          const VorApi::VorDataTree& tree);
    /// Notifies that the resource at the path has changed. From any thread.
    void ResourceEventHandler(const std::string& path);
    /// How many changes weren't notified since the last load began.
    unsigned int NotificationsSaved() const { return notificationsSaved.load(std::memory_order_relaxed); }
    /// Embeds the register assemblies of a service.
    static void MakeRegisterAssemblyList(const char* pattern, const std::string& relation, const std::string& serviceId,
                                         const std::vector<std::string>& ids, VorApi::ResponseInfoEx& response);
    /// The document of a register assembly: its properties, its attributes, its block types and its blocks.
    static void WriteAssembly(ControlProtocol::IProtocolRegisterAssembly& assembly,
                              const VorApi::RequestInfoEx& request, VorApi::VorDataTree& data);

    /// Embeds the commands of a target as "item" or links them as "vor:command". The pattern has the values and the
    /// command.
    static void EmbedCommands(const VorCommon::ICommandTarget& target, const char* pattern, const Values& values,
                              VorApi::ResponseInfoEx& response);
    static void LinkCommands(const VorCommon::ICommandTarget& target, const char* pattern, const Values& values,
                             VorApi::ResponseInfoEx& response);
    /// The document of a command: its id and its parameters.
    static void DescribeCommand(const VorCommon::ICommandTarget& target, const std::string& command,
                                const VorApi::RequestInfoEx& request, const VorApi::VorDataTree& data);
    /// Invokes a command. Its arguments are members of `data`, or of the member "parameters", which count more.
    static std::shared_ptr<Vor::Params::Group>
    InvokeCommand(VorCommon::ICommandTarget& target, const std::string& command, const VorApi::VorDataTree& data);
    /// The result of a command as a document, an empty object when there is none.
    static VorApi::VorDataTree ResultDocument(const std::shared_ptr<Vor::Params::Group>& result,
                                              const VorApi::RequestInfoEx& request);

    /// Runs the work. What it throws is nested in the exception that is thrown, whose text `textOf` makes of it, and
    /// whose status is that of the failure, or 0.
    template <class Work, class TextOf>
    static auto RunWrapped(const Work& work, const TextOf& textOf);

    IControlManager& controlManager;

private:
    std::atomic<bool> notificationsHeld = false;
    std::atomic<unsigned int> notificationsSaved = 0;
    IControlManager::PersistenceLoadEvent::CallbackId persistenceLoadHandle;
};

template <class Work, class TextOf>
auto ControlResourceBase::RunWrapped(const Work& work, const TextOf& textOf) {
    try {
        return work();
    } catch (const std::exception& e) {
        Vor::ThrowNested(Vor::Exception::StatusOf(e), "%s", textOf(e.what()));
    } catch (...) {
        Vor::ThrowNested(yERROR, "%s", textOf(UnknownException));
    }
}

} // namespace VorControl::Protocol
