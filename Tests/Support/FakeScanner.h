#pragma once

#include "VorScan/IScanEngine.h"
#include "VorScan/IScanner.h"
#include "VorScan/Internal/ScanEngineManager.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

/// Has the actions and commands that a test sets, and records its calls. An empty hook returns an empty group.
class FakeTarget : public VorCommon::IActionTarget, public VorCommon::ICommandTarget {
public:
    using Parameters = std::shared_ptr<Vor::Properties::Structure>;
    using Result = std::shared_ptr<Vor::Params::Group>;

    std::vector<std::string> actions;
    std::vector<std::string> commands;
    bool hasCommandParams = true;
    std::function<Parameters()> onParameters;
    std::function<Result(Vor::Properties::Structure& parameters)> onExecute;
    std::vector<std::string> calls;
    Parameters lastParameters; ///< of ActionParameters

    std::vector<VorCommon::ActionInfo> Actions() const override {
        std::vector<VorCommon::ActionInfo> list;
        for (const auto& id : actions) {
            list.emplace_back(id, id);
        }
        return list;
    }

    bool HasAction(const std::string& id) const override { return std::ranges::count(actions, id) > 0; }

    Parameters ActionParameters(const std::string& id) override {
        calls.push_back("ActionParameters " + id);
        lastParameters = onParameters ? onParameters() : std::make_shared<Vor::Params::Group>();
        return lastParameters;
    }

    Result ExecuteAction(const std::string& id, const Parameters& params) override {
        calls.push_back("ExecuteAction " + id);
        return Execute(*params);
    }

    std::vector<VorCommon::CommandInfo> ListCommands() const override {
        std::vector<VorCommon::CommandInfo> list;
        for (const auto& id : commands) {
            list.emplace_back(id, id);
        }
        return list;
    }

    Result GetCommandParams(const std::string& id) const override {
        const_cast<FakeTarget*>(this)->calls.push_back("GetCommandParams " + id);
        return hasCommandParams ? std::make_shared<Vor::Params::Group>() : nullptr;
    }

    Result InvokeCommand(const std::string& id, Vor::Params::Group& params) override {
        calls.push_back("InvokeCommand " + id);
        return Execute(params);
    }

    bool IsCommandSupported(const std::string& id) override { return std::ranges::count(commands, id) > 0; }

private:
    Result Execute(Vor::Properties::Structure& params) {
        return onExecute ? onExecute(params) : std::make_shared<Vor::Params::Group>();
    }
};

class FakeScanner : public VorScan::IScanner {
public:
    FakeTarget target;
    bool hasActions = true;
    bool hasCommands = true;
    Vor::Event<VorScan::AlignCompletionStatus> alignmentCompleted;
    Vor::Params::Value<VorScan::AlignState> alignmentState;

    VorCommon::IActionTarget* ActionTarget() override { return hasActions ? &target : nullptr; }
    VorCommon::ICommandTarget* CommandTarget() override { return hasCommands ? &target : nullptr; }
    Vor::Event<VorScan::AlignCompletionStatus>& AlignmentCompletedEvent() override { return alignmentCompleted; }
    Vor::Params::Value<VorScan::AlignState>& AlignmentState() override { return alignmentState; }
};

class FakeScanEngine : public VorScan::IScanEngine {
public:
    ServiceRegistry services;

    const ServiceRegistry& Services() const override { return services; }
};

inline FakeScanEngine& AddEngine(VorScan::Internal::ScanEngineManager& manager, const std::string& id,
                                 const std::string& typeName) {
    auto engine = std::make_unique<FakeScanEngine>();
    FakeScanEngine& added = *engine;
    manager.Add(std::make_unique<VorScan::Internal::ScanEngineInstance>(id, VorScan::ScanEngineInfo(typeName),
                                                                        std::move(engine)));
    return added;
}

inline FakeScanner& AddScanner(VorScan::Internal::ScanEngineManager& manager, const std::string& engineId,
                               const std::string& id, std::vector<std::string> sensors = {"sensor"}) {
    auto scanner = std::make_unique<FakeScanner>();
    FakeScanner& added = *scanner;
    manager.GetInstance(engineId).AddScanner(
        std::make_unique<VorScan::Internal::ScannerInstance>(id, std::move(sensors), std::move(scanner)));
    return added;
}

} // namespace Tests
