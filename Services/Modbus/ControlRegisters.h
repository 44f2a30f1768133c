#pragma once

#include "Services/Modbus/BlockTypes.h"
#include "Services/Modbus/DiagnosticsBlock.h"
#include "Services/Modbus/ExceptionCodes.h"
#include "Services/Modbus/ICommandRunner.h"
#include "Services/Modbus/IRegisterMap.h"
#include "Services/Modbus/RegisterImage.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace Services::Modbus {

/// The first registers of the blocks without data source. A block that the map doesn't contain has none.
struct ControlPlaces {
    std::optional<unsigned> controlInput = std::nullopt;
    std::optional<unsigned> controlOutput = std::nullopt;
    std::optional<unsigned> system = std::nullopt;
    std::optional<unsigned> scanner = std::nullopt;
    std::optional<unsigned> diagnostics = std::nullopt;
    bool isBigEndian = true;
};

/// The registers of the blocks without data source: a client's command, the answer to it, the states of the system and
/// of the scanner, the diagnostics. This object owns their content, so a new map only moves them.
///
/// Clients write through this object, which implements the handshake: a write that changes the request word runs a
/// command. The answer repeats that word with the command's status, which is 1 until the command has ended; both change
/// together. A status after the command's end is ignored. Where the first request word doesn't run, the first write of
/// that register runs nothing, and the answer repeats the word with the status 0.
///
/// All operations but Write may be called on any thread; Write is for one thread.
class ControlRegisters : public IRegisterMap {
public:
    /// Both must outlive this object.
    ControlRegisters(RegisterImage& image, ICommandRunner& commands);

    bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const override;
    /// Runs the command, if the write changes the request word, before it returns.
    unsigned char Write(const RegisterWrite& write) override;

    /// Gives the image a new map. `ranges` and `bytes` are those of RegisterImage::Replace; the bytes at `places` are
    /// written by this function.
    void Replace(const ControlPlaces& places, std::vector<RegisterRange> ranges, std::vector<unsigned char> bytes);

    /// Whether the first write of the request word in this object's life runs a command if it changes the word.
    void SetFirstRequestRuns(bool value);

    /// The last command has ended: `status` is 2 for done, 3 for failed.
    void EndCommand(unsigned char status);

    /// Whether the map contains a state or the diagnostics.
    bool HasStates() const;
    /// `state.secondStateByte` is ignored: this object writes 1 there while a command is in progress, else 0.
    void SetSystemState(const VorControl::ControlProtocol::DefaultSystemStateData& state);
    void SetScannerState(const VorControl::ControlProtocol::DefaultScannerStateData& state);
    void SetDiagnostics(const Diagnostics& counts);

private:
    /// One block with its bytes in the order of the wire. The blocks of the assembly can't be used instead: they are
    /// guarded by the assembly's lock, for which the network thread never waits.
    struct Cell {
        explicit Cell(BlockType made);
        template <class Record>
        void Serialize(const Record& record);
        /// Empty when the map doesn't contain the block.
        RegisterImage::Part Part() const;

        BlockType type;
        std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterBlock> block;
        std::vector<unsigned char> bytes;
        std::optional<unsigned> place;
    };

    /// Writes and reads the registers. `next` receives the content of the command registers; `isCommand` is set when
    /// the write changes the request word. Returns the exception code.
    unsigned char ApplyWrite(const RegisterWrite& write, CommandInput& next, bool& isCommand);
    bool IsInInput(const RegisterWrite& write) const;
    void SerializeResult();
    RegisterImage::Part InputPart() const;

    RegisterImage& image;
    ICommandRunner& commands;
    /// Guards the members below, only while they are copied. Ranks after the assembly's lock and before the image's
    /// mutex.
    mutable std::mutex mutex;
    CommandInput input{};
    std::optional<unsigned> inputPlace;
    bool firstRequestRuns = true;
    bool hasRequest = false; ///< a client has written the request word
    VorControl::ControlProtocol::DefaultCommandResultData result;
    VorControl::ControlProtocol::DefaultSystemStateData systemState;
    VorControl::ControlProtocol::DefaultScannerStateData scannerState;
    Diagnostics counts;
    Cell output;
    Cell system;
    Cell scanner;
    Cell diagnostics;
};

} // namespace Services::Modbus
