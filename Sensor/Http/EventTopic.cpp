#include "Sensor/Http/EventTopic.h"

#include "Vor/Exception.h"
#include "VorApi/Path.h"
#include "VorApi/ResourceRouter.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace Sensor::Http {

namespace {

constexpr std::string_view NoticeOfPath = "notice:";
constexpr std::string_view MetricsOf = "metrics:";

/// A topic that is determined by parameters: "rate", and how much its events have.
struct PacedTopic {
    std::string_view name;
    const char* path;
    std::string_view size;
};
constexpr PacedTopic PacedTopics[] = {{"scan", "/sensor/scan", "points"}, {"io", "/sensor/io", "edges"}};

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

bool IsParameter(std::string_view name, const PacedTopic& topic) {
    return name == "rate" || name == topic.size;
}

/// The parameters of a topic, such as ";rate=10;points=100"; nothing for anything else. The resource checks the values.
std::optional<VorApi::RequestInfoEx::Query> Parameters(std::string_view text, const PacedTopic& topic) {
    VorApi::RequestInfoEx::Query query;
    while (!text.empty()) {
        const std::string_view parameter = text.substr(1, text.find(';', 1) - 1);
        const std::string_view name = parameter.substr(0, parameter.find('='));
        const bool isSecond =
            std::ranges::find(query, name, [](const auto& known) { return known.first; }) != query.end();
        if (text.front() != ';' || !IsParameter(name, topic) || name.size() == parameter.size() || isSecond) {
            return std::nullopt;
        }
        query.emplace_back(name, parameter.substr(name.size() + 1));
        text.remove_prefix(1 + parameter.size());
    }
    return query;
}

} // namespace

EventTopic EventTopic::Parse(const std::string& text, const VorApi::ResourceRouter& router,
                             const std::vector<std::string>& services) {
    if (text == "notice") {
        return {Kind::Notice, text, ""};
    }
    for (const auto& [name, kind] :
         {std::pair("state", Kind::State), std::pair("problems", Kind::Problems), std::pair("log", Kind::Log)}) {
        if (text == name) {
            return {kind, text, ""};
        }
    }
    for (const PacedTopic& topic : PacedTopics) {
        if (text.starts_with(topic.name)) {
            if (auto query = Parameters(std::string_view(text).substr(topic.name.size()), topic)) {
                return {Kind::Stream, text, topic.path, *std::move(query)};
            }
        }
    }
    if (text.starts_with(NoticeOfPath)) {
        if (const auto path = ResourcePath(text.substr(NoticeOfPath.size()), router)) {
            return {Kind::Notice, text, *path};
        }
    }
    if (text.starts_with(MetricsOf)) {
        const std::string service = text.substr(MetricsOf.size());
        if (std::ranges::find(services, service) != services.end()) {
            return {Kind::Stream, text, VorApi::Path::Format("/controls/:protocol/metrics", {service})};
        }
    }
    std::string topics;
    for (const std::string& topic : All(services)) {
        topics += topic + ", ";
    }
    Vor::Throw(yERROR_FORMAT,
               "There is no topic \"%s\". Topics are: %sand notice:PATH for a resource and all below it. What "
               "\"scan\" sends is determined by \";rate=\" and \";points=\" behind it, what \"io\" sends by \";rate=\" "
               "and \";edges=\".",
               text, topics);
}

EventTopic EventTopic::OfResource(const std::string& path, const VorApi::RequestInfoEx::Query& query) {
    EventTopic topic{Kind::Stream, "", path};
    const auto isAsked = [](const auto& parameter) {
        return std::ranges::any_of(PacedTopics,
                                   [&](const PacedTopic& paced) { return IsParameter(parameter.first, paced); });
    };
    std::ranges::copy_if(query, std::back_inserter(topic.query), isAsked);
    return topic;
}

std::vector<std::string> EventTopic::All(const std::vector<std::string>& services) {
    std::vector<std::string> topics{"notice", "state", "problems", "log"};
    for (const PacedTopic& topic : PacedTopics) {
        topics.emplace_back(topic.name);
    }
    for (const std::string& service : services) {
        topics.push_back(std::string(MetricsOf) + service);
    }
    return topics;
}

} // namespace Sensor::Http
