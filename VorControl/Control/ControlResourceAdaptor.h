#pragma once

#include "VorControl/Control/IControlResourceAdaptor.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace Vor {
class AsyncRunner;
}

namespace VorRest {
class RequestProcessor;
}

namespace VorControl {

/// Reads resources on the main loop, one at a time. From any thread.
class ControlResourceAdaptor : public IControlResourceAdaptor {
public:
    /// The processor outlives it.
    explicit ControlResourceAdaptor(VorRest::RequestProcessor& processor);
    /// Drops a read that the main loop hasn't begun.
    ~ControlResourceAdaptor() override;

    ControlResourceAdaptor(const ControlResourceAdaptor&) = delete;
    ControlResourceAdaptor& operator=(const ControlResourceAdaptor&) = delete;

    void Read(const std::string& path, std::string& out, unsigned long long timeout) override;

private:
    struct Result;

    bool OperationBegin();
    std::uint32_t OperationFinish();
    void ReadOnMainLoop(const std::string& path, Result& result);
    std::string Dump(const std::string& path) const;

    VorRest::RequestProcessor& requestProcessor;
    std::unique_ptr<Vor::AsyncRunner> asyncRunner;
    /// 1 from the start of a read until the main loop is done with it, which may be after the caller's time-out.
    std::atomic<std::uint32_t> readInProgress = 0;
};

} // namespace VorControl
