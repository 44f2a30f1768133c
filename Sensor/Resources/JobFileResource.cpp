#include "Sensor/Resources/JobFileResource.h"

#include "Vor/ByteVector.h"

#include <utility>
#include <vector>

namespace Sensor::Resources {

void JobFileResource::RequireDocument(const VorApi::RequestInfoEx& request) {
    environ.jobs.RequireFile(*request.FindKey("job"));
}

void JobFileResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                               VorApi::VorDataTree&) {
    const std::string& name = *request.FindKey("job");
    environ.jobs.RequireFile(name);
    environ.tasks.Run(
        response, [jobs = environ.jobs, name] { return jobs.Archive(name); },
        [](const std::vector<unsigned char>& bytes) {
            VorApi::VorDataTree document;
            document.Set(Vor::Properties::ByteVector(bytes));
            return document;
        });
}

std::unique_ptr<Http::IUpload> JobFileResource::BeginUpload(const VorApi::RequestInfoEx& request,
                                                            Http::UploadTerms terms) {
    return uploads.Begin(*request.FindKey("job"), std::move(terms));
}

} // namespace Sensor::Resources
