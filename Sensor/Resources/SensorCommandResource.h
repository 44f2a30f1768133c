#pragma once

#include "Sensor/Resources/CommandResourceBase.h"

#include <memory>
#include <string>
#include <vector>

namespace Sensor::Resources {

/// The commands of the sensor, which are operations on it.
class SensorCommandResource : public CommandResourceBase {
public:
    /// The runner outlives this.
    explicit SensorCommandResource(OperationRunner& operations)
        : operations(operations) {}

protected:
    std::vector<std::string> Commands(const VorApi::RequestInfo& request) override;
    std::string PathOf(const VorApi::RequestInfo& request, const std::string& command) override;
    std::shared_ptr<Group> Parameters(const std::string& command) override;
    VorApi::VorDataTree Run(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                            const std::string& command, const Group& parameters) override;

private:
    OperationRunner& operations;
};

} // namespace Sensor::Resources
