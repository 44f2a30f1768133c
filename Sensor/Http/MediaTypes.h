#pragma once

#include "Sensor/Http/HttpRequest.h"

#include <initializer_list>
#include <string_view>

namespace Sensor::Http {

inline constexpr std::string_view HalJson = "application/hal+json";
inline constexpr std::string_view OctetStream = "application/octet-stream";
inline constexpr std::string_view EventStream = "text/event-stream";
inline constexpr std::string_view MergePatchTypes = "application/json, application/merge-patch+json";

/// Whether the field Content-Type is one of the types, in UTF-8.
bool IsContentType(const HttpFields& fields, std::initializer_list<std::string_view> types);

/// Whether the field Accept names the type itself; a range such as "*/*" doesn't.
bool AcceptsExplicitly(const HttpFields& fields, std::string_view type);

} // namespace Sensor::Http
