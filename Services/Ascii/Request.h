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

/// A line of a client, cut into its command and the rest.
struct Request {
    std::string_view command;
    std::string_view rest;

    /// `line` has no blanks at its ends. Blanks and the delimiter end the command.
    static Request Parse(std::string_view line, std::string_view delimiter);
};

/// The words of `rest`, with blanks or delimiters between them. A word in quotation marks may hold any of both; two
/// marks in it stand for one. None when a quotation mark isn't closed, or stands within a word.
std::optional<std::vector<Argument>> ParseArguments(std::string_view rest, std::string_view delimiter);

/// `rest` as one text, which may stand in quotation marks. None for such a text that doesn't end with the closing mark.
std::optional<std::string> ParseText(std::string_view rest);

} // namespace Services::Ascii
