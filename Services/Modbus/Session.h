#pragma once

#include "Net/BufferedSession.h"
#include "Services/Modbus/RequestHandler.h"

#include <cstddef>
#include <string>

namespace Services::Modbus {

/// The frames of one connection. Replies are sent in the order of the requests. Not thread-safe.
class Session : public Net::BufferedSession {
public:
    /// `handler` must outlive the session.
    Session(RequestHandler& handler, bool mayWrite)
        : BufferedSession(2048, std::size_t{16} * 1024)
        , handler(handler)
        , mayWrite(mayWrite) {}

    /// Whether the writing functions are served.
    void SetMayWrite(bool value) override { mayWrite = value; }

    std::size_t Process() override;

    /// Something that isn't a frame was received, so the next frame can't be found. The replies to the requests before
    /// it are still sent.
    bool Broken() const override { return broken; }
    std::string EndReason() const override { return "it sent what isn't Modbus TCP"; }

private:
    RequestHandler& handler;
    bool mayWrite;
    bool broken = false;
};

} // namespace Services::Modbus
