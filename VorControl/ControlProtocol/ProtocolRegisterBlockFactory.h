#pragma once

#include "VorControl/ControlProtocol/IProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

/// Makes blocks of class T, which has a constructor with the same parameters as Create.
template <class T>
class ProtocolRegisterBlockFactory : public IProtocolRegisterBlockFactory {
public:
    std::shared_ptr<ProtocolRegisterBlock> Create(const RegisterBlockParams& params,
                                                  ProtocolRegisterBlockInfo& info) override {
        return std::make_shared<T>(params, info);
    }
};

} // namespace VorControl::ControlProtocol
