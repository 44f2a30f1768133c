// Any stream of bytes: it must do no harm, and how it is cut into pieces must change nothing in the replies.

#include "Services/Modbus/Session.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace {

using namespace Services::Modbus;

// Registers that hold their own address; every second hundred has no block.
class Registers : public IRegisterReader {
public:
    bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const override {
        if (address / 100 % 2 == 1) {
            return false;
        }
        for (unsigned i = 0; i < count; ++i) {
            PutWord(destination + 2 * i, static_cast<std::uint16_t>(address + i));
        }
        return true;
    }
};

struct Outcome {
    std::vector<unsigned char> replies;
    bool broken = false;

    bool operator==(const Outcome&) const = default;
};

Outcome Feed(std::span<const unsigned char> stream, std::size_t step, std::size_t takenAtATime) {
    const Registers registers;
    const RequestHandler handler(registers, 0);
    Session session(handler);
    Outcome outcome;
    while (!stream.empty() && !session.Broken()) {
        const auto space = session.ReceiveSpace();
        const std::size_t size = std::min({step, space.size(), stream.size()});
        std::copy_n(stream.begin(), size, space.begin());
        session.Received(size);
        stream = stream.subspan(size);
        while (session.Process() > 0 || !session.Replies().empty()) {
            const auto replies = session.Replies().first(std::min(takenAtATime, session.Replies().size()));
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
    const Outcome whole = Feed(stream, SIZE_MAX, SIZE_MAX);
    const std::size_t odd = size == 0 ? 1 : 1 + data[size - 1] % 23;
    if (Feed(stream, 1, SIZE_MAX) != whole || Feed(stream, odd, 100) != whole || Feed(stream, 12, 37) != whole) {
        std::abort();
    }
    return 0;
}
