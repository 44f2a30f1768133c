#pragma once

#include "Net/ITcpSession.h"

#include <cstddef>
#include <memory>
#include <span>

namespace Net {

/// A session with a buffer of a fixed size in each direction. While the output is full no request is answered, and
/// while the input is full nothing is received. The derived class reads requests from Input() and adds replies.
class BufferedSession : public ITcpSession {
public:
    BufferedSession(const BufferedSession&) = delete;
    BufferedSession& operator=(const BufferedSession&) = delete;

    std::span<unsigned char> ReceiveSpace() override { return {input.get() + inputEnd, inputCapacity - inputEnd}; }
    void Received(std::size_t count) override { inputEnd += count; }
    std::span<const unsigned char> Replies() const override {
        return {output.get() + outputBegin, outputEnd - outputBegin};
    }
    void Sent(std::size_t count) override;

protected:
    /// Bytes, each at least 1.
    BufferedSession(std::size_t inputCapacity, std::size_t outputCapacity);

    /// The bytes that were received. Valid until Consume.
    std::span<const unsigned char> Input() const { return {input.get(), inputEnd}; }
    /// Removes the first `count` bytes of Input(). Moves the others, so call it once for all requests of a Process.
    void Consume(std::size_t count);

    /// The room for replies.
    std::span<unsigned char> OutputSpace() { return {output.get() + outputEnd, outputCapacity - outputEnd}; }
    /// `count` bytes were written to the front of OutputSpace().
    void Produced(std::size_t count) { outputEnd += count; }
    /// Adds bytes, for which there must be room.
    void Append(std::span<const unsigned char> bytes);

private:
    const std::size_t inputCapacity;
    const std::size_t outputCapacity;
    const std::unique_ptr<unsigned char[]> input;
    const std::unique_ptr<unsigned char[]> output;
    std::size_t inputEnd = 0;
    std::size_t outputBegin = 0;
    std::size_t outputEnd = 0;
};

} // namespace Net
