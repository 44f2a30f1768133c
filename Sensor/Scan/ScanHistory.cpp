#include "Sensor/Scan/ScanHistory.h"

#include "VorApi/LogThrown.h"
#include "VorMsg/ResultSet.h"
#include "VorMsg/VvMeasureMsg.h"
#include "VorMsg/VvMsg.h"
#include "yApi/yMsgInfo.h"
#include "yApi/yObject.h"
#include "yApi/yStamp.h"

#include <algorithm>
#include <bit>

namespace Sensor::Scan {

namespace {

// A frame's words: its number, its index, its time, then two for each source.
constexpr std::size_t IndexWord = 1;
constexpr std::size_t TimeWord = 2;
constexpr std::size_t FirstSourceWord = 3;
constexpr std::size_t WordsPerSource = 2;

/// In place of a decision: there is no value.
constexpr std::uint64_t NoValue = ~std::uint64_t{0};

void* MessageAt(void* resultSet, std::size_t index) {
    return yMsgInfo_Message(ResultItem_MsgInfo(ResultSet_At(resultSet, index)));
}

} // namespace

ScanHistory::ScanHistory(VorCore::ResultHub& hub, std::size_t sourceCount)
    : hub(hub)
    , sourceCount(sourceCount)
    , frameWords(FirstSourceWord + WordsPerSource * sourceCount)
    , words(Capacity * frameWords)
    , handler(hub.AddResultHandler([this](void* resultSet) { Add(resultSet); })) {}

ScanHistory::~ScanHistory() {
    Vor::CleanUp([this] { hub.RemoveResultHandler(handler); });
    yObject_Release(fresh.exchange(nullptr));
}

const yStamp* ScanHistory::StampOf(void* resultSet) {
    const std::size_t count = ResultSet_Count(resultSet);
    return count == 0 ? nullptr : VvMsg_StampAt(MessageAt(resultSet, count - 1), 0);
}

// A word is stored with release and loaded with acquire: a reader that sees one of a newer frame then sees that the
// first word has changed, too.
void ScanHistory::Add(void* resultSet) {
    const yStamp* const stamp = StampOf(resultSet);
    if (stamp == nullptr || ResultSet_Count(resultSet) != sourceCount) {
        return;
    }
    const std::uint64_t number = frameCount.load(std::memory_order_relaxed) + 1;
    Word* const place = words.data() + PlaceOf(number);
    place[0].store(Writing, std::memory_order_relaxed);
    place[IndexWord].store(stamp->frameIndex, std::memory_order_release);
    place[TimeWord].store(stamp->time, std::memory_order_release);
    for (std::size_t source = 0; source < sourceCount; ++source) {
        void* const message = MessageAt(resultSet, source);
        const bool hasValue = message != nullptr && yObject_Is(message, yType_VvMeasureMsg);
        Word* const sample = place + FirstSourceWord + WordsPerSource * source;
        sample[0].store(hasValue ? VvMeasureMsg_Decision(message) : NoValue, std::memory_order_release);
        sample[1].store(hasValue ? std::bit_cast<std::uint64_t>(VvMeasureMsg_Value(message)) : 0,
                        std::memory_order_release);
    }
    place[0].store(number, std::memory_order_release);
    yObject_Release(fresh.exchange(yObject_Share(resultSet), std::memory_order_acq_rel));
    frameCount.store(number, std::memory_order_release);
}

const Vor::Object& ScanHistory::LastSet() {
    if (void* const taken = fresh.exchange(nullptr, std::memory_order_acq_rel)) {
        last = Vor::Object::Adopt(taken);
    }
    return last;
}

std::vector<ScanHistory::Frame> ScanHistory::Latest(std::size_t count, const std::vector<std::size_t>& sources) const {
    const std::uint64_t newest = FrameCount();
    std::vector<Frame> frames;
    frames.reserve(std::min(count, Capacity));
    const std::uint64_t number = std::min<std::uint64_t>({newest, count, Capacity});
    for (std::uint64_t frame = newest - number + 1; frame <= newest; ++frame) {
        if (auto read = Read(frame, sources)) {
            frames.push_back(*std::move(read));
        }
    }
    return frames;
}

std::optional<ScanHistory::Frame> ScanHistory::Read(std::uint64_t number,
                                                    const std::vector<std::size_t>& sources) const {
    const Word* const place = words.data() + PlaceOf(number);
    if (place[0].load(std::memory_order_acquire) != number) {
        return std::nullopt;
    }
    Frame frame{.index = place[IndexWord].load(std::memory_order_acquire),
                .time = place[TimeWord].load(std::memory_order_acquire)};
    frame.samples.reserve(sources.size());
    for (const std::size_t source : sources) {
        const Word* const sample = place + FirstSourceWord + WordsPerSource * source;
        const std::uint64_t decision = sample[0].load(std::memory_order_acquire);
        const std::uint64_t value = sample[1].load(std::memory_order_acquire);
        frame.samples.push_back(decision == NoValue
                                    ? Sample()
                                    : Sample{std::bit_cast<double>(value), static_cast<unsigned char>(decision)});
    }
    return place[0].load(std::memory_order_relaxed) == number ? std::optional(std::move(frame)) : std::nullopt;
}

} // namespace Sensor::Scan
