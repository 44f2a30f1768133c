#include "VorControl/ControlProtocol/CompactBlocksParams.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

CompactBlocksParams::CompactBlocksParams()
    : Group("")
    , startingOutputId(65535) {
    Register("startingOutputId", startingOutputId, Translate("beApp.ctrl", "Starting Output Id"), 100);
}

} // namespace VorControl::ControlProtocol
