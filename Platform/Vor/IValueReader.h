#pragma once

#include "Vor/ByteVector.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Vor::Properties {

/// Reads one value of a document. Each operation throws `yERROR_PARAMETER` if the value isn't of its kind or doesn't
/// fit its type.
class IValueReader {
public:
    virtual ~IValueReader() = default;

    virtual bool ReadBool() = 0;
    virtual std::uint16_t ReadUInt16() = 0;
    virtual std::uint32_t ReadUInt32() = 0;
    virtual std::uint64_t ReadUInt64() = 0;
    virtual std::int64_t ReadInt64() = 0;

    /// The integer value of an enumeration.
    virtual std::int32_t ReadEnum() = 0;

    /// Valid until the reader's next call or its destruction.
    virtual const std::string& ReadText() = 0;

    virtual ByteVector ReadBytes() = 0;
    virtual std::vector<std::string> ReadTextList() = 0;
    virtual std::vector<std::uint16_t> ReadUInt16List() = 0;
    virtual std::vector<std::int32_t> ReadEnumList() = 0;
};

} // namespace Vor::Properties
