#pragma once

#include "Vor/VorGetText.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

namespace VorControl::ControlProtocol {

class DefaultStringRegisterBlockInfo : public ProtocolRegisterBlockInfo {
public:
    inline static const char* const DEFAULT_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "String");

    /// Eight bytes of text by default, in registers of 1 or 2 bytes.
    explicit DefaultStringRegisterBlockInfo(unsigned char bytesPerRegister);
};

} // namespace VorControl::ControlProtocol
