#pragma once

#include "VorApi/DocumentResourceBase.h"

namespace Sensor::Resources {

class ScanDocuments;

/// The values of the latest frames, in columns. A client asks for "n" frames, and for any number of measurements, each
/// as "source".
class ScanHistoryResource : public VorApi::DocumentResourceBase {
public:
    /// The documents outlive this.
    explicit ScanHistoryResource(const ScanDocuments& documents)
        : documents(documents) {}

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

protected:
    void RequireDocument(const VorApi::RequestInfoEx&) override {}

private:
    const ScanDocuments& documents;
};

} // namespace Sensor::Resources
