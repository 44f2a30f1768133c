#include "Services/Modbus/SystemBlock.h"

#include "Vor/Exception.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"

namespace Services::Modbus {

using VorControl::ControlProtocol::DefaultSystemStateData;

namespace {

/// Offsets in bytes of the destination.
constexpr unsigned StateValueOffset = 0;
constexpr unsigned FirstStateOffset = 8;
constexpr unsigned NameLengthOffset = 10;
constexpr unsigned NameOffset = 12;
constexpr unsigned SecondStateOffset = 76;
constexpr unsigned ThirdStateOffset = 78;

} // namespace

void SystemBlock::Serialize(void* destination, unsigned long long destinationSize, const void* source,
                            unsigned long long sourceSize) {
    if (sourceSize != sizeof(DefaultSystemStateData)) {
        Vor::Throw(yERROR_SIZE, "Insufficient source buffer size available for data serialization.");
    }
    if (destinationSize != SerializedOutputSize()) {
        Vor::Throw(yERROR_SIZE, "Insufficient destination buffer size available for data serialization output.");
    }
    const auto& state = *static_cast<const DefaultSystemStateData*>(source);
    if (state.jobFileNameLength > state.jobFileName.size()) {
        Vor::Throw(yERROR_PARAMETER, "The job filename length specified [%d] is too long.", state.jobFileNameLength);
    }
    auto* const bytes = static_cast<unsigned char*>(destination);
    SerializeValue(bytes, StateValueOffset, state.stateValue, false);
    SerializeValue(bytes, FirstStateOffset, state.firstStateByte, false);
    SerializeValue(bytes, NameLengthOffset, state.jobFileNameLength, false);
    const auto character = [&](std::size_t i) {
        return i < state.jobFileNameLength ? static_cast<unsigned char>(state.jobFileName[i]) : 0;
    };
    for (std::size_t i = 0; i < state.jobFileName.size(); i += 2) {
        SerializeValue(bytes, NameOffset + i, static_cast<unsigned short>(character(i) << 8 | character(i + 1)), false);
    }
    SerializeValue(bytes, SecondStateOffset, state.secondStateByte, false);
    SerializeValue(bytes, ThirdStateOffset, state.thirdStateByte, false);
}

} // namespace Services::Modbus
