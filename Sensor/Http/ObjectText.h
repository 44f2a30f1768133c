#pragma once

#include "VorApi/VorDataTree.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Sensor::Http {

/// Writes one object as JSON: members one after the other, with the commas between them. Objects can be written inside
/// of each other.
class ObjectText {
public:
    /// Begins the object at the end of `out`, which outlives this.
    explicit ObjectText(std::string& out);

    /// The value is written next.
    void AddName(const std::string& name);
    void Add(const std::string& name, const std::string& text);
    /// `json` is the value as JSON.
    void AddJson(const std::string& name, std::string_view json);
    void AddTree(const std::string& name, const VorApi::VorDataTree& tree);
    /// Adds the members of an object; nothing for a tree of another kind.
    void AddMembers(const VorApi::VorDataTree& tree);

    void End() { out += '}'; }

private:
    std::string& out;
    const std::size_t begin;
};

/// The text in quotation marks. Bytes that aren't UTF-8 are replaced.
std::string Quoted(const std::string& text);

} // namespace Sensor::Http
