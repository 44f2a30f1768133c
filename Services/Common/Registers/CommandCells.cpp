#include "Services/Common/Registers/CommandCells.h"

#include "Vor/Exception.h"
#include "VorControl/ControlProtocol/RegisterBlockParams.h"

#include <algorithm>
#include <utility>

namespace Services::Common {

using namespace VorControl::ControlProtocol;

namespace {

constexpr std::size_t RequestWordSize = 2;

} // namespace

CommandCells::CommandCells(RegisterImage& image, ICommandRunner& commands, CellTypes types,
                           const RegisterFormat& format)
    : image(image)
    , commands(commands)
    , inputType(std::move(types.input))
    , inputBlock(inputType->ConstructBlock(RegisterBlockParams()))
    , next(inputType->DeserializedInputSize(), 0)
    , input(next)
    , output(std::move(types.output), format)
    , system(std::move(types.system), format) {
    for (BlockType& type : types.others) {
        others.emplace_back(std::move(type), format);
    }
}

InputResult CommandCells::Write(const InputWrite& write) {
    bool isCommand = false;
    const InputResult outcome = ApplyWrite(write, isCommand);
    if (isCommand) {
        Run();
    }
    return outcome;
}

// Doesn't run the command: its end may be reported, to EndCommand, before the run returns.
InputResult CommandCells::ApplyWrite(const InputWrite& write, bool& isCommand) {
    const bool reads = !write.read.empty();
    const std::lock_guard lock(mutex);
    if (!IsInInput(write) || (reads && !image.Read(write.readOffset, write.read.size(), write.read.data()))) {
        return InputResult::OutOfRange;
    }
    next = input;
    unsigned char* const place = &next[write.offset - *inputPlace];
    for (std::size_t i = 0; i < write.values.size(); ++i) {
        const unsigned char keep = write.keep.empty() ? 0 : write.keep[i % write.keep.size()];
        place[i] = static_cast<unsigned char>((place[i] & keep) | (write.values[i] & ~keep));
    }
    const std::uint16_t requestWord = RequestWord(next);
    const bool writesRequest = write.offset < *inputPlace + RequestWordSize;
    const bool isBase = writesRequest && !hasRequest && !firstRequestRuns;
    const bool changesRequest = !isBase && requestWord != RequestWord(input);
    if (changesRequest && (result.commandResult == CommandInProgress || commands.IsBusy())) {
        return InputResult::Busy;
    }
    input = next;
    hasRequest = hasRequest || writesRequest;
    if (isBase || changesRequest) {
        isCommand = changesRequest;
        result = {.requestWord = requestWord, .commandResult = isBase ? NoCommandYet : CommandInProgress};
        SerializeResult();
        image.Write(std::array{InputPart(), output.Part(), system.Part()});
    } else {
        image.Write(std::array{InputPart()});
    }
    if (reads) {
        image.Read(write.readOffset, write.read.size(), write.read.data());
    }
    return InputResult::Done;
}

bool CommandCells::IsInInput(const InputWrite& write) const {
    return inputPlace && write.offset >= *inputPlace &&
           write.offset + write.values.size() <= *inputPlace + input.size();
}

std::uint16_t CommandCells::RequestWord(const std::vector<unsigned char>& bytes) const {
    const bool isBigEndian = inputType->IsProtocolBigEndian();
    return static_cast<std::uint16_t>(bytes[isBigEndian ? 0 : 1] << 8 | bytes[isBigEndian ? 1 : 0]);
}

void CommandCells::Run() {
    ControlRegisterCommandData command;
    try {
        inputBlock->Deserialize(&command, sizeof command, next.data(), next.size());
    } catch (const Vor::Exception&) {
        EndCommand(CommandFailed);
        return;
    }
    commands.Run(command);
}

void CommandCells::Replace(const CellPlaces& map, std::vector<ByteRange> ranges, std::vector<unsigned char> bytes) {
    const auto placeOf = [&](const std::string& type) -> std::optional<std::size_t> {
        const auto found = std::ranges::find(map.places, type, &CellPlaces::Place::type);
        return found == map.places.end() ? std::nullopt : std::optional(found->offset);
    };
    const auto put = [&](const RegisterImage::Part& part) {
        bytes.resize(std::max(bytes.size(), part.offset + part.bytes.size()));
        std::ranges::copy(part.bytes, bytes.begin() + static_cast<std::ptrdiff_t>(part.offset));
    };
    const auto move = [&](RegisterCell& cell) {
        cell.MoveTo(placeOf(cell.Type()));
        cell.SetIsBigEndian(map.isBigEndian);
        put(cell.Part());
    };
    const std::lock_guard lock(mutex);
    inputPlace = placeOf(inputType->Type());
    put(InputPart());
    move(output);
    move(system);
    std::ranges::for_each(others, move);
    image.Replace(std::move(ranges), std::move(bytes));
}

void CommandCells::SetFirstRequestRuns(bool value) {
    const std::lock_guard lock(mutex);
    firstRequestRuns = value;
}

void CommandCells::EndCommand(unsigned char status) {
    const std::lock_guard lock(mutex);
    if (result.commandResult == CommandInProgress) {
        result.commandResult = status;
        SerializeResult();
        image.Write(std::array{output.Part(), system.Part()});
    }
}

bool CommandCells::HasSystemState() const {
    const std::lock_guard lock(mutex);
    return system.IsInMap();
}

bool CommandCells::HasState(const std::string& type) const {
    const std::lock_guard lock(mutex);
    return std::ranges::any_of(others, [&](const RegisterCell& cell) { return cell.Type() == type && cell.IsInMap(); });
}

void CommandCells::SetSystemState(const DefaultSystemStateData& state) {
    const std::lock_guard lock(mutex);
    systemState = state;
    SerializeResult();
    image.Write(std::array{system.Part()});
}

// Both the answer and the system's state, which contains whether a command is in progress.
void CommandCells::SerializeResult() {
    output.Set(result);
    systemState.secondStateByte = result.commandResult == CommandInProgress;
    system.Set(systemState);
}

RegisterImage::Part CommandCells::InputPart() const {
    return inputPlace ? RegisterImage::Part{*inputPlace, input} : RegisterImage::Part{};
}

} // namespace Services::Common
