#include "Services/Modbus/RegisterMap.h"

#include "Services/Modbus/BlockTypes.h"
#include "Services/Modbus/ExceptionCodes.h"
#include "Services/Modbus/FrameCodec.h"

#include <array>
#include <span>
#include <utility>

namespace Services::Modbus {

using Common::InputResult;

namespace {

constexpr std::size_t RegisterSize = 2;

/// Blocks write the low byte of each register first.
void SwapRegisters(std::span<unsigned char> bytes) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += RegisterSize) {
        std::swap(bytes[i], bytes[i + 1]);
    }
}

} // namespace

Common::RegisterFormat MakeRegisterFormat() {
    return {.bytesPerRegister = RegisterSize, .order = SwapRegisters};
}

Common::CellTypes MakeCellTypes() {
    Common::CellTypes types{
        .input = MakeControlInputType(), .output = MakeControlOutputType(), .system = MakeSystemType()};
    types.input->SetIsProtocolBigEndian(true);
    types.others.push_back(MakeScannerType());
    types.others.push_back(MakeDiagnosticsType());
    return types;
}

bool RegisterMap::Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const {
    return image.Read(RegisterSize * address, RegisterSize * count, destination);
}

unsigned char RegisterMap::Write(const RegisterWrite& write) {
    std::array<unsigned char, RegisterSize> keep;
    PutWord(keep.data(), write.keep);
    const InputResult result = cells.Write({.offset = RegisterSize * write.address,
                                            .values = write.values,
                                            .keep = write.keep == 0 ? std::span<unsigned char>() : keep,
                                            .readOffset = RegisterSize * write.readAddress,
                                            .read = write.read});
    switch (result) {
    case InputResult::OutOfRange:
        return IllegalDataAddress;
    case InputResult::Busy:
        return ServerDeviceBusy;
    case InputResult::Done:
        break;
    }
    return NoException;
}

} // namespace Services::Modbus
