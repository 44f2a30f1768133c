#include "Sensor/Http/EntityTags.h"

#include "Sensor/Http/FieldList.h"

#include <algorithm>

namespace Sensor::Http {

bool IfMatchAdmits(std::string_view field, const std::optional<std::string>& tag) {
    return Trim(field) == "*" ||
           (tag && std::ranges::any_of(SplitList(field, ','), [&](std::string_view listed) { return listed == *tag; }));
}

} // namespace Sensor::Http
