#pragma once

#include "VorApi/Event.h"
#include "VorScan/IScanner.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace VorScan::Internal {

/// A scanner with its sensors. Main loop only.
class ScannerInstance {
public:
    ScannerInstance(std::string id, std::vector<std::string> sensors, std::unique_ptr<IScanner> scanner)
        : id(std::move(id))
        , sensors(std::move(sensors))
        , scanner(std::move(scanner)) {}

    const std::string& Id() const { return id; }
    const std::vector<std::string>& ListSensors() const { return sensors; }
    IScanner& Scanner() { return *scanner; }
    /// Null if the scanner has no commands.
    VorCommon::ICommandTarget* CommandTarget() { return scanner->CommandTarget(); }
    /// Raised after the alignment state has changed.
    Vor::Event<>& ScannerAlignStateUpdatedEvent() { return alignStateUpdated; }

private:
    const std::string id;
    const std::vector<std::string> sensors;
    Vor::Event<> alignStateUpdated;
    const std::unique_ptr<IScanner> scanner;
};

} // namespace VorScan::Internal
