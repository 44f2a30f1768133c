#pragma once

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace Sensor::Remote {

/// What a member of a document is set to, from the command line.
struct MemberSetting {
    std::string text;               ///< as the user wrote it, for errors
    std::vector<std::string> steps; ///< the names from the document to the member
    std::string value;

    /// Parses "MEMBER=VALUE", with dots between the names of a member. Throws a StartError for any other text.
    static MemberSetting Parse(const std::string& text);

    /// The value as the schema of the document says, in the keywords of "_schema". Throws a StartError that names the
    /// setting when the document has no such member, when that can't be set, or when the text is no value of it.
    nlohmann::json ValueFor(const nlohmann::json& schema) const;

    std::string Member() const;
    /// The member in a document; null when it has none.
    const nlohmann::json* FindIn(const nlohmann::json& document) const;

private:
    [[noreturn]] void Refuse(const std::string& reason) const;
};

/// The merge patch that sets all of them. Throws a StartError as ValueFor does, and when a member is set twice.
nlohmann::json PatchOf(const std::vector<MemberSetting>& settings, const nlohmann::json& schema);

} // namespace Sensor::Remote
