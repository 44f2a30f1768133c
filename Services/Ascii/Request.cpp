#include "Services/Ascii/Request.h"

#include <cstddef>

namespace Services::Ascii {

namespace {

bool IsBlank(char character) {
    return character == ' ' || character == '\t';
}

/// The size of the separator at the start of `text`; 0 when there is none.
std::size_t SeparatorSize(std::string_view text, std::string_view delimiter) {
    if (!delimiter.empty() && text.starts_with(delimiter)) {
        return delimiter.size();
    }
    return !text.empty() && IsBlank(text.front()) ? 1 : 0;
}

void SkipSeparators(std::string_view& text, std::string_view delimiter) {
    for (std::size_t size = SeparatorSize(text, delimiter); size > 0; size = SeparatorSize(text, delimiter)) {
        text.remove_prefix(size);
    }
}

/// Removes the characters up to the next separator from `text` and returns them.
std::string_view ParseWord(std::string_view& text, std::string_view delimiter) {
    std::size_t size = 0;
    while (size < text.size() && SeparatorSize(text.substr(size), delimiter) == 0) {
        ++size;
    }
    const std::string_view word = text.substr(0, size);
    text.remove_prefix(size);
    return word;
}

/// Removes the quoted text at the start of `text` and returns it without its quotation marks.
std::optional<std::string> ParseQuoted(std::string_view& text) {
    std::string word;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] != '"') {
            word += text[i];
        } else if (i + 1 < text.size() && text[i + 1] == '"') {
            word += '"';
            ++i;
        } else {
            text.remove_prefix(i + 1);
            return word;
        }
    }
    return std::nullopt;
}

} // namespace

Request Request::Parse(std::string_view line, std::string_view delimiter) {
    Request request;
    request.command = ParseWord(line, delimiter);
    SkipSeparators(line, delimiter);
    request.rest = line;
    return request;
}

std::optional<std::vector<Argument>> ParseArguments(std::string_view rest, std::string_view delimiter) {
    std::vector<Argument> words;
    SkipSeparators(rest, delimiter);
    while (!rest.empty()) {
        if (rest.front() == '"') {
            auto word = ParseQuoted(rest);
            if (!word || (!rest.empty() && SeparatorSize(rest, delimiter) == 0)) {
                return std::nullopt;
            }
            words.push_back({std::move(*word), true});
        } else {
            const std::string_view word = ParseWord(rest, delimiter);
            if (word.find('"') != std::string_view::npos) {
                return std::nullopt;
            }
            words.push_back({std::string(word), false});
        }
        SkipSeparators(rest, delimiter);
    }
    return words;
}

std::optional<std::string> ParseText(std::string_view rest) {
    if (!rest.starts_with('"')) {
        return std::string(rest);
    }
    auto text = ParseQuoted(rest);
    return rest.empty() ? text : std::nullopt;
}

} // namespace Services::Ascii
