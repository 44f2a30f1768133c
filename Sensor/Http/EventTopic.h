#pragma once

#include "VorApi/RequestInfoEx.h"

#include <string>
#include <vector>

namespace VorApi {
class ResourceRouter;
}

namespace Sensor::Http {

/// What a client wants to be notified of in its stream of events.
struct EventTopic {
    enum class Kind {
        Notice, ///< what was created, changed or deleted at `path` and below
        State,
        Problems,
        Log,
        Stream ///< what the stream of the resource at `path` sends for the `query`
    };

    Kind kind = Kind::State;
    std::string text; ///< as the client named it
    std::string path; ///< as VorApi::Path codes it; empty for all
    VorApi::RequestInfoEx::Query query = {};

    /// "notice", "notice:PATH" of a resource, "state", "problems", "log", "scan", perhaps with ";rate=" and ";points="
    /// in any order, "io", perhaps with ";rate=" and ";edges=", and "metrics:SERVICE" of one of the services. Throws
    /// `yERROR_FORMAT`, with a text that names the topics, for anything else. Main loop only.
    static EventTopic Parse(const std::string& text, const VorApi::ResourceRouter& router,
                            const std::vector<std::string>& services);

    /// The stream of a resource alone. Of the query it has what streams can be asked for.
    static EventTopic OfResource(const std::string& path, const VorApi::RequestInfoEx::Query& query);

    /// The topics that there are without those of single paths.
    static std::vector<std::string> All(const std::vector<std::string>& services);

    /// The name of its events.
    std::string EventName() const { return text.substr(0, text.find(';')); }

    bool operator==(const EventTopic& other) const {
        return kind == other.kind && path == other.path && query == other.query;
    }
};

} // namespace Sensor::Http
