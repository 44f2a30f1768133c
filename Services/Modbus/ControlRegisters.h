#pragma once

#include "Services/Modbus/BlockTypes.h"
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

/// The first registers of the blocks that no scan feeds, as far as a map has them.
struct ControlPlaces {
    std::optional<unsigned> controlInput;
    std::optional<unsigned> controlOutput;
    std::optional<unsigned> system;
    std::optional<unsigned> scanner;
    bool isBigEndian = true;
};

/// The registers that no scan feeds: a client's command, the answer to it, the states of the system and of the scanner.
/// Their content lives here, so that a new map only moves them.
///
/// Clients write through this object, which sees to the handshake: a write that changes the request word takes a
/// command. The answer echoes that word with the command's status, which is 1 until the command has ended; both change
/// in one piece. A status that comes later than its command's end isn't taken.
///
/// The operations may be called on any thread, but for Write, which has one caller.
class ControlRegisters : public IRegisterMap {
public:
    /// Both must outlive this object.
    ControlRegisters(RegisterImage& image, ICommandRunner& commands);

    bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const override;
    /// Runs the command, if it takes one, before it returns.
    unsigned char Write(const RegisterWrite& write) override;

    /// Gives the image a new map. `ranges` and `bytes` are those of RegisterImage::Replace; the bytes at the places are
    /// filled in.
    void Replace(const ControlPlaces& places, std::vector<RegisterRange> ranges, std::vector<unsigned char> bytes);

    /// The command that was taken last has ended: 2 done, 3 failed.
    void EndCommand(unsigned char status);

    /// Whether the map shows a state at all.
    bool HasStates() const;
    /// The second state byte is this object's own: 1 while a command is under way.
    void SetSystemState(const VorControl::ControlProtocol::DefaultSystemStateData& state);
    void SetScannerState(const VorControl::ControlProtocol::DefaultScannerStateData& state);

private:
    /// One block with its bytes as the wire has them. It is this object's own: those of the assembly are guarded by the
    /// assembly's lock, for which the network thread never waits.
    struct Cell {
        explicit Cell(BlockType made);
        template <class Record>
        void Serialize(const Record& record);
        /// Empty when the map lacks the block.
        RegisterImage::Part Part() const;

        BlockType type;
        std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterBlock> block;
        std::vector<unsigned char> bytes;
        std::optional<unsigned> place;
    };

    unsigned char ApplyWrite(const RegisterWrite& write, CommandInput& next, bool& isCommand);
    bool IsInInput(const RegisterWrite& write) const;
    void SerializeResult();
    RegisterImage::Part InputPart() const;

    RegisterImage& image;
    ICommandRunner& commands;
    /// Guards the members below. Ranks after the assembly's lock and before the image's mutex; it is held for copies
    /// only.
    mutable std::mutex mutex;
    CommandInput input{};
    std::optional<unsigned> inputPlace;
    VorControl::ControlProtocol::DefaultCommandResultData result;
    VorControl::ControlProtocol::DefaultSystemStateData systemState;
    VorControl::ControlProtocol::DefaultScannerStateData scannerState;
    Cell output;
    Cell system;
    Cell scanner;
};

} // namespace Services::Modbus
