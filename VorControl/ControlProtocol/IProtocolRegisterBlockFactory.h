#pragma once

#include <memory>

namespace VorControl::ControlProtocol {

class ProtocolRegisterBlock;
class ProtocolRegisterBlockInfo;
class RegisterBlockParams;

/// Makes the blocks of one type. Called with the lock of the assembly held.
class IProtocolRegisterBlockFactory {
public:
    virtual ~IProtocolRegisterBlockFactory() = default;

    /// The block keeps a reference to `info`, which must outlive it.
    virtual std::shared_ptr<ProtocolRegisterBlock> Create(const RegisterBlockParams& params,
                                                          ProtocolRegisterBlockInfo& info) = 0;
};

} // namespace VorControl::ControlProtocol
