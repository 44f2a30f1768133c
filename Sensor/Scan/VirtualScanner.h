#pragma once

#include "Sensor/Scan/ScannerActions.h"
#include "Sensor/Scan/ScannerAlignment.h"
#include "VorScan/IScanner.h"

namespace Sensor::Scan {

/// The scanner of the virtual sensor in its scan engine. For the main loop.
class VirtualScanner : public VorScan::IScanner {
public:
    VirtualScanner(ScannerActions::Environ environ, ScannerAlignment::Settings settings);

    VorCommon::IActionTarget* ActionTarget() override { return &actions; }
    VorCommon::ICommandTarget* CommandTarget() override { return &alignment; }
    Vor::Event<VorScan::AlignCompletionStatus>& AlignmentCompletedEvent() override {
        return alignment.CompletedEvent();
    }
    Vor::Params::Value<VorScan::AlignState>& AlignmentState() override { return alignment.State(); }

    ScannerAlignment& Alignment() { return alignment; }

private:
    ScannerActions actions;
    ScannerAlignment alignment;
};

} // namespace Sensor::Scan
