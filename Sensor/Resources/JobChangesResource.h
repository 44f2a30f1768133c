#pragma once

#include "Sensor/Resources/JobsEnviron.h"
#include "VorApi/DocumentResourceBase.h"

namespace Sensor::Resources {

/// What differs between the loaded job and its file.
class JobChangesResource : public VorApi::DocumentResourceBase {
public:
    explicit JobChangesResource(const JobsEnviron& environ)
        : environ(environ) {}

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

protected:
    void RequireDocument(const VorApi::RequestInfoEx&) override {}

private:
    const JobsEnviron environ;
};

} // namespace Sensor::Resources
