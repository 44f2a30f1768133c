#pragma once

#include "VorControl/ControlProtocol/IProtocolRegisterBlockFactory.h"

namespace VorControl::ControlProtocol {

/// Makes blocks of class T, which is constructed with the parameters of the request and its type information.
template <class T>
class ProtocolRegisterBlockFactory : public IProtocolRegisterBlockFactory {
public:
    std::shared_ptr<ProtocolRegisterBlock> Create(const RegisterBlockParams& params,
                                                  ProtocolRegisterBlockInfo& info) override {
        return std::make_shared<T>(params, info);
    }
};

} // namespace VorControl::ControlProtocol
