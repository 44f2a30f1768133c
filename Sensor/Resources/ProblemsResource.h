#pragma once

#include "VorApi/DocumentResourceBase.h"

namespace Sensor::Resources {

class ProblemList;

/// The problems of the sensor and of its services.
class ProblemsResource : public VorApi::DocumentResourceBase {
public:
    /// The list outlives this.
    explicit ProblemsResource(ProblemList& list)
        : list(list) {}

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

private:
    ProblemList& list;
};

} // namespace Sensor::Resources
