#include "Sensor/Resources/OperationCounts.h"

#include "Sensor/Resources/OperationRunner.h"
#include "VorControl/Control/ControlModule.h"
#include "VorControl/Control/IControlManager.h"
#include "yApi/yStatus.h"

#include <vector>

namespace Sensor::Resources {

// A removal would remove the handlers of the services, too.
OperationCounts::OperationCounts(const SensorEnviron& environ) {
    std::vector<std::string> ids = environ.services.List();
    ids.emplace_back(OperationRunner::ClientId);
    for (const std::string& id : ids) {
        const auto counts = std::make_shared<Counts>();
        clients.emplace(id, counts);
        environ.module.Operations().AddOpEndEventHandler(id, [counts](int status) {
            (status == yOK ? counts->succeeded : counts->failed).fetch_add(1, std::memory_order_relaxed);
        });
    }
}

std::map<std::string, OperationCounts::Ended> OperationCounts::Read() const {
    std::map<std::string, Ended> read;
    for (const auto& [id, counts] : clients) {
        read.emplace(id, Ended{.succeeded = counts->succeeded.load(std::memory_order_relaxed),
                               .failed = counts->failed.load(std::memory_order_relaxed)});
    }
    return read;
}

} // namespace Sensor::Resources
