#pragma once

#include "VorApi/DocumentResourceBase.h"

#include <string>

namespace VorApi {
class ResourceRouter;
}

namespace Sensor::Resources {

/// Where a client without any other link begins: who answers, and links to all that the router has at its top.
class EntryResource : public VorApi::DocumentResourceBase {
public:
    /// `boot`: the id of this run of the program. The router outlives this.
    EntryResource(const VorApi::ResourceRouter& router, std::string boot);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

private:
    const VorApi::ResourceRouter& router;
    const std::string boot;
};

} // namespace Sensor::Resources
