#pragma once

#include "VorApi/DocumentResourceBase.h"

namespace Sensor::Resources {

class OperationRunner;

/// The last operations that clients of the resources have started.
class OperationsResource : public VorApi::DocumentResourceBase {
public:
    /// The runner outlives this.
    explicit OperationsResource(const OperationRunner& operations)
        : operations(operations) {}

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

private:
    const OperationRunner& operations;
};

} // namespace Sensor::Resources
