#include "Sensor/Resources/EventsResource.h"

#include "Sensor/Http/EventStreams.h"
#include "Sensor/Resources/DocumentMembers.h"
#include "Vor/Exception.h"

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

namespace {

class TopicsProperties : public Vor::Params::Group {
public:
    TopicsProperties() { RegisterReadOnly(*this, "topics", topics, "Topics"); }

    Vor::Params::Value<std::vector<std::string>> topics;
};

} // namespace

TopicsUpdate::TopicsUpdate() {
    Register("add", add, "Topics to add");
    Register("remove", remove, "Topics to remove");
}

EventsResource::EventsResource(Http::EventStreams& streams)
    : streams(streams) {}

void EventsResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx&,
                              VorApi::VorDataTree& data) {
    const std::string* const name = request.FindKey("stream");
    TopicsProperties document;
    document.topics = name != nullptr ? streams.TopicsOf(*name) : streams.Topics();
    NodeToVorDataTree(document, request, data, true);
}

void EventsResource::UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) {
    const std::string* const name = request.FindKey("stream");
    if (name == nullptr) {
        Vor::Throw(yERROR_READ_ONLY);
    }
    TopicsUpdate update;
    NodeFromJsonAndValidate(update, json);
    streams.ChangeTopics(*name, update.add, update.remove);
}

} // namespace Sensor::Resources
