#pragma once

#include "Vor/VorGetText.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

namespace VorControl::ControlProtocol {

class DefaultControlOutputRegisterBlockInfo : public ProtocolRegisterBlockInfo {
public:
    inline static const char* const DEFAULT_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Command Output");

    DefaultControlOutputRegisterBlockInfo();
};

} // namespace VorControl::ControlProtocol
