#pragma once

#include "Sensor/Resources/SensorProperties.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace Sensor::Resources {

/// How many operations of the sensor have ended, by who has started them and how they have ended.
class OperationCounts {
public:
    struct Ended {
        std::uint64_t succeeded = 0;
        std::uint64_t failed = 0;
    };

    /// Counts those that end from now on: of each service, and of OperationRunner.
    explicit OperationCounts(const SensorEnviron& environ);

    /// By the id of the service, or OperationRunner::ClientId. For any thread.
    std::map<std::string, Ended> Read() const;

private:
    /// Counted on the thread of the ends. Kept by the handlers, which stay as long as that thread.
    struct Counts {
        std::atomic<std::uint64_t> succeeded = 0;
        std::atomic<std::uint64_t> failed = 0;
    };

    std::map<std::string, std::shared_ptr<Counts>> clients;
};

} // namespace Sensor::Resources
