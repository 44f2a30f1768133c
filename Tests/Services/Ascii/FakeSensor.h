#pragma once

#include "Services/Ascii/ISensor.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Services::Ascii {

/// Records the commands. They end at once, or when a test calls End.
class FakeSensor : public ISensor {
public:
    bool Run(const VorControl::ControlProtocol::ControlRegisterCommandData& command,
             const std::shared_ptr<PendingAnswer>& answer) override {
        if (running != nullptr) {
            return false;
        }
        commands.push_back(command);
        running = answer;
        if (endsAtOnce) {
            End(yOK);
        }
        return true;
    }
    void ReadState(const std::shared_ptr<PendingAnswer>& answer) override {
        answer->isScanning = true;
        answer->alignment = 1;
        answer->isBusy = running != nullptr;
        answer->job = "demo \"1\".vrjob";
        answer->End(stateStatus);
    }

    bool ReadResource(ReadTarget target, const std::shared_ptr<PendingAnswer>& answer) override {
        if (!hasRoomForReads) {
            return false;
        }
        targets.push_back(target.path + " " + target.pointer);
        answer->document = document;
        answer->End(yOK);
        return true;
    }

    void End(yStatus status) { std::exchange(running, nullptr)->End(status); }

    /// Returns "ID TEXT" of each command since the last call.
    std::vector<std::string> NewCommands() {
        std::vector<std::string> texts;
        for (const auto& command : std::exchange(commands, {})) {
            texts.push_back(std::to_string(command.commandId) + " " + command.commandArgs.data());
        }
        return texts;
    }

    bool endsAtOnce = true;
    yStatus stateStatus = yOK;
    bool hasRoomForReads = true;
    std::string document = R"({"a":[1,2]})";
    std::vector<std::string> targets; ///< "PATH POINTER" of each read
    std::shared_ptr<PendingAnswer> running;
    std::vector<VorControl::ControlProtocol::ControlRegisterCommandData> commands;
};

} // namespace Services::Ascii
