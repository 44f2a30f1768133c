#pragma once

#include "Services/Modbus/ControlRegisters.h"
#include "Services/Modbus/RegisterImage.h"
#include "VorApi/Object.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorMsg/ResultSet.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Services::Modbus {

/// Writes scan results through the blocks of an assembly into a register image. The operations may be called on any
/// thread: each works under the assembly's lock, which guards the members too and ranks before the image's mutex.
class ScanRegisters {
public:
    /// `image` and `control`, which writes to the same image, must outlive this object.
    ScanRegisters(std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssembly> assembly,
                  RegisterImage& image, ControlRegisters& control);

    /// Follows the blocks of the assembly as they are now. A block gets the last value of its data source, or what
    /// stands for a missing value when there was none; the blocks without data source are left to `control`.
    void Rebuild();

    /// Forgets the last values; the next Rebuild starts without any.
    void ForgetValues();

    /// Writes the results of one frame, which become visible to readers all at once. Allocates nothing. A block that
    /// can't write its result shows a missing value; that is logged once until the block writes again.
    void Process(ResultSet set);

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
    void FindOwnParts(const std::vector<RegisterRange>& others);
    void Publish(std::size_t begin, std::size_t end);
    void Serialize(Slot& slot, ResultItem item);
    void SerializeMissing(Slot& slot);
    void WriteInto(Slot& slot, ResultItem item);

    const std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssembly> assembly;
    RegisterImage& image;
    ControlRegisters& control;
    Sources sources;
    std::vector<unsigned char> bytes; ///< the image that is being made, in the order of the wire
    /// What lies between the blocks of `control`, in ascending order.
    std::vector<RegisterImage::Part> own;
    std::vector<RegisterImage::Part> written; ///< for Publish; has room for `own`
    Vor::Object missing;                      ///< an item without a value
};

} // namespace Services::Modbus
