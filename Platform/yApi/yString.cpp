#include "yApi/yString.h"

#include "yApi/yFault.h"

#include <cstring>

bool yStrEquals(const char* a, const char* b) {
    if (a == nullptr || b == nullptr) {
        return a == b;
    }
    return std::strcmp(a, b) == 0;
}

yStatus yStrCat(char* destination, std::size_t capacity, const char* source) {
    if (const yStatus fault = yFault_Check("yStrCat"); fault != yOK) {
        return fault;
    }
    if (destination == nullptr || source == nullptr) {
        return yERROR_PARAMETER;
    }
    const std::size_t length = strnlen(destination, capacity);
    const std::size_t added = std::strlen(source);
    if (length >= capacity || added >= capacity - length) {
        return yERROR_SIZE;
    }
    std::memcpy(destination + length, source, added + 1);
    return yOK;
}

const char* yStrFindFirst(const char* text, const char* pattern) {
    return text == nullptr || pattern == nullptr ? nullptr : std::strstr(text, pattern);
}
