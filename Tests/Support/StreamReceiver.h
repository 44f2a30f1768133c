#pragma once

#include "Vor/Exception.h"
#include "VorApi/IStreamReceiver.h"
#include "VorApi/VorDataTree.h"
#include "yApi/yStatus.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

/// Records what it gets.
class StreamReceiver : public VorApi::IStreamReceiver {
public:
    explicit StreamReceiver(std::string description = "receiver")
        : description(std::move(description)) {}

    void Send(const VorApi::VorDataTree& message) override {
        if (fails) {
            Vor::Throw(yERROR_FULL);
        }
        messages.push_back(message.Dump(false));
    }
    std::string Description() const override { return description; }
    void Abort() override {
        ++aborts;
        if (onAbort) {
            onAbort();
        }
    }

    std::vector<std::string> messages;
    int aborts = 0;
    bool fails = false;
    std::function<void()> onAbort;

private:
    const std::string description;
};

} // namespace Tests
