#pragma once

#include "Sensor/Resources/SensorProperties.h"
#include "Vor/LoopCore.h"
#include "VorApi/DocumentResourceBase.h"

namespace Sensor::Resources {

/// The sensor as a whole: its state, its job, its services and how many problems there are.
class SensorResource : public VorApi::DocumentResourceBase {
public:
    explicit SensorResource(const SensorEnviron& environ);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

private:
    const SensorEnviron environ;
    const Vor::LoopCore::Time start;
};

} // namespace Sensor::Resources
