#pragma once

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Tests {

/// An answer of the sensor.
struct HttpAnswer {
    int status = 0;
    std::map<std::string, std::string> fields; ///< names in small letters
    nlohmann::json body;                       ///< null when it is no JSON

    std::string Field(const std::string& name) const {
        const auto found = fields.find(name);
        return found == fields.end() ? "" : found->second;
    }
    /// Where the link leads, the first of several.
    std::string Link(const std::string& relation) const {
        const nlohmann::json& links = body.at("_links").at(relation);
        return (links.is_array() ? links.at(0) : links).at("href");
    }
    /// Where the links lead.
    std::vector<std::string> Links(const std::string& relation) const {
        std::vector<std::string> paths;
        for (const nlohmann::json& link : body.at("_links").at(relation)) {
            paths.push_back(link.at("href"));
        }
        return paths;
    }
    /// Where the embedded documents of a relation are.
    std::vector<std::string> Embedded(const std::string& relation) const {
        std::vector<std::string> paths;
        const nlohmann::json& documents = body.at("_embedded").at(relation);
        for (const nlohmann::json& document : documents.is_array() ? documents : nlohmann::json::array({documents})) {
            paths.push_back(document.at("_links").at("self").at("href"));
        }
        return paths;
    }
};

/// The answer from its first line to the end of its body. What comes before the last head, such as "100 Continue", is
/// left out.
inline HttpAnswer ParseHttpAnswer(std::string text) {
    while (text.starts_with("HTTP/1.1 1")) {
        text.erase(0, text.find("\r\n\r\n") + 4);
    }
    HttpAnswer answer;
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    answer.status = std::atoi(line.substr(line.find(' ') + 1).c_str());
    while (std::getline(lines, line) && line != "\r") {
        const auto colon = line.find(": ");
        std::string name = line.substr(0, colon);
        std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
        answer.fields[name] = line.substr(colon + 2, line.size() - colon - 3);
    }
    const std::string body(std::istreambuf_iterator<char>(lines), {});
    answer.body = nlohmann::json::parse(body, nullptr, false);
    if (answer.body.is_discarded()) {
        answer.body = nullptr;
    }
    return answer;
}

} // namespace Tests
