#pragma once

#include "VorScan/IScanEngine.h"
#include "VorScan/Internal/ScanEngineInstance.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

/// A scanner without actions and commands that counts its instances.
class BareScanner : public VorScan::IScanner {
public:
    explicit BareScanner(int& alive)
        : alive(alive) {
        ++alive;
    }
    ~BareScanner() override { --alive; }

    VorCommon::IActionTarget* ActionTarget() override { return nullptr; }
    VorCommon::ICommandTarget* CommandTarget() override { return nullptr; }
    Vor::Event<VorScan::AlignCompletionStatus>& AlignmentCompletedEvent() override { return completed; }
    Vor::Params::Value<VorScan::AlignState>& AlignmentState() override { return state; }

private:
    int& alive;
    Vor::Event<VorScan::AlignCompletionStatus> completed;
    Vor::Params::Value<VorScan::AlignState> state;
};

class BareEngine : public VorScan::IScanEngine {
public:
    const ServiceRegistry& Services() const override { return services; }

private:
    ServiceRegistry services;
};

inline std::unique_ptr<VorScan::Internal::ScannerInstance> MakeScanner(std::string id, int& alive,
                                                                       std::vector<std::string> sensors = {}) {
    return std::make_unique<VorScan::Internal::ScannerInstance>(std::move(id), std::move(sensors),
                                                                std::make_unique<BareScanner>(alive));
}

inline std::unique_ptr<VorScan::Internal::ScanEngineInstance> MakeEngine(std::string id, std::string typeName) {
    return std::make_unique<VorScan::Internal::ScanEngineInstance>(
        std::move(id), VorScan::ScanEngineInfo(std::move(typeName)), std::make_unique<BareEngine>());
}

} // namespace Tests
