#pragma once

#include "Services/Common/Registers/RegisterFormat.h"
#include "Services/Common/Registers/RegisterImage.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

namespace Services::Common {

using BlockType = std::unique_ptr<VorControl::ControlProtocol::ProtocolRegisterBlockInfo>;

/// The content of a block without data source: the record that its service has set, and its bytes. It has a block of
/// its own, since that of the assembly is guarded by the assembly's lock, for which no network thread waits. Not
/// thread-safe.
class RegisterCell {
public:
    /// `type` is one of the assembly's, or the same made anew.
    RegisterCell(BlockType type, const RegisterFormat& format);

    const std::string& Type() const { return type->Type(); }

    /// Sets the record, of the type that the block writes.
    template <class Record>
    void Set(const Record& value) {
        static_assert(std::is_trivially_copyable_v<Record>);
        const auto content = std::as_bytes(std::span(&value, 1));
        record.assign(content.begin(), content.end());
        Serialize();
    }

    /// Nothing: the map doesn't contain the block.
    void MoveTo(std::optional<std::size_t> offset) { place = offset; }
    bool IsInMap() const { return place.has_value(); }
    /// The byte order in which the record is written.
    void SetIsBigEndian(bool value);

    /// Empty when the map doesn't contain the block.
    RegisterImage::Part Part() const;

private:
    void Serialize();

    BlockType type;
    std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterBlock> block;
    const RegisterFormat format;
    std::vector<std::byte> record; ///< empty until it is set; the bytes are 0 then
    std::vector<unsigned char> bytes;
    std::optional<std::size_t> place;
};

} // namespace Services::Common
