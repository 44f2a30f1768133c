#pragma once

#include "Vor/IValueReader.h"
#include "Vor/IValueWriter.h"

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Vor::Properties::Internal {

/// Where in a document a reader is: a chain of places on the stack of whoever walks the document.
struct JsonPath {
    const JsonPath* parent = nullptr;
    const std::string* member = nullptr;
    unsigned long index = 0;

    /// Such as "map[3].source"; "the document" for the outermost place.
    std::string Text() const;
};

/// Throws `yERROR_PARAMETER` with place, expectation and what is there instead.
[[noreturn]] void RefuseJson(const JsonPath& path, const std::string& expected, const nlohmann::json& json);

/// Reads one value of a JSON document. Both arguments must outlive it.
class JsonReader : public IValueReader {
public:
    JsonReader(const nlohmann::json& json, const JsonPath& path)
        : json(json)
        , path(path) {}

    bool ReadBool() override;
    std::uint16_t ReadUInt16() override;
    std::uint32_t ReadUInt32() override;
    std::uint64_t ReadUInt64() override;
    std::int64_t ReadInt64() override;
    std::int32_t ReadEnum() override;
    const std::string& ReadText() override;
    ByteVector ReadBytes() override;
    std::vector<std::string> ReadTextList() override;
    std::vector<std::uint16_t> ReadUInt16List() override;
    std::vector<std::int32_t> ReadEnumList() override;

private:
    template <class T>
    T ReadInteger() const;
    template <class T, class Read>
    std::vector<T> ReadList(Read read) const;

    const nlohmann::json& json;
    const JsonPath& path;
};

/// Handed to a value as its writer, it learns the value's kind and throws as a reader would if the JSON isn't of that
/// kind. It needs no change of the value.
class JsonKindCheck : public IValueWriter {
public:
    JsonKindCheck(const nlohmann::json& json, const JsonPath& path)
        : reader(json, path) {}

    void WriteBool(bool) override { reader.ReadBool(); }
    void WriteUInt16(std::uint16_t) override { reader.ReadUInt16(); }
    void WriteUInt32(std::uint32_t) override { reader.ReadUInt32(); }
    void WriteUInt64(std::uint64_t) override { reader.ReadUInt64(); }
    void WriteInt64(std::int64_t) override { reader.ReadInt64(); }
    void WriteEnum(std::int32_t) override { reader.ReadEnum(); }
    void WriteText(const std::string&) override { reader.ReadText(); }
    void WriteBytes(const ByteVector&) override { reader.ReadBytes(); }
    void WriteTextList(const std::vector<std::string>&) override { reader.ReadTextList(); }
    void WriteUInt16List(const std::vector<std::uint16_t>&) override { reader.ReadUInt16List(); }
    void WriteEnumList(const std::vector<std::int32_t>&) override { reader.ReadEnumList(); }

private:
    JsonReader reader;
};

} // namespace Vor::Properties::Internal
