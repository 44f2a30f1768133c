#include "Sensor/Http/EventTopic.h"

#include "Vor/Exception.h"
#include "VorApi/Path.h"
#include "VorApi/ResourceRouter.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace Sensor::Http {

namespace {

constexpr std::string_view NoticeOfPath = "notice:";
constexpr std::string_view MetricsOf = "metrics:";

/// The path of a resource, coded anew; nothing when there is none.
std::optional<std::string> ResourcePath(const std::string& path, const VorApi::ResourceRouter& router) {
    try {
        if (!router.Find(path)) {
            return std::nullopt;
        }
        std::string coded;
        for (const std::string_view step : VorApi::Path::Split(path)) {
            coded += '/' + VorApi::Path::Encode(VorApi::Path::Decode(step));
        }
        return coded;
    } catch (const Vor::Exception&) {
        return std::nullopt;
    }
}

} // namespace

EventTopic EventTopic::Parse(const std::string& text, const VorApi::ResourceRouter& router,
                             const std::vector<std::string>& services) {
    if (text == "notice") {
        return {Kind::Notice, text, ""};
    }
    if (text == "state") {
        return {Kind::State, text, ""};
    }
    if (text.starts_with(NoticeOfPath)) {
        if (const auto path = ResourcePath(text.substr(NoticeOfPath.size()), router)) {
            return {Kind::Notice, text, *path};
        }
    }
    if (text.starts_with(MetricsOf)) {
        const std::string service = text.substr(MetricsOf.size());
        if (std::ranges::find(services, service) != services.end()) {
            return {Kind::Metrics, text, VorApi::Path::Format("/controls/:protocol/metrics", {service})};
        }
    }
    std::string topics;
    for (const std::string& topic : All(services)) {
        topics += topic + ", ";
    }
    Vor::Throw(yERROR_FORMAT,
               "There is no topic \"%s\". Topics are: %sand notice:PATH for a resource and all below it.", text,
               topics);
}

std::vector<std::string> EventTopic::All(const std::vector<std::string>& services) {
    std::vector<std::string> topics{"notice", "state"};
    for (const std::string& service : services) {
        topics.push_back(std::string(MetricsOf) + service);
    }
    return topics;
}

} // namespace Sensor::Http
