#pragma once

#include <string>
#include <string_view>

namespace Vor::Properties::Internal {

/// A key of the property tree: a text of which the process keeps one copy for its whole life, so that thousands of
/// nodes with the same keys share it and compare keys by address. For names that are declared in code, not for data.
class Name {
public:
    Name(std::string_view text);
    Name(const std::string& text)
        : Name(std::string_view(text)) {}
    Name(const char* text)
        : Name(std::string_view(text)) {}

    const std::string& Text() const { return *text; }

    bool operator==(const Name& other) const { return text == other.text; }

private:
    const std::string* text;
};

} // namespace Vor::Properties::Internal
