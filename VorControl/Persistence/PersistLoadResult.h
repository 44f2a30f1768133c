#pragma once

namespace VorControl::Persistence {

/// What a load has to report beside a failure that it throws. Any but None makes the loaded domain count as modified.
enum class PersistLoadResult {
    None = 0,
    UnsupportedUpgrade = 1, ///< a version was upgraded by a path that isn't supported
    Upgraded = 2,           ///< a version was upgraded
    PartMissing = 3,        ///< part wasn't applied: something named in the configuration isn't there
    AssemblyInPart = 5,     ///< a register assembly was applied in part
    Failed = -1
};

} // namespace VorControl::Persistence
