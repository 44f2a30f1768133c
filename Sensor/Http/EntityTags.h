#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Sensor::Http {

/// Whether a field If-Match (RFC 9110, 13.1.1) admits the entity tag that a resource has, if any: the field is "*" or
/// lists the tag. A weak tag of the list is never equal to another one.
bool IfMatchAdmits(std::string_view field, const std::optional<std::string>& tag);

} // namespace Sensor::Http
