#pragma once

namespace VorApi {

/// What happened to something that clients follow.
enum class EventType { Created = 1, Updated = 2, Deleted = 3 };

} // namespace VorApi
