#pragma once

#include "VorApi/DocumentResourceBase.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>
#include <vector>

namespace Sensor::Http {
class EventStreams;
}

namespace Sensor::Resources {

/// An update of a stream.
class TopicsUpdate : public Vor::Params::Group {
public:
    TopicsUpdate();

    Vor::Params::Value<std::vector<std::string>> add;
    Vor::Params::Value<std::vector<std::string>> remove;
};

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
