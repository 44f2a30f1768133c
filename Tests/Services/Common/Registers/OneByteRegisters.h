#pragma once

#include "Services/Common/Registers/CommandCells.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlockInfo.h"

#include <functional>
#include <memory>
#include <vector>

namespace Services::Common {

using Bytes = std::vector<unsigned char>;

inline CellTypes OneByteCellTypes() {
    using namespace VorControl::ControlProtocol;
    CellTypes types{.input = std::make_unique<DefaultControlInputRegisterBlockInfo>(),
                    .output = std::make_unique<DefaultControlOutputRegisterBlockInfo>(),
                    .system = std::make_unique<DefaultSystemStateRegisterBlockInfo>()};
    types.others.push_back(std::make_unique<DefaultScannerStateRegisterBlockInfo>(true));
    return types;
}

/// Records the commands.
class RecordingRunner : public ICommandRunner {
public:
    bool IsBusy() const override { return busy; }
    void Run(const VorControl::ControlProtocol::ControlRegisterCommandData& command) override {
        commands.push_back(command);
        if (onRun) {
            onRun();
        }
    }

    bool busy = false;
    std::vector<VorControl::ControlProtocol::ControlRegisterCommandData> commands;
    std::function<void()> onRun;
};

} // namespace Services::Common
