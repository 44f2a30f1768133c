#include "Services/Modbus/ControlInputBlock.h"

#include "VorControl/ControlProtocol/ControlRegisterTypes.h"

#include <algorithm>
#include <array>

namespace Services::Modbus {

using VorControl::ControlProtocol::ControlRegisterCommandData;

namespace {

constexpr std::size_t CommandOffset = 2;
constexpr std::size_t ArgumentsOffset = 4;
constexpr std::size_t ArgumentsSize = ControlInputBlock::InputSize - ArgumentsOffset;

} // namespace

void ControlInputBlock::Deserialize(void* destination, unsigned long long destinationSize, const void* source,
                                    unsigned long long sourceSize) {
    const auto* const bytes = static_cast<const unsigned char*>(source);
    unsigned short command = 0;
    if (sourceSize >= InputSize) {
        Deserialize16(command, bytes, CommandOffset);
    }
    if ((command & 0xFF) != ControlRegisterCommandData::SetUserData) {
        DefaultControlInputRegisterBlock::Deserialize(destination, destinationSize, source, sourceSize);
        auto& data = *static_cast<ControlRegisterCommandData*>(destination);
        if (data.commandId == ControlRegisterCommandData::LoadJob) {
            FormatFullJobFileName(data.commandArgs.data(), data.commandArgs.size());
        }
        return;
    }
    std::array<unsigned char, InputSize> withoutCommand{};
    std::copy_n(bytes, CommandOffset, withoutCommand.begin());
    DefaultControlInputRegisterBlock::Deserialize(destination, destinationSize, withoutCommand.data(),
                                                  withoutCommand.size());
    auto& data = *static_cast<ControlRegisterCommandData*>(destination);
    data.commandId = ControlRegisterCommandData::SetUserData;
    data.SetCommandArgsSize(ArgumentsSize);
    for (std::size_t i = 0; i < ArgumentsSize; ++i) {
        const std::size_t place = IsProtocolBigEndian() ? i : i ^ 1;
        data.commandArgs[i] = static_cast<char>(bytes[ArgumentsOffset + place]);
    }
}

} // namespace Services::Modbus
