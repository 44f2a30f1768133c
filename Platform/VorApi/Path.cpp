#include "VorApi/Path.h"

#include "Vor/Exception.h"
#include "Vor/Utf8.h"

#include <algorithm>
#include <charconv>

namespace VorApi {

namespace {

/// Legal in a step without coding, in any locale.
bool IsPlain(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("-._~").find(static_cast<char>(c)) != std::string_view::npos;
}

bool IsControl(unsigned char c) {
    return c < 0x20 || c == 0x7F;
}

} // namespace

std::string Path::Format(std::string_view pattern, const std::vector<std::string>& values) {
    std::string path;
    auto value = values.begin();
    for (const std::string_view step : Split(pattern)) {
        path += '/';
        if (!IsParameter(step)) {
            path += step;
        } else if (value != values.end()) {
            path += Encode(*value++);
        } else {
            Vor::Throw(yERROR_PARAMETER, "The path %s has more parameters than the %zu values.", pattern,
                       values.size());
        }
    }
    if (value != values.end()) {
        Vor::Throw(yERROR_PARAMETER, "The path %s has fewer parameters than the %zu values.", pattern, values.size());
    }
    return path.empty() ? "/" : path;
}

std::vector<std::string_view> Path::Split(std::string_view path) {
    if (path.empty() || path.front() != '/') {
        Vor::Throw(yERROR_PARAMETER, "The path '%s' doesn't begin with a slash.", path);
    }
    if (path.back() == '/') {
        path.remove_suffix(1);
    }
    std::vector<std::string_view> steps;
    while (!path.empty()) {
        path.remove_prefix(1);
        const std::string_view step = path.substr(0, path.find('/'));
        steps.push_back(step);
        path.remove_prefix(step.size());
    }
    return steps;
}

std::string Path::Encode(std::string_view text) {
    constexpr std::string_view Digits = "0123456789ABCDEF";
    std::string step;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (IsPlain(byte)) {
            step += c;
        } else {
            step += {'%', Digits[byte >> 4U], Digits[byte & 0xFU]};
        }
    }
    return step;
}

std::string Path::Decode(std::string_view step) {
    std::string text;
    for (std::size_t i = 0; i < step.size(); ++i) {
        if (step[i] != '%') {
            text += step[i];
            continue;
        }
        unsigned char byte = 0;
        const std::string_view digits = step.substr(i + 1, 2);
        const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
        if (digits.size() != 2 || result.ec != std::errc() || result.ptr != digits.data() + 2) {
            Vor::Throw(yERROR_FORMAT, "'%s' has a percent sign that two hexadecimal digits don't follow.", step);
        }
        text += static_cast<char>(byte);
        i += 2;
    }
    if (!Vor::IsUtf8(text) || std::any_of(text.begin(), text.end(), IsControl)) {
        Vor::Throw(yERROR_FORMAT, "The step %s of the path is no printable UTF-8.", Encode(text));
    }
    return text;
}

} // namespace VorApi
