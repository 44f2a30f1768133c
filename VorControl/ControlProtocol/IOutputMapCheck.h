#pragma once

namespace VorControl::ControlProtocol {

/// An output map that can mend what was written into its document past its own operations.
class IOutputMapCheck {
public:
    /// Call it after a document was read into the map, before any search in it. Puts the entries in order of their ids
    /// and drops, of those that share an id or a source, all but the first, and those beyond the greatest number.
    /// Throws yERROR_ALREADY_EXISTS or yERROR_FULL when it dropped any; the map is in order by then.
    virtual void CheckLoaded() = 0;

protected:
    ~IOutputMapCheck() = default;
};

} // namespace VorControl::ControlProtocol
