#include "Services/Modbus/ControlRegisters.h"

#include "Services/Modbus/FrameCodec.h"
#include "Services/Modbus/SwapRegisters.h"
#include "VorControl/ControlProtocol/RegisterBlockParams.h"

#include <algorithm>

namespace Services::Modbus {

using namespace VorControl::ControlProtocol;

namespace {

constexpr unsigned char NoCommandYet = 0; ///< statuses of a command
constexpr unsigned char InProgress = 1;

} // namespace

ControlRegisters::Cell::Cell(BlockType made)
    : type(std::move(made))
    , block(type->ConstructBlock(RegisterBlockParams()))
    , bytes(block->SerializedOutputSize(), 0) {}

template <class Record>
void ControlRegisters::Cell::Serialize(const Record& record) {
    block->Serialize(bytes.data(), bytes.size(), &record, sizeof record);
    SwapRegisters(bytes);
}

RegisterImage::Part ControlRegisters::Cell::Part() const {
    return place ? RegisterImage::Part{std::size_t{2} * *place, bytes} : RegisterImage::Part{};
}

ControlRegisters::ControlRegisters(RegisterImage& image, ICommandRunner& commands)
    : image(image)
    , commands(commands)
    , output(MakeControlOutputType())
    , system(MakeSystemType())
    , scanner(MakeScannerType())
    , diagnostics(MakeDiagnosticsType()) {}

bool ControlRegisters::Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const {
    return image.Read(address, count, destination);
}

unsigned char ControlRegisters::Write(const RegisterWrite& write) {
    CommandInput next;
    bool isCommand = false;
    const unsigned char code = ApplyWrite(write, next, isCommand);
    if (isCommand) {
        commands.Run(next);
    }
    return code;
}

// Doesn't run the command: its end may be reported, to EndCommand, before the run returns.
unsigned char ControlRegisters::ApplyWrite(const RegisterWrite& write, CommandInput& next, bool& isCommand) {
    const auto readCount = static_cast<std::uint16_t>(write.read.size() / 2);
    const std::lock_guard lock(mutex);
    if (!IsInInput(write) || (readCount > 0 && !image.Read(write.readAddress, readCount, write.read.data()))) {
        return IllegalDataAddress;
    }
    next = input;
    unsigned char* place = &next[std::size_t{2} * (write.address - *inputPlace)];
    for (std::size_t i = 0; i < write.values.size(); i += 2, place += 2) {
        PutWord(place, (Word(place) & write.keep) | (Word(&write.values[i]) & ~write.keep));
    }
    const std::uint16_t requestWord = Word(next.data());
    const bool writesRequest = write.address == *inputPlace;
    const bool isBase = writesRequest && !hasRequest && !firstRequestRuns;
    const bool changesRequest = !isBase && requestWord != Word(input.data());
    if (changesRequest && (result.commandResult == InProgress || commands.IsBusy())) {
        return ServerDeviceBusy;
    }
    input = next;
    hasRequest = hasRequest || writesRequest;
    if (isBase || changesRequest) {
        isCommand = changesRequest;
        result = {.requestWord = requestWord, .commandResult = isBase ? NoCommandYet : InProgress};
        SerializeResult();
        image.Write(std::array{InputPart(), output.Part(), system.Part()});
    } else {
        image.Write(std::array{InputPart()});
    }
    if (readCount > 0) {
        image.Read(write.readAddress, readCount, write.read.data());
    }
    return NoException;
}

bool ControlRegisters::IsInInput(const RegisterWrite& write) const {
    return inputPlace && write.address >= *inputPlace &&
           write.address + write.values.size() / 2 <= *inputPlace + ControlInputBlock::Registers;
}

void ControlRegisters::Replace(const ControlPlaces& places, std::vector<RegisterRange> ranges,
                               std::vector<unsigned char> bytes) {
    const std::lock_guard lock(mutex);
    inputPlace = places.controlInput;
    output.place = places.controlOutput;
    system.place = places.system;
    scanner.place = places.scanner;
    diagnostics.place = places.diagnostics;
    for (Cell* cell : {&output, &system, &scanner, &diagnostics}) {
        cell->type->SetIsProtocolBigEndian(places.isBigEndian);
    }
    SerializeResult();
    scanner.Serialize(scannerState);
    diagnostics.Serialize(counts);
    for (const RegisterImage::Part& part :
         {InputPart(), output.Part(), system.Part(), scanner.Part(), diagnostics.Part()}) {
        bytes.resize(std::max(bytes.size(), part.offset + part.bytes.size()));
        std::ranges::copy(part.bytes, bytes.begin() + static_cast<std::ptrdiff_t>(part.offset));
    }
    image.Replace(std::move(ranges), std::move(bytes));
}

void ControlRegisters::SetFirstRequestRuns(bool value) {
    const std::lock_guard lock(mutex);
    firstRequestRuns = value;
}

void ControlRegisters::EndCommand(unsigned char status) {
    const std::lock_guard lock(mutex);
    if (result.commandResult == InProgress) {
        result.commandResult = status;
        SerializeResult();
        image.Write(std::array{output.Part(), system.Part()});
    }
}

bool ControlRegisters::HasStates() const {
    const std::lock_guard lock(mutex);
    return system.place || scanner.place || diagnostics.place;
}

void ControlRegisters::SetSystemState(const DefaultSystemStateData& state) {
    const std::lock_guard lock(mutex);
    systemState = state;
    SerializeResult();
    image.Write(std::array{system.Part()});
}

void ControlRegisters::SetScannerState(const DefaultScannerStateData& state) {
    const std::lock_guard lock(mutex);
    scannerState = state;
    scanner.Serialize(scannerState);
    image.Write(std::array{scanner.Part()});
}

void ControlRegisters::SetDiagnostics(const Diagnostics& latest) {
    const std::lock_guard lock(mutex);
    counts = latest;
    diagnostics.Serialize(counts);
    image.Write(std::array{diagnostics.Part()});
}

// Both the answer and the system's state, which contains whether a command is in progress.
void ControlRegisters::SerializeResult() {
    output.Serialize(result);
    systemState.secondStateByte = result.commandResult == InProgress;
    system.Serialize(systemState);
}

RegisterImage::Part ControlRegisters::InputPart() const {
    return inputPlace ? RegisterImage::Part{std::size_t{2} * *inputPlace, input} : RegisterImage::Part{};
}

} // namespace Services::Modbus
