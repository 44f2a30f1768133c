#pragma once

#include "Services/Modbus/ControlRegisters.h"
#include "Services/Modbus/RegisterImage.h"
#include "VorApi/Object.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorMsg/ResultSet.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Services::Modbus {

/// Writes scan results through the blocks of an assembly into a register image. The operations may be called on any
/// thread: each holds the assembly's lock, which also guards the members and ranks before the image's mutex.
class ScanRegisters {
public:
    /// `image` and `control`, which writes to the same image, must outlive this object.
    ScanRegisters(std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssembly> assembly,
                  RegisterImage& image, ControlRegisters& control);

    /// Applies the current blocks of the assembly. Each block is written with the last value of its data source, or
    /// with a missing value when there was none. The blocks without data source are written by `control`.
    void Rebuild();

    /// Removes the last values and the count of Dropped(); the next Rebuild writes missing values.
    void ForgetValues();

    /// Writes the results of one frame, which readers get all at once. Allocates nothing. A block that can't write its
    /// result is written with a missing value, and logged once until it can write again.
    void Process(ResultSet set);

    /// How many results a block couldn't write. Without the assembly's lock.
    std::uint64_t Dropped() const { return dropped.load(std::memory_order_relaxed); }

private:
    /// One block and its place in `bytes`.
    struct Slot {
        std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterBlock> block;
        std::size_t offset;
        std::size_t size;
        bool isText;
        bool failing = false;
    };

    struct Source {
        std::vector<Slot> slots;
        Vor::Object lastItem;
    };

    using Sources = std::unordered_map<unsigned long, Source>; ///< by numeric id

    void AddSlot(Sources& next, const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterBlock>& block);
    /// Sets `own` to the bytes outside of `others`.
    void FindOwnParts(const std::vector<RegisterRange>& others);
    void Publish(std::size_t begin, std::size_t end);
    void Serialize(Slot& slot, ResultItem item);
    void SerializeMissing(Slot& slot);
    void WriteInto(Slot& slot, ResultItem item);

    const std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssembly> assembly;
    RegisterImage& image;
    ControlRegisters& control;
    Sources sources;
    std::vector<unsigned char> bytes; ///< the content of the registers, in the order of the wire
    /// The parts of `bytes` between the blocks of `control`, in ascending order.
    std::vector<RegisterImage::Part> own;
    std::vector<RegisterImage::Part> written; ///< used by Publish, a member so that nothing is allocated there
    std::atomic<std::uint64_t> dropped = 0;
    Vor::Object missing; ///< an item without a value
};

} // namespace Services::Modbus
