#pragma once

#include "Vor/AsyncTimer.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorApi/StreamResourceBase.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

namespace Sensor::Resources {

class ScanDocuments;

/// The last frame of the scan, as a document and as a stream. A client asks for a number of "points", and in the stream
/// for a "rate", so many documents a second at most; there is one for a new frame only.
class ScanResource : public VorApi::DocumentResourceBase, public VorApi::StreamResourceBase {
public:
    /// Those for the same points at the same rate are one to HTTP.
    static constexpr std::size_t MaxStreams = 16;

    /// The documents outlive this.
    explicit ScanResource(ScanDocuments& documents)
        : documents(documents) {}

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

    /// Throws `yERROR_BUSY` when there are MaxStreams.
    unsigned int StartStream(const VorApi::RequestInfoEx& request, VorApi::IStreamReceiver& receiver) override;
    void StopStream(unsigned int id) override;
    StreamResourceBase* StreamableProvider() override { return this; }

protected:
    void RequireDocument(const VorApi::RequestInfoEx&) override {}

private:
    struct Stream {
        VorApi::IStreamReceiver& receiver;
        std::size_t points;
        std::uint64_t sent = 0; ///< what ScanDocuments::Update returned for the last document
        std::unique_ptr<Vor::AsyncTimer> timer = nullptr;
    };

    void Send(Stream& stream);

    ScanDocuments& documents;
    std::map<unsigned int, Stream> streams;
    unsigned int lastId = 0;
};

} // namespace Sensor::Resources
