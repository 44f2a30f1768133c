#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlock.h"

#include "Vor/Exception.h"

namespace VorControl::ControlProtocol {

void DefaultControlOutputRegisterBlock::Serialize(void* destination, unsigned long long destinationSize,
                                                  const void* source, unsigned long long sourceSize) {
    if (sourceSize != sizeof(DefaultCommandResultData)) {
        Vor::Throw(yERROR_SIZE, "Insufficient source buffer size available for data serialization.");
    }
    if (destinationSize != SerializedOutputSize()) {
        Vor::Throw(yERROR_SIZE, "Insufficient destination buffer available for data serialization output.");
    }
    SerializeCommandResultData(static_cast<unsigned char*>(destination),
                               static_cast<const DefaultCommandResultData*>(source));
}

void DefaultControlOutputRegisterBlock::SerializeCommandResultData(unsigned char* buffer,
                                                                   const DefaultCommandResultData* data) const {
    SerializeValue<unsigned short>(buffer, requestWordOffset, data->requestWord, false);
    SerializeValue<unsigned char>(buffer, commandResultOffset, data->commandResult, false);
}

} // namespace VorControl::ControlProtocol
