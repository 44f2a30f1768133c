#pragma once

#include "Services/Common/Registers/AssemblyLayout.h"
#include "Services/Common/Registers/CommandCells.h"
#include "Services/Common/Registers/LatestResults.h"
#include "Services/Common/Registers/RegisterFormat.h"
#include "Services/Common/Registers/RegisterImage.h"
#include "VorApi/Object.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorMsg/ResultSet.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace Services::Common {

/// Writes scan results through the blocks of an assembly into a register image. The operations may be called on any
/// thread: each holds the assembly's lock, which also guards the members and ranks before the image's mutex.
class ScanRegisters {
public:
    /// `image` and `cells`, which writes to the same image, must outlive this object.
    ScanRegisters(std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssembly> assembly,
                  RegisterImage& image, CommandCells& cells, const RegisterFormat& format);

    /// Applies the current blocks of the assembly. Each block is written with the latest result of its data source, or
    /// with a missing value when there was none. The blocks without data source are written by `cells`.
    void Rebuild();

    /// Drops the latest results; the next Rebuild writes missing values.
    void ForgetValues();

    /// Writes the results of one frame, which readers get all at once. Allocates nothing. A block that can't write its
    /// result is written with a missing value, and logged once until it can write again. Returns false for a frame that
    /// can't be written for another reason, which is logged once until a frame can; nothing is thrown.
    bool Process(ResultSet set);

private:
    /// One block and its place in `bytes`.
    struct Slot {
        AssemblyLayout::Place place;
        bool isText;
        bool failing = false;
    };

    void Write(ResultSet set);
    void Publish(std::size_t begin, std::size_t end);
    void Serialize(Slot& slot, ResultItem item);
    void SerializeMissing(Slot& slot);
    void WriteInto(Slot& slot, ResultItem item);

    const std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssembly> assembly;
    RegisterImage& image;
    CommandCells& cells;
    const RegisterFormat format;
    LatestResults latest;
    std::vector<std::vector<Slot>> slots; ///< by the place of the data source in `latest`
    std::vector<unsigned char> bytes;     ///< the content of the registers, in the order of the protocol
    /// The parts of `bytes` between the blocks of `cells`, in ascending order.
    std::vector<RegisterImage::Part> own;
    std::vector<RegisterImage::Part> written; ///< used by Publish, a member so that nothing is allocated there
    std::atomic<bool> failing = false;        ///< the last frame couldn't be written
    Vor::Object missing;                      ///< an item without a value
};

} // namespace Services::Common
