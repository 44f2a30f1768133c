#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"

#include "Vor/Exception.h"
#include "yApi/yMemory.h"

namespace VorControl::ControlProtocol {

DefaultSystemStateRegisterBlock::DefaultSystemStateRegisterBlock(const RegisterBlockParams& params,
                                                                 ProtocolRegisterBlockInfo& info)
    : DefaultSystemStateRegisterBlock(params, info, Offsets()) {}

DefaultSystemStateRegisterBlock::DefaultSystemStateRegisterBlock(const RegisterBlockParams& params,
                                                                 ProtocolRegisterBlockInfo& info,
                                                                 const Offsets& offsets)
    : ProtocolRegisterBlock(params, info)
    , offsets(offsets) {}

void DefaultSystemStateRegisterBlock::Serialize(void* destination, unsigned long long destinationSize,
                                                const void* source, unsigned long long sourceSize) {
    if (sourceSize != sizeof(DefaultSystemStateData)) {
        Vor::Throw(yERROR_SIZE, "Insufficient source buffer size available for data serialization.");
    }
    if (destinationSize != SerializedOutputSize()) {
        Vor::Throw(yERROR_SIZE, "Insufficient destination buffer size available for data serialization output.");
    }
    const auto* const data = static_cast<const DefaultSystemStateData*>(source);
    if (data->jobFileNameLength > JobFileNameMaxSize()) {
        Vor::Throw(yERROR_PARAMETER, "The job filename length specified [%d] is too long.", data->jobFileNameLength);
    }
    SerializeSystemStatsData(static_cast<unsigned char*>(destination), data);
}

void DefaultSystemStateRegisterBlock::SerializeSystemStatsData(unsigned char* buffer,
                                                               const DefaultSystemStateData* data) const {
    SerializeValue<unsigned char>(buffer, offsets.firstStateByte, data->firstStateByte, false);
    SerializeValue<unsigned long long>(buffer, offsets.stateValue, data->stateValue, false);
    SerializeValue<unsigned char>(buffer, offsets.jobFileNameLength, data->jobFileNameLength, false);
    SerializeValue<unsigned char>(buffer, offsets.secondStateByte, data->secondStateByte, false);
    SerializeValue<unsigned char>(buffer, offsets.thirdStateByte, data->thirdStateByte, false);
    Vor::ThrowIfFailed(
        yMemSet(buffer + offsets.jobFileName, 0, static_cast<std::size_t>(BytesPerRegister()) * JobFileNameMaxSize()));
    for (unsigned char i = 0; i < data->jobFileNameLength; ++i) {
        SerializeValue<unsigned char>(buffer,
                                      offsets.jobFileName + static_cast<unsigned long long>(BytesPerRegister()) * i,
                                      static_cast<unsigned char>(data->jobFileName[i]), false);
    }
}

} // namespace VorControl::ControlProtocol
