#pragma once

#include "yApi/yStatus.h"

#include <cstddef>

/// Exact equality of the bytes. Null equals only null.
bool yStrEquals(const char* a, const char* b);

/// Appends `source` to the text in `destination`, a buffer of `capacity` bytes with the terminator counted.
/// `yERROR_SIZE`, with `destination` unchanged, when it doesn't fit; `yERROR_PARAMETER` for a null pointer.
yStatus yStrCat(char* destination, std::size_t capacity, const char* source);

/// The first occurrence of `pattern` in `text`, or null.
const char* yStrFindFirst(const char* text, const char* pattern);
