#pragma once

#include "Sensor/Resources/PacedStreams.h"
#include "VorApi/DocumentResourceBase.h"

#include <cstddef>
#include <cstdint>

namespace Sensor::Resources {

class ScanDocuments;

/// The last frame of the scan, as a document and as a stream, with so many "points" as a client asks for.
class ScanResource : public VorApi::DocumentResourceBase, public PacedStreams {
public:
    /// The documents outlive this.
    explicit ScanResource(ScanDocuments& documents);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

protected:
    void RequireDocument(const VorApi::RequestInfoEx&) override {}
    std::uint64_t Newest() override;
    nlohmann::json NewestDocument(std::size_t points) override;

private:
    ScanDocuments& documents;
};

} // namespace Sensor::Resources
