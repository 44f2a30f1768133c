#pragma once

#include "Vor/ByteVector.h"
#include "Vor/IValueReader.h"
#include "Vor/IValueWriter.h"

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace Vor::Properties::Internal {

/// How a stored type appears in documents: its "type" keyword, that of its elements if it is a list, and the operations
/// of reader and writer that carry it.
template <class T>
struct ValueKind;

template <>
struct ValueKind<bool> {
    static constexpr const char* type = "boolean";
    static bool Read(IValueReader& reader) { return reader.ReadBool(); }
    static void Write(IValueWriter& writer, bool value) { writer.WriteBool(value); }
};

template <>
struct ValueKind<unsigned short> {
    static constexpr const char* type = "integer";
    static unsigned short Read(IValueReader& reader) { return reader.ReadUInt16(); }
    static void Write(IValueWriter& writer, unsigned short value) { writer.WriteUInt16(value); }
};

template <>
struct ValueKind<unsigned int> {
    static constexpr const char* type = "integer";
    static unsigned int Read(IValueReader& reader) { return reader.ReadUInt32(); }
    static void Write(IValueWriter& writer, unsigned int value) { writer.WriteUInt32(value); }
};

template <>
struct ValueKind<unsigned long long> {
    static constexpr const char* type = "integer";
    static unsigned long long Read(IValueReader& reader) { return reader.ReadUInt64(); }
    static void Write(IValueWriter& writer, unsigned long long value) { writer.WriteUInt64(value); }
};

template <>
struct ValueKind<long long> {
    static constexpr const char* type = "integer";
    static long long Read(IValueReader& reader) { return reader.ReadInt64(); }
    static void Write(IValueWriter& writer, long long value) { writer.WriteInt64(value); }
};

template <>
struct ValueKind<std::string> {
    static constexpr const char* type = "string";
    static const std::string& Read(IValueReader& reader) { return reader.ReadText(); }
    static void Write(IValueWriter& writer, const std::string& value) { writer.WriteText(value); }
};

template <>
struct ValueKind<ByteVector> {
    static constexpr const char* type = "binary";
    static ByteVector Read(IValueReader& reader) { return reader.ReadBytes(); }
    static void Write(IValueWriter& writer, const ByteVector& value) { writer.WriteBytes(value); }
};

template <>
struct ValueKind<std::vector<std::string>> {
    static constexpr const char* type = "array";
    static constexpr const char* itemType = "string";
    static std::vector<std::string> Read(IValueReader& reader) { return reader.ReadTextList(); }
    static void Write(IValueWriter& writer, const std::vector<std::string>& value) { writer.WriteTextList(value); }
};

template <>
struct ValueKind<std::vector<unsigned short>> {
    static constexpr const char* type = "array";
    static constexpr const char* itemType = "integer";
    static std::vector<unsigned short> Read(IValueReader& reader) { return reader.ReadUInt16List(); }
    static void Write(IValueWriter& writer, const std::vector<unsigned short>& value) { writer.WriteUInt16List(value); }
};

/// Enumerations travel as 32-bit signed integers.
template <class T>
    requires std::is_enum_v<T>
struct ValueKind<T> {
    static_assert(sizeof(T) == sizeof(std::int32_t), "an enumeration in a document has 32 bits");

    static constexpr const char* type = "integer";
    static T Read(IValueReader& reader) { return static_cast<T>(reader.ReadEnum()); }
    static void Write(IValueWriter& writer, T value) { writer.WriteEnum(static_cast<std::int32_t>(value)); }
};

template <class T>
    requires std::is_enum_v<T>
struct ValueKind<std::vector<T>> {
    static_assert(sizeof(T) == sizeof(std::int32_t), "an enumeration in a document has 32 bits");

    static constexpr const char* type = "array";
    static constexpr const char* itemType = "integer";

    static std::vector<T> Read(IValueReader& reader) {
        std::vector<T> values;
        for (const std::int32_t value : reader.ReadEnumList()) {
            values.push_back(static_cast<T>(value));
        }
        return values;
    }
    static void Write(IValueWriter& writer, const std::vector<T>& value) {
        std::vector<std::int32_t> integers;
        integers.reserve(value.size());
        for (const T item : value) {
            integers.push_back(static_cast<std::int32_t>(item));
        }
        writer.WriteEnumList(integers);
    }
};

template <class T>
concept ListKind = requires { ValueKind<T>::itemType; };

} // namespace Vor::Properties::Internal
