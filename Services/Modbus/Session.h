#pragma once

#include "Services/Common/ITcpSession.h"
#include "Services/Modbus/FrameCodec.h"
#include "Services/Modbus/RequestHandler.h"

#include <array>
#include <cstddef>
#include <span>

namespace Services::Modbus {

/// The frames of one connection: replies come in the order of the requests. Both sides are bounded: while replies fill
/// their buffer no further request is answered, and while requests wait there is no room to receive. How the stream is
/// cut into pieces changes nothing in the replies. Not thread-safe.
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

    /// Something that is no frame was received: the stream can't be followed any further. Replies to the requests
    /// before it are still there.
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
