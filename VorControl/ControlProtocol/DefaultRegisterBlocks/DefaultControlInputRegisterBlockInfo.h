#pragma once

#include "Vor/VorGetText.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

namespace VorControl::ControlProtocol {

class DefaultControlInputRegisterBlockInfo : public ProtocolRegisterBlockInfo {
public:
    inline static const char* const DEFAULT_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Command Input");

    DefaultControlInputRegisterBlockInfo();
};

} // namespace VorControl::ControlProtocol
