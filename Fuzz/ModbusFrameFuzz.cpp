// Any stream of bytes. The replies must not depend on the sizes of the pieces in which the stream arrives.

#include "Services/Modbus/Session.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace {

using namespace Services::Modbus;

/// Each register contains its own address. Every second hundred belongs to no block. 130 registers from 1000 on may be
/// written; they start with twice their address, and a write that makes the first one odd is refused.
class Registers : public IRegisterMap {
public:
    Registers() {
        for (unsigned i = 0; i < InputCount; ++i) {
            PutWord(&input[2 * i], static_cast<std::uint16_t>(2 * (InputBegin + i)));
        }
    }

    bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const override {
        if (address + count > 65536u) {
            std::abort();
        }
        if (address / 100 % 2 == 1) {
            return false;
        }
        for (unsigned i = 0; i < count; ++i) {
            const unsigned at = address + i;
            PutWord(destination + 2 * i,
                    IsInput(at) ? Word(&input[2 * (at - InputBegin)]) : static_cast<std::uint16_t>(at));
        }
        return true;
    }

    unsigned char Write(const RegisterWrite& write) override {
        const std::size_t count = write.values.size() / 2;
        if (count < 1 || count > 123 || write.values.size() % 2 != 0 || write.address + count > 65536u) {
            std::abort();
        }
        if (!IsInput(write.address) || !IsInput(write.address + static_cast<unsigned>(count) - 1)) {
            return IllegalDataAddress;
        }
        const auto readCount = static_cast<std::uint16_t>(write.read.size() / 2);
        if (readCount > 0 && !Read(write.readAddress, readCount, write.read.data())) {
            return IllegalDataAddress;
        }
        auto next = input;
        for (std::size_t i = 0; i < count; ++i) {
            unsigned char* const place = &next[2 * (write.address - InputBegin + i)];
            PutWord(place, (Word(place) & write.keep) | (Word(&write.values[2 * i]) & ~write.keep));
        }
        if (next[1] % 2 == 1) {
            return ServerDeviceBusy;
        }
        input = next;
        if (readCount > 0) {
            Read(write.readAddress, readCount, write.read.data());
        }
        return NoException;
    }

private:
    static constexpr unsigned InputBegin = 1000;
    static constexpr unsigned InputCount = 130;

    static bool IsInput(unsigned address) { return address >= InputBegin && address < InputBegin + InputCount; }

    std::array<unsigned char, std::size_t{2} * InputCount> input{};
};

struct Outcome {
    std::vector<unsigned char> replies;
    bool broken = false;

    bool operator==(const Outcome&) const = default;
};

Outcome Feed(std::span<const unsigned char> stream, std::size_t step, std::size_t maxSentSize, bool mayWrite) {
    Registers registers;
    Services::Common::ServiceCounters counters;
    RequestHandler handler(registers, counters, 0);
    Session session(handler, mayWrite);
    Outcome outcome;
    while (!stream.empty() && !session.Broken()) {
        const auto space = session.ReceiveSpace();
        const std::size_t size = std::min({step, space.size(), stream.size()});
        std::copy_n(stream.begin(), size, space.begin());
        session.Received(size);
        stream = stream.subspan(size);
        while (session.Process() > 0 || !session.Replies().empty()) {
            const auto replies = session.Replies().first(std::min(maxSentSize, session.Replies().size()));
            outcome.replies.insert(outcome.replies.end(), replies.begin(), replies.end());
            session.Sent(replies.size());
        }
    }
    outcome.broken = session.Broken();
    return outcome;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const unsigned char> stream(data, size);
    const std::size_t odd = size == 0 ? 1 : 1 + data[size - 1] % 23;
    for (const bool mayWrite : {true, false}) {
        const Outcome whole = Feed(stream, SIZE_MAX, SIZE_MAX, mayWrite);
        if (Feed(stream, 1, SIZE_MAX, mayWrite) != whole || Feed(stream, odd, 100, mayWrite) != whole ||
            Feed(stream, 12, 37, mayWrite) != whole) {
            std::abort();
        }
    }
    return 0;
}
