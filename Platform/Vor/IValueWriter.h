#pragma once

#include "Vor/ByteVector.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Vor::Properties {

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
};

} // namespace Vor::Properties
