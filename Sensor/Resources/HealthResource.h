#pragma once

#include "VorApi/DocumentResourceBase.h"

namespace Sensor::Resources {

/// Answers as long as the main loop turns.
class HealthResource : public VorApi::DocumentResourceBase {
public:
    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
};

} // namespace Sensor::Resources
