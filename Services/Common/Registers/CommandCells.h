#pragma once

#include "Services/Common/Registers/ICommandRunner.h"
#include "Services/Common/Registers/RegisterCell.h"
#include "Services/Common/Registers/RegisterFormat.h"
#include "Services/Common/Registers/RegisterImage.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Services::Common {

/// The types of the blocks without data source. A map contains at most one block of each.
struct CellTypes {
    BlockType input;                    ///< a client's command, in the byte order in which clients write it
    BlockType output;                   ///< the answer to it: DefaultCommandResultData
    BlockType system;                   ///< DefaultSystemStateData
    std::vector<BlockType> others = {}; ///< with records of their own
};

/// Where a map has its blocks without data source, by their types.
struct CellPlaces {
    struct Place {
        std::string type;
        std::size_t offset;
    };
    std::vector<Place> places = {};
    bool isBigEndian = true; ///< in which byte order clients read
};

/// One write of a client into the command, and the read after it in the same request. Sizes and offsets are in bytes.
struct InputWrite {
    std::size_t offset = 0;
    std::span<const unsigned char> values;
    /// The bits that aren't changed, again and again for as many bytes as `values` has; empty changes all.
    std::span<const unsigned char> keep = {};
    std::size_t readOffset = 0;
    std::span<unsigned char> read = {}; ///< empty reads nothing
};

enum class InputResult {
    Done,
    OutOfRange, ///< not all bytes are in the command's block, or none of those to read is in a block
    Busy        ///< a command is in progress
};

/// The blocks without data source: a client's command, the answer to it, and states. This object owns their content, so
/// a new map only moves them.
///
/// Clients write through this object, which implements the handshake: a write that changes the request word, the first
/// two bytes of the command, runs a command. The answer repeats that word with the command's status, which is 1 until
/// the command has ended; both change together. A status after the command's end is ignored. Where the first request
/// word doesn't run, the first write to it runs nothing, and the answer repeats the word with the status 0.
///
/// All operations but Write may be called on any thread; Write is for one thread.
class CommandCells {
public:
    /// What clients read of a command.
    enum CommandStatus : unsigned char { NoCommandYet = 0, CommandInProgress = 1, CommandDone = 2, CommandFailed = 3 };

    /// `image` and `commands` must outlive this object.
    CommandCells(RegisterImage& image, ICommandRunner& commands, CellTypes types, const RegisterFormat& format);

    /// Writes all values, then reads. Runs the command, if the write changes the request word, before it returns; one
    /// that can't be read, such as the load of a job without a name, has failed. Unless the result is Done nothing was
    /// changed, and the content of `read` has no meaning.
    InputResult Write(const InputWrite& write);

    /// Gives the image a new map. `ranges` and `bytes` are those of RegisterImage::Replace; the bytes at `places` are
    /// written by this function.
    void Replace(const CellPlaces& places, std::vector<ByteRange> ranges, std::vector<unsigned char> bytes);

    /// Whether the first write of the request word in this object's life runs a command if it changes the word.
    void SetFirstRequestRuns(bool value);

    /// The last command has ended.
    void EndCommand(unsigned char status);

    /// Whether the map contains the state that SetSystemState writes.
    bool HasSystemState() const;
    /// Whether the map contains a state of one of the other types.
    bool HasState(const std::string& type) const;
    /// `state.secondStateByte` is ignored: this object writes 1 there while a command is in progress, else 0.
    void SetSystemState(const VorControl::ControlProtocol::DefaultSystemStateData& state);
    /// Sets the record of one of the other types.
    template <class Record>
    void SetState(const std::string& type, const Record& record) {
        const std::lock_guard lock(mutex);
        for (RegisterCell& cell : others) {
            if (cell.Type() == type) {
                cell.Set(record);
                image.Write(std::array{cell.Part()});
            }
        }
    }

private:
    /// `isCommand` is set when the write changes the request word.
    InputResult ApplyWrite(const InputWrite& write, bool& isCommand);
    bool IsInInput(const InputWrite& write) const;
    std::uint16_t RequestWord(const std::vector<unsigned char>& bytes) const;
    void Run();
    void SerializeResult();
    RegisterImage::Part InputPart() const;

    RegisterImage& image;
    ICommandRunner& commands;
    const BlockType inputType;
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterBlock>
        inputBlock;                  ///< for the thread that writes
    std::vector<unsigned char> next; ///< the command with the write that is under way; for the thread that writes
    /// Guards the members below, only while they are copied. Ranks after the assembly's lock and before the image's
    /// mutex.
    mutable std::mutex mutex;
    std::vector<unsigned char> input;
    std::optional<std::size_t> inputPlace;
    bool firstRequestRuns = true;
    bool hasRequest = false; ///< a client has written the request word
    VorControl::ControlProtocol::DefaultCommandResultData result;
    VorControl::ControlProtocol::DefaultSystemStateData systemState;
    RegisterCell output;
    RegisterCell system;
    std::vector<RegisterCell> others;
};

} // namespace Services::Common
