#pragma once

#include "Tests/Support/Figures.h"
#include "Tests/Support/TestService.h"

#include <functional>

namespace Tests {

/// A service with one figure, which counts the refreshes.
class MetricsService : public TestService {
public:
    explicit MetricsService(const VorControl::ControlProtocol::ControlProtocolEnviron& environ)
        : TestService(environ) {
        VorControl::ControlProtocol::ProtocolInitParams init;
        init.params = &params;
        init.registerAssemblyGroup = &assemblies;
        init.metrics = &figures;
        Init(init);
    }

    void UpdateMetrics() override {
        if (onUpdate) {
            onUpdate();
        }
        figures.dropCount = figures.dropCount.Get() + 1;
    }
    void ResetMetrics() override { figures.dropCount = 0; }

    Figures figures;
    std::function<void()> onUpdate;
};

} // namespace Tests
