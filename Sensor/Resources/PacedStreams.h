#pragma once

#include "Sensor/Resources/QueryNumber.h"
#include "Vor/AsyncTimer.h"
#include "VorApi/StreamResourceBase.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

#include <nlohmann/json_fwd.hpp>

namespace Sensor::Resources {

/// Streams of the newest document of something that changes often. A client asks for a "rate", so many documents a
/// second at most, and for how much is in them; it gets one when there is a new one.
class PacedStreams : public VorApi::StreamResourceBase {
public:
    /// Those with the same documents at the same rate are one to HTTP.
    static constexpr std::size_t MaxStreams = 16;

    /// Throws `yERROR_BUSY` when there are MaxStreams.
    unsigned int StartStream(const VorApi::RequestInfoEx& request, VorApi::IStreamReceiver& receiver) override;
    void StopStream(unsigned int id) override;
    StreamResourceBase* StreamableProvider() override { return this; }

protected:
    /// `subject` is what the documents are about, with static lifetime, and `size` how much is in them.
    PacedStreams(const char* subject, const QueryNumber& size)
        : subject(subject)
        , size(size) {}

    /// A number that is another one when there is a new document; 0 as long as there is none.
    virtual std::uint64_t Newest() = 0;
    virtual nlohmann::json NewestDocument(std::size_t size) = 0;

private:
    struct Stream {
        VorApi::IStreamReceiver& receiver;
        std::size_t size;
        std::uint64_t sent = 0; ///< what Newest returned for the last document
        std::unique_ptr<Vor::AsyncTimer> timer = nullptr;
    };

    void Send(Stream& stream);

    const char* const subject;
    const QueryNumber size;
    std::map<unsigned int, Stream> streams;
    unsigned int lastId = 0;
};

} // namespace Sensor::Resources
