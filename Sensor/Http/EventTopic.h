#pragma once

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
        Metrics ///< what the stream of the resource at `path` sends
    };

    Kind kind = Kind::State;
    std::string text; ///< as the client named it
    std::string path; ///< as VorApi::Path codes it; empty for all

    /// "notice", "notice:PATH" of a resource, "state" and "metrics:SERVICE" of one of the services. Throws
    /// `yERROR_FORMAT`, with a text that names the topics, for anything else. Main loop only.
    static EventTopic Parse(const std::string& text, const VorApi::ResourceRouter& router,
                            const std::vector<std::string>& services);

    /// The topics that there are without those of single paths.
    static std::vector<std::string> All(const std::vector<std::string>& services);

    bool operator==(const EventTopic& other) const { return kind == other.kind && path == other.path; }
};

} // namespace Sensor::Http
