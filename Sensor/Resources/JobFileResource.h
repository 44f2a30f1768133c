#pragma once

#include "Sensor/Resources/JobsEnviron.h"
#include "VorApi/DocumentResourceBase.h"

namespace Sensor::Resources {

/// The archive of each job, as bytes.
class JobFileResource : public VorApi::DocumentResourceBase {
public:
    explicit JobFileResource(const JobsEnviron& environ)
        : environ(environ) {}

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

protected:
    void RequireDocument(const VorApi::RequestInfoEx& request) override;

private:
    const JobsEnviron environ;
};

} // namespace Sensor::Resources
