#pragma once

#include "Vor/ByteVector.h"
#include "Vor/IValueReader.h"
#include "Vor/IValueWriter.h"

#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vor::Properties::Internal {

/// How a stored type appears in documents: its "type" keyword, that of its elements if it is a list, and the operations
/// of reader and writer that carry it.
template <class T>
struct ValueKind;

template <>
struct ValueKind<bool> {
    static constexpr const char* Type = "boolean";
    static bool Read(IValueReader& reader) { return reader.ReadBool(); }
    static void Write(IValueWriter& writer, bool value) { writer.WriteBool(value); }
};

template <>
struct ValueKind<unsigned short> {
    static constexpr const char* Type = "integer";
    static unsigned short Read(IValueReader& reader) { return reader.ReadUInt16(); }
    static void Write(IValueWriter& writer, unsigned short value) { writer.WriteUInt16(value); }
};

template <>
struct ValueKind<unsigned int> {
    static constexpr const char* Type = "integer";
    static unsigned int Read(IValueReader& reader) { return reader.ReadUInt32(); }
    static void Write(IValueWriter& writer, unsigned int value) { writer.WriteUInt32(value); }
};

template <>
struct ValueKind<unsigned long long> {
    static constexpr const char* Type = "integer";
    static unsigned long long Read(IValueReader& reader) { return reader.ReadUInt64(); }
    static void Write(IValueWriter& writer, unsigned long long value) { writer.WriteUInt64(value); }
};

template <>
struct ValueKind<long long> {
    static constexpr const char* Type = "integer";
    static long long Read(IValueReader& reader) { return reader.ReadInt64(); }
    static void Write(IValueWriter& writer, long long value) { writer.WriteInt64(value); }
};

template <>
struct ValueKind<std::string> {
    static constexpr const char* Type = "string";
    static const std::string& Read(IValueReader& reader) { return reader.ReadText(); }
    static void Write(IValueWriter& writer, const std::string& value) { writer.WriteText(value); }
};

template <>
struct ValueKind<ByteVector> {
    static constexpr const char* Type = "binary";
    static ByteVector Read(IValueReader& reader) { return reader.ReadBytes(); }
    static void Write(IValueWriter& writer, const ByteVector& value) { writer.WriteBytes(value); }
};

template <>
struct ValueKind<std::vector<std::string>> {
    static constexpr const char* Type = "array";
    static constexpr const char* ItemType = "string";
    static std::vector<std::string> Read(IValueReader& reader) { return reader.ReadTextList(); }
    static void Write(IValueWriter& writer, const std::vector<std::string>& value) { writer.WriteTextList(value); }
};

template <>
struct ValueKind<std::vector<unsigned short>> {
    static constexpr const char* Type = "array";
    static constexpr const char* ItemType = "integer";
    static std::vector<unsigned short> Read(IValueReader& reader) { return reader.ReadUInt16List(); }
    static void Write(IValueWriter& writer, const std::vector<unsigned short>& value) { writer.WriteUInt16List(value); }
};

/// Those of an enumeration of 32 bits, signed or not, are all numbers of a document.
template <class T>
EnumRange EnumRangeOf() {
    using Number = std::underlying_type_t<T>;
    static_assert(sizeof(Number) <= sizeof(std::int32_t), "an enumeration in a document has at most 32 bits");

    if constexpr (sizeof(Number) < sizeof(std::int32_t)) {
        return {std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max()};
    } else {
        return {};
    }
}

/// The enumeration's value of that number. Throws `yERROR_PARAMETER` for a number that is too large for its type.
template <class T>
T EnumerationOf(std::int32_t number) {
    EnumRangeOf<T>().Require(number);
    return static_cast<T>(number);
}

template <class T>
void SetEnumRange(IValueWriter& writer) {
    if constexpr (sizeof(T) < sizeof(std::int32_t)) {
        writer.SetEnumRange(EnumRangeOf<T>());
    }
}

/// Enumerations travel as 32-bit signed integers, narrower ones too.
template <class T>
    requires std::is_enum_v<T>
struct ValueKind<T> {
    static constexpr const char* Type = "integer";
    static T Read(IValueReader& reader) { return EnumerationOf<T>(reader.ReadEnum()); }
    static void Write(IValueWriter& writer, T value) {
        SetEnumRange<T>(writer);
        writer.WriteEnum(static_cast<std::int32_t>(value));
    }
};

template <class T>
    requires std::is_enum_v<T>
struct ValueKind<std::vector<T>> {
    static constexpr const char* Type = "array";
    static constexpr const char* ItemType = "integer";

    static std::vector<T> Read(IValueReader& reader) {
        std::vector<T> values;
        for (const std::int32_t value : reader.ReadEnumList()) {
            values.push_back(EnumerationOf<T>(value));
        }
        return values;
    }
    static void Write(IValueWriter& writer, const std::vector<T>& value) {
        std::vector<std::int32_t> integers;
        integers.reserve(value.size());
        for (const T item : value) {
            integers.push_back(static_cast<std::int32_t>(item));
        }
        SetEnumRange<T>(writer);
        writer.WriteEnumList(integers);
    }
};

template <class T>
concept ListKind = requires { ValueKind<T>::ItemType; };

} // namespace Vor::Properties::Internal
