#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Http {

/// A name that the query of a GET may have.
struct QueryDescription {
    std::string name;
    std::string text;
    nlohmann::json schema; ///< JSON Schema; an array for a name that may be there several times
};

/// What is at a route, for people and for programs. The schemas are the tree's own; a document, for instance, has one
/// of those of `documents`, of which there are none when it isn't known.
struct ResourceDescription {
    std::string tag;
    std::string one; ///< such as "a job"
    std::string all; ///< such as "the jobs", for a route that ends with a parameter
    std::vector<nlohmann::json> documents = {};
    std::vector<nlohmann::json> updates = {};   ///< of PATCH
    std::vector<nlohmann::json> arguments = {}; ///< of a command
    std::vector<nlohmann::json> results = {};   ///< of a command
    std::vector<QueryDescription> query = {};
    std::vector<QueryDescription> listQuery = {}; ///< of the collection
    bool isListStream = false;                    ///< the collection, with 'Accept: text/event-stream'
};

} // namespace Sensor::Http
