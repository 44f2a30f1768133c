#include "Sensor/Resources/PacedStreams.h"

#include "Vor/Exception.h"
#include "VorApi/VorDataTree.h"

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

namespace {

constexpr QueryNumber Rate{.name = "rate", .least = 1, .greatest = 25, .otherwise = 10};

constexpr unsigned long long Second = 1'000'000;

} // namespace

unsigned int PacedStreams::StartStream(const VorApi::RequestInfoEx& request, VorApi::IStreamReceiver& receiver) {
    const std::size_t wanted = size.Of(request);
    const std::uint64_t rate = Rate.Of(request);
    if (streams.size() >= MaxStreams) {
        Vor::Throw(yERROR_BUSY, "There are %u streams of the %s with other rates or %s already, which is the limit.",
                   streams.size(), subject, size.name);
    }
    const unsigned int id = ++lastId;
    Stream& stream = streams.emplace(id, Stream{receiver, wanted}).first->second;
    stream.timer = std::make_unique<Vor::AsyncTimer>([this, &stream](Vor::AsyncTimer&) { Send(stream); });
    stream.timer->Start(Second / rate, false);
    return id;
}

void PacedStreams::StopStream(unsigned int id) {
    if (streams.erase(id) == 0) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no stream %u of the %s.", id, subject);
    }
}

void PacedStreams::Send(Stream& stream) {
    if (const std::uint64_t newest = Newest(); newest != stream.sent) {
        stream.sent = newest;
        stream.receiver.Send(VorApi::VorDataTree::FromJson(NewestDocument(stream.size)));
    }
}

} // namespace Sensor::Resources
