#include "VorControl/ControlProtocol/ControlRegisterTypes.h"

#include "Vor/Exception.h"

namespace VorControl::ControlProtocol {

void ControlRegisterCommandData::SetCommandArgsSize(std::uint64_t size) {
    if (size > commandArgs.size()) {
        Vor::Throw(yERROR_PARAMETER);
    }
    commandArgsSize = size;
}

} // namespace VorControl::ControlProtocol
