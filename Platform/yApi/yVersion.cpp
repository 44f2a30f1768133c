#include "yApi/yVersion.h"

#include "yApi/yFault.h"

#include <array>
#include <charconv>
#include <cstring>

yStatus yVersion_Parse(yVersion* version, const char* text) {
    if (const yStatus fault = yFault_Check("yVersion_Parse"); fault != yOK) {
        return fault;
    }
    if (version == nullptr || text == nullptr) {
        return yERROR_PARAMETER;
    }
    std::array<std::uint32_t, 4> numbers{};
    const char* position = text;
    const char* end = text + std::strlen(text);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i > 0 && (position == end || *position++ != '.')) {
            return yERROR_FORMAT;
        }
        const auto [next, error] = std::from_chars(position, end, numbers[i]);
        if (error != std::errc()) {
            return yERROR_FORMAT;
        }
        position = next;
    }
    if (position != end) {
        return yERROR_FORMAT;
    }
    *version = {numbers[0], numbers[1], numbers[2], numbers[3]};
    return yOK;
}
