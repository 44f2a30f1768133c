#pragma once

#include "VorApi/DocumentResourceBase.h"

namespace Sensor::Http {
class EventStreams;
}

namespace Sensor::Resources {

/// The topics of events as a document, and of each open stream, whose topics its client changes here.
class EventsResource : public VorApi::DocumentResourceBase {
public:
    /// The streams outlive this.
    explicit EventsResource(Http::EventStreams& streams);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    /// "add" and "remove", lists of topics.
    void UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) override;
    bool IsUpdatable() const override { return true; }

private:
    Http::EventStreams& streams;
};

} // namespace Sensor::Resources
