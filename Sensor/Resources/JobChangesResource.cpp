#include "Sensor/Resources/JobChangesResource.h"

#include "Sensor/Resources/JobProperties.h"

namespace Sensor::Resources {

void JobChangesResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                  VorApi::VorDataTree&) {
    environ.tasks.RequireRoom();
    environ.tasks.Run(
        response,
        [jobs = environ.jobs, content = environ.persistence.ContentToSave(VorCommon::PersistDomain::Job)] {
            return jobs.ChangesOf(content);
        },
        [request](const Jobs::JobChanges& changes) {
            VorApi::VorDataTree document;
            document.MakeObject();
            NodeToVorDataTree(JobChangesProperties(changes), request, document, true);
            return document;
        });
}

} // namespace Sensor::Resources
