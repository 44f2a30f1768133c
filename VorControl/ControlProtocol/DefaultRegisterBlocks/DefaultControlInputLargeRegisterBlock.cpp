#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputLargeRegisterBlock.h"

namespace VorControl::ControlProtocol {

DefaultControlInputLargeRegisterBlock::DefaultControlInputLargeRegisterBlock(const RegisterBlockParams& params,
                                                                             ProtocolRegisterBlockInfo& info)
    : DefaultControlInputRegisterBlock(params, info, 492) {}

} // namespace VorControl::ControlProtocol
