#include "Sensor/Resources/JobsResource.h"

#include "Sensor/Resources/JobProperties.h"
#include "Vor/Exception.h"
#include "VorApi/Path.h"

namespace Sensor::Resources {

using VorApi::VorDataTree;

const std::string& JobsResource::RequiredJob(const VorApi::RequestInfo& request) const {
    const std::string* const name = request.FindKey("job");
    if (name == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "The path names no job.");
    }
    if (!environ.jobs.Has(*name)) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no job '%s'.", *name);
    }
    return *name;
}

void JobsResource::RequireDocument(const VorApi::RequestInfoEx& request) {
    if (request.FindKey("job") != nullptr) {
        RequiredJob(request);
    }
}

void JobsResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response, VorDataTree&) {
    if (request.FindKey("job") == nullptr) {
        for (const std::string& name : environ.jobs.Names()) {
            response.Embed("item", JobProperties::PathOf(name), true, VorDataTree());
        }
        return;
    }
    const std::string& name = RequiredJob(request);
    response.Link("vor:file", VorApi::Path::Format("/sensor/jobs/:job/file", {name}), false, VorDataTree());
    if (environ.jobs.IsLoaded(name)) {
        response.Link("vor:changes", "/sensor/jobs/loaded/changes", false, VorDataTree());
    }
    environ.tasks.Run(
        response, [jobs = environ.jobs, name] { return jobs.Describe(name); },
        [request](const SensorJobs::Job& job) {
            VorDataTree document;
            document.MakeObject();
            NodeToVorDataTree(JobProperties(job), request, document, true);
            return document;
        });
}

VorApi::IParentResource::Created JobsResource::Create(const VorApi::RequestInfo&, const nlohmann::json&) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

void JobsResource::Delete(const VorApi::RequestInfo&) {
    Vor::Throw(yERROR_STATE, "A job is deleted later.");
}

void JobsResource::Delete(const VorApi::RequestInfo& request, VorApi::ResponseInfoEx& response) {
    const std::string& name = RequiredJob(request);
    environ.tasks.Run(
        response,
        [jobs = environ.jobs, name] {
            jobs.Delete(name);
            return true;
        },
        [changed = environ.changed](bool) {
            changed();
            return VorDataTree();
        });
}

} // namespace Sensor::Resources
