#pragma once

#include "Vor/ByteVector.h"
#include "Vor/Exception.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace Vor::Properties {

/// The numbers that an enumeration's type has.
struct EnumRange {
    std::int32_t least = std::numeric_limits<std::int32_t>::min();
    std::int32_t greatest = std::numeric_limits<std::int32_t>::max();

    /// Throws `yERROR_PARAMETER` for a number outside of the range.
    void Require(std::int32_t number) const {
        if (number < least || number > greatest) {
            Throw(yERROR_PARAMETER, "The number %d is outside of the enumeration.", number);
        }
    }
};

/// Writes one value into a document.
class IValueWriter {
public:
    virtual ~IValueWriter() = default;

    virtual void WriteBool(bool value) = 0;
    virtual void WriteUInt16(std::uint16_t value) = 0;
    virtual void WriteUInt32(std::uint32_t value) = 0;
    virtual void WriteUInt64(std::uint64_t value) = 0;
    virtual void WriteInt64(std::int64_t value) = 0;

    /// The integer value of an enumeration.
    virtual void WriteEnum(std::int32_t value) = 0;

    virtual void WriteText(const std::string& value) = 0;
    virtual void WriteBytes(const ByteVector& value) = 0;
    virtual void WriteTextList(const std::vector<std::string>& value) = 0;
    virtual void WriteUInt16List(const std::vector<std::uint16_t>& value) = 0;
    virtual void WriteEnumList(const std::vector<std::int32_t>& value) = 0;

    /// Called before WriteEnum and WriteEnumList for an enumeration of less than 32 bits, with the numbers that it has.
    virtual void SetEnumRange(const EnumRange&) {}
};

} // namespace Vor::Properties
