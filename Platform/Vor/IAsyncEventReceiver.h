#pragma once

namespace Vor {

/// The AsyncLoop calls it once for each event that was enqueued for it.
class IAsyncEventReceiver {
public:
    /// On the loop's thread. What it throws is logged there.
    virtual void ProcessEvent() = 0;

protected:
    ~IAsyncEventReceiver() = default;
};

} // namespace Vor
