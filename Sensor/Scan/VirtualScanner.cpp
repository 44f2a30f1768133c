#include "Sensor/Scan/VirtualScanner.h"

#include <utility>

namespace Sensor::Scan {

VirtualScanner::VirtualScanner(ScannerActions::Environ environ, ScannerAlignment::Settings settings)
    : actions(std::move(environ))
    , alignment(settings) {}

} // namespace Sensor::Scan
