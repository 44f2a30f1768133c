#pragma once

namespace VorApi {

/// What the listeners of a resource receive. The first three equal EventType.
enum class Notification {
    Created = 1,
    Changed = 2,
    Deleted = 3,
    /// The whole subtree is to be read again.
    Reload = 4
};

} // namespace VorApi
