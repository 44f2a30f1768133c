#include "Sensor/Resources/JobCommandResource.h"

#include "Sensor/Resources/JobProperties.h"
#include "Vor/Exception.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorApi/Path.h"

#include <utility>

namespace Sensor::Resources {

using VorCommon::PersistDomain;
using VorControl::ControlProtocolOperations;

namespace {

class NameParameters : public Vor::Params::Group {
public:
    NameParameters() {
        Register("name", name, "Name of the job to make");
        Register("replace", replace, "Replace a job of that name");
    }

    SensorJobs::Existing Existing() const {
        return replace ? SensorJobs::Existing::Replace : SensorJobs::Existing::Refuse;
    }

    Vor::Params::Value<std::string> name;
    Vor::Params::Value<bool> replace;
};

const std::string& JobOf(const VorApi::RequestInfo& request) {
    const std::string* const name = request.FindKey("job");
    if (name == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "The path names no job.");
    }
    return *name;
}

} // namespace

std::vector<std::string> JobCommandResource::Commands(const VorApi::RequestInfo& request) {
    const std::string& name = JobOf(request);
    if (!environ.jobs.Has(name)) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no job '%s'.", name);
    }
    std::vector<std::string> commands{"load", "copy", "rename", "setDefault"};
    if (environ.jobs.IsLoaded(name)) {
        commands.insert(commands.end(), {"save", "saveAs"});
    }
    return commands;
}

std::string JobCommandResource::PathOf(const VorApi::RequestInfo& request, const std::string& command) {
    return VorApi::Path::Format("/sensor/jobs/:job/commands/:command", {JobOf(request), command});
}

std::shared_ptr<CommandResourceBase::Group> JobCommandResource::Parameters(const std::string& command) {
    if (command == "copy" || command == "rename" || command == "saveAs") {
        return std::make_shared<NameParameters>();
    }
    return std::make_shared<Group>();
}

VorApi::VorDataTree JobCommandResource::Run(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                            const std::string& command, const Group& parameters) {
    const std::string& name = JobOf(request);
    const SensorJobs& jobs = environ.jobs;
    if (command == "load") {
        return RunOperation(environ.operations,
                            {.command = command,
                             .argument = name,
                             .start = [&](ControlProtocolOperations& operations,
                                          const std::string& clientId) { operations.LoadJob(clientId, name.c_str()); },
                             .loadsJob = true},
                            false, request, response);
    }
    environ.tasks.RequireRoom();
    const auto change = [&](const std::string& changed, auto work) {
        AnswerWithJob(request, response, changed, std::move(work), environ.changed);
    };
    if (command == "save") {
        const auto saved = environ.persistence.Save(PersistDomain::Job);
        // The task runs behind the save.
        change(name, [saved] { saved.get().ThrowIfFailed(); });
        return {};
    }
    if (command == "setDefault") {
        change(name, [jobs, name] { jobs.SetDefault(name); });
        return {};
    }
    const auto& made = dynamic_cast<const NameParameters&>(parameters);
    const SensorJobs::Existing existing = made.Existing();
    const std::string newName = jobs.RequireFree(made.name, existing);
    if (command == "saveAs") {
        environ.persistence.SaveJobAs(newName, existing); // raises the event of a loaded job
        AnswerWithJob(
            request, response, newName, [] {}, nullptr);
    } else if (command == "copy") {
        change(newName, [jobs, name, newName, existing] { jobs.Copy(name, newName, existing); });
    } else {
        change(newName, [jobs, name, newName, existing] { jobs.Rename(name, newName, existing); });
    }
    return {};
}

template <class Work>
void JobCommandResource::AnswerWithJob(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                       const std::string& name, Work work, std::function<void()> ended) {
    environ.tasks.Run(
        response,
        [jobs = environ.jobs, name, work = std::move(work)] {
            work();
            return jobs.Describe(name);
        },
        [request](const SensorJobs::Job& job) {
            VorApi::VorDataTree document;
            document.MakeObject();
            NodeToVorDataTree(JobProperties(job), request, document, true);
            return document;
        },
        std::move(ended));
    response.Link("vor:job", JobProperties::PathOf(name), false, VorApi::VorDataTree());
}

} // namespace Sensor::Resources
