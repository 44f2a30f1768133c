#pragma once

#include "Services/Common/ITcpSession.h"
#include "Services/Modbus/FrameCodec.h"
#include "Services/Modbus/RequestHandler.h"

#include <array>
#include <cstddef>
#include <span>

namespace Services::Modbus {

/// The frames of one connection. Replies are sent in the order of the requests. Both buffers are bounded: while the
/// replies fill theirs, no further request is answered, and while the requests fill theirs, nothing is received. Not
/// thread-safe.
class Session : public Common::ITcpSession {
public:
    /// `handler` must outlive the session.
    Session(RequestHandler& handler, bool mayWrite)
        : handler(handler)
        , mayWrite(mayWrite) {}

    /// Whether the writing functions are served.
    void SetMayWrite(bool value) override { mayWrite = value; }

    /// Never empty while no replies wait.
    std::span<unsigned char> ReceiveSpace() override { return std::span(input).subspan(inputEnd); }
    void Received(std::size_t count) override { inputEnd += count; }

    std::size_t Process() override;

    std::span<const unsigned char> Replies() const override {
        return std::span(output).first(outputEnd).subspan(outputBegin);
    }
    void Sent(std::size_t count) override;

    /// Something that isn't a frame was received, so the next frame can't be found. The replies to the requests before
    /// it are still sent.
    bool Broken() const override { return broken; }

private:
    static constexpr std::size_t InputCapacity = 2048;
    static constexpr std::size_t OutputCapacity = std::size_t{16} * 1024;

    RequestHandler& handler;
    bool mayWrite;
    std::size_t inputEnd = 0;
    std::size_t outputBegin = 0;
    std::size_t outputEnd = 0;
    bool broken = false;
    std::array<unsigned char, InputCapacity> input;
    std::array<unsigned char, OutputCapacity> output;
};

} // namespace Services::Modbus
