#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Services::Ascii {

/// One word of the arguments of a request.
struct Argument {
    std::string text;
    bool isQuoted = false;
};

/// A line of a client, split into its command and the rest.
struct Request {
    std::string_view command;
    std::string_view rest;

    /// `line` has no leading and trailing blanks. A blank or the delimiter ends the command.
    static Request Parse(std::string_view line, std::string_view delimiter);
};

/// The words of `rest`, which blanks or delimiters separate. A word in quotation marks may contain both; two marks in
/// it mean one. Nothing when a quotation mark isn't closed, or is inside a word.
std::optional<std::vector<Argument>> ParseArguments(std::string_view rest, std::string_view delimiter);

/// `rest` as one text, which may be in quotation marks. Nothing when it doesn't end with the closing mark then.
std::optional<std::string> ParseText(std::string_view rest);

} // namespace Services::Ascii
