#pragma once

#include "Sensor/Resources/JobsEnviron.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorApi/IParentResource.h"

#include <string>

namespace Sensor::Resources {

/// The jobs of the sensor, of which each can be deleted that is neither loaded nor the default.
class JobsResource : public VorApi::DocumentResourceBase, public VorApi::IParentResource {
public:
    explicit JobsResource(const JobsEnviron& environ)
        : environ(environ) {}

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

    bool Creates() const override { return false; }
    /// Fails with yERROR_UNIMPLEMENTED.
    Created Create(const VorApi::RequestInfo& request, const nlohmann::json& json) override;
    /// Fails with yERROR_STATE, since it is done later.
    void Delete(const VorApi::RequestInfo& request) override;
    void Delete(const VorApi::RequestInfo& request, VorApi::ResponseInfoEx& response) override;

protected:
    void RequireDocument(const VorApi::RequestInfoEx& request) override;

private:
    /// The name of the job at the path, which exists.
    const std::string& RequiredJob(const VorApi::RequestInfo& request) const;

    const JobsEnviron environ;
};

} // namespace Sensor::Resources
