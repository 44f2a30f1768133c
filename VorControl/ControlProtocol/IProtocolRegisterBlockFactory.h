#pragma once

#include <memory>

namespace VorControl::ControlProtocol {

class ProtocolRegisterBlock;
class ProtocolRegisterBlockInfo;
class RegisterBlockParams;

/// Makes the blocks of one type. Called under the lock of the assembly that asks.
class IProtocolRegisterBlockFactory {
public:
    virtual ~IProtocolRegisterBlockFactory() = default;

    /// The block keeps a reference to the information object, which must outlive it.
    virtual std::shared_ptr<ProtocolRegisterBlock> Create(const RegisterBlockParams& params,
                                                          ProtocolRegisterBlockInfo& info) = 0;
};

} // namespace VorControl::ControlProtocol
