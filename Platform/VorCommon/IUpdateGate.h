#pragma once

namespace VorCommon {

/// Serialises the updates of configuration. One thread may enter more than once; it leaves as often, on the thread
/// that entered. Flag 1 means an update of a service.
class IUpdateGate {
public:
    virtual void Enter(int flag) = 0;
    virtual void Leave(int flag) = 0;

protected:
    ~IUpdateGate() = default;
};

} // namespace VorCommon
