#pragma once

#include "Vor/VorGetText.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

namespace VorControl::ControlProtocol {

class DefaultUserDataInputRegisterBlockInfo : public ProtocolRegisterBlockInfo {
public:
    inline static const char* const DEFAULT_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "User Data Input");

    DefaultUserDataInputRegisterBlockInfo();
};

} // namespace VorControl::ControlProtocol
