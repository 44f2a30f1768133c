#pragma once

namespace VorControl::ControlProtocol {

/// A service that also implements this is notified of each load, also when the file has nothing for the service.
class ILoadObserver {
public:
    /// A domain is about to be loaded, or the job to be initialised: until now the former job applied. Called on the
    /// thread of the load, before any service is changed. An exception is logged, and the load goes on.
    virtual void OnLoadBegin() = 0;

protected:
    ~ILoadObserver() = default;
};

} // namespace VorControl::ControlProtocol
