#pragma once

#include "Vor/IValueReader.h"
#include "Vor/IValueWriter.h"

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Vor::Properties::Internal {

/// A place in a document, as a chain of objects on the stack of the code that walks the document.
struct JsonPath {
    const JsonPath* parent = nullptr;    ///< null for the document itself
    const std::string* member = nullptr; ///< null for an array's element
    unsigned long index = 0;             ///< of an array's element

    /// Such as "map[3].source"; "the document" for the outermost place.
    std::string Text() const;
};

/// Throws `yERROR_PARAMETER` with a text that names the place, what was expected there and what was found.
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

/// Checks that JSON is of the kind of a tree's value, which it doesn't change: passed to the value as its writer, it
/// throws what a JsonReader throws for another kind.
class JsonKindCheck : public IValueWriter {
public:
    JsonKindCheck(const nlohmann::json& json, const JsonPath& path)
        : reader(json, path) {}

    void WriteBool(bool) override { reader.ReadBool(); }
    void WriteUInt16(std::uint16_t) override { reader.ReadUInt16(); }
    void WriteUInt32(std::uint32_t) override { reader.ReadUInt32(); }
    void WriteUInt64(std::uint64_t) override { reader.ReadUInt64(); }
    void WriteInt64(std::int64_t) override { reader.ReadInt64(); }
    void WriteEnum(std::int32_t) override { range.Require(reader.ReadEnum()); }
    void WriteText(const std::string&) override { reader.ReadText(); }
    void WriteBytes(const ByteVector&) override { reader.ReadBytes(); }
    void WriteTextList(const std::vector<std::string>&) override { reader.ReadTextList(); }
    void WriteUInt16List(const std::vector<std::uint16_t>&) override { reader.ReadUInt16List(); }
    void WriteEnumList(const std::vector<std::int32_t>&) override {
        for (const std::int32_t number : reader.ReadEnumList()) {
            range.Require(number);
        }
    }
    void SetEnumRange(const EnumRange& enumRange) override { range = enumRange; }

private:
    JsonReader reader;
    EnumRange range;
};

} // namespace Vor::Properties::Internal
