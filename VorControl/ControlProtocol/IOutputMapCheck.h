#pragma once

namespace VorControl::ControlProtocol {

/// An output map that can repair a document that was written without the operations of the map.
class IOutputMapCheck {
public:
    /// Call it after a document was read into the map, before any other operation. Sorts the entries by id. Of those
    /// with the same id or the same source it keeps the first one, and it drops those above the maximum number. Throws
    /// yERROR_ALREADY_EXISTS or yERROR_FULL when it dropped any; the map is valid then.
    virtual void CheckLoaded() = 0;

protected:
    ~IOutputMapCheck() = default;
};

} // namespace VorControl::ControlProtocol
