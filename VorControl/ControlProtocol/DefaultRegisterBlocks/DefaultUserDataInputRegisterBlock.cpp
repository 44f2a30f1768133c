#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultUserDataInputRegisterBlock.h"

#include "Vor/Exception.h"
#include "yApi/yMemory.h"

#include <algorithm>

namespace VorControl::ControlProtocol {

void DefaultUserDataInputRegisterBlock::Deserialize(void* destination, unsigned long long destinationSize,
                                                    const void* source, unsigned long long sourceSize) {
    if (sourceSize < DeserializedInputSize()) {
        Vor::Throw(yERROR_SIZE, "Insufficient source buffer size available for data deserialization.");
    }
    if (destinationSize != sizeof(DefaultUserDataInputData)) {
        Vor::Throw(yERROR_SIZE, "Insufficient destination buffer available for data deserialization output.");
    }
    Vor::ThrowIfFailed(yMemSet(destination, 0, sizeof(DefaultUserDataInputData)));
    DeserializeUserDataInputData(static_cast<DefaultUserDataInputData*>(destination),
                                 static_cast<const unsigned char*>(source));
}

void DefaultUserDataInputRegisterBlock::DeserializeUserDataInputData(DefaultUserDataInputData* data,
                                                                     const unsigned char* source) const {
    if (BytesPerRegister() != 1) {
        Vor::Throw(yERROR_CONFLICT, "This block only supports 1 byte per register.");
    }
    Vor::ThrowIfFailed(yMemCopy(data->data(), source, std::min<std::size_t>(DeserializedInputSize(), data->size())));
}

} // namespace VorControl::ControlProtocol
