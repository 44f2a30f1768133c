#pragma once

#include "VorControl/Control/IControlScanResults.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

/// Records its calls. All handlers are in `event`.
class RecordingScanResults : public VorControl::IControlScanResults {
public:
    Vor::Event<void*>::CallbackId AddResultHandler(const std::string& id, std::function<void(void*)> handler) override {
        calls->push_back("add " + id);
        return event.Add(std::move(handler));
    }
    void RemoveResultHandler(const std::string& id, Vor::Event<void*>::CallbackId& callback) override {
        calls->push_back("remove " + id);
        event.Remove(callback);
    }
    void ProcessResultSet(void* /*resultSet*/) override { calls->push_back("process"); }
    void UpdateOutputMap(const std::string& id, const std::vector<std::string>& ids) override {
        std::string call = "map " + id;
        for (const std::string& source : ids) {
            call += " " + source;
        }
        calls->push_back(call);
    }
    void SetForwardScanResultsToProtocol(const std::string& id, bool enable) override {
        calls->push_back("forward " + id + (enable ? " on" : " off"));
    }
    void SetScanResultsFiltering(const std::string& id, bool enable) override {
        calls->push_back("filter " + id + (enable ? " on" : " off"));
    }

    std::shared_ptr<std::vector<std::string>> calls = std::make_shared<std::vector<std::string>>();
    Vor::Event<void*> event;
};

} // namespace Tests
