#pragma once

#include "Vor/VorGetText.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

namespace VorControl::ControlProtocol {

class DefaultScannerStateRegisterBlockInfo : public ProtocolRegisterBlockInfo {
public:
    inline static const char* const DEFAULT_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Sensor Group State");

    /// isOptional: an assembly may have no such block.
    explicit DefaultScannerStateRegisterBlockInfo(bool isOptional);
};

} // namespace VorControl::ControlProtocol
