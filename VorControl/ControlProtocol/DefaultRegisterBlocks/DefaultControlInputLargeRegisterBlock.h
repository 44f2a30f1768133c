#pragma once

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// A client's command with 492 bytes of user data.
class DefaultControlInputLargeRegisterBlock : public DefaultControlInputRegisterBlock {
public:
    DefaultControlInputLargeRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info);
};

} // namespace VorControl::ControlProtocol
