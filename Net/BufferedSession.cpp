#include "Net/BufferedSession.h"

#include <cstring>

namespace Net {

BufferedSession::BufferedSession(std::size_t inputCapacity, std::size_t outputCapacity)
    : inputCapacity(inputCapacity)
    , outputCapacity(outputCapacity)
    , input(std::make_unique_for_overwrite<unsigned char[]>(inputCapacity))
    , output(std::make_unique_for_overwrite<unsigned char[]>(outputCapacity)) {}

void BufferedSession::Sent(std::size_t count) {
    outputBegin += count;
    if (outputBegin == outputEnd) {
        outputBegin = outputEnd = 0;
    }
}

void BufferedSession::Consume(std::size_t count) {
    if (count > 0) {
        inputEnd -= count;
        std::memmove(input.get(), input.get() + count, inputEnd);
    }
}

void BufferedSession::Append(std::span<const unsigned char> bytes) {
    std::memcpy(output.get() + outputEnd, bytes.data(), bytes.size());
    outputEnd += bytes.size();
}

} // namespace Net
