#pragma once

#include "Sensor/Http/IUploadResource.h"
#include "Sensor/Resources/JobUploads.h"
#include "Sensor/Resources/JobsEnviron.h"
#include "VorApi/DocumentResourceBase.h"

#include <memory>

namespace Sensor::Resources {

/// The archive of each job, as bytes. Clients replace it, or create a job with it.
class JobFileResource : public VorApi::DocumentResourceBase, public Http::IUploadResource {
public:
    /// The uploads outlive this.
    JobFileResource(const JobsEnviron& environ, JobUploads& uploads)
        : environ(environ)
        , uploads(uploads) {}

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    std::unique_ptr<Http::IUpload> BeginUpload(const VorApi::RequestInfoEx& request, Http::UploadTerms terms) override;

protected:
    void RequireDocument(const VorApi::RequestInfoEx& request) override;

private:
    const JobsEnviron environ;
    JobUploads& uploads;
};

} // namespace Sensor::Resources
