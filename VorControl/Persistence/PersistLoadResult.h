#pragma once

namespace VorControl::Persistence {

/// What a load reports besides a failure that it throws. With any result but None the loaded domain counts as modified.
enum class PersistLoadResult {
    None = 0,
    UnsupportedUpgrade = 1, ///< a version was upgraded by a path that isn't supported
    Upgraded = 2,           ///< a version was upgraded
    PartMissing = 3,        ///< part wasn't applied: something named in the configuration doesn't exist
    AssemblyInPart = 5,     ///< a register assembly was applied in part
    Failed = -1
};

} // namespace VorControl::Persistence
