#pragma once

#include "Vor/JsonText.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

namespace Sensor::Remote {

/// Where a sensor serves HTTP.
struct ServerAddress {
    std::string host; ///< a name, or an address as digits, of IPv6 without brackets
    std::string port;
    std::string authority; ///< for the field Host

    /// Parses "http://HOST[:PORT]". Throws a StartError for any other text.
    static ServerAddress Parse(const std::string& url);

    std::string Url() const { return "http://" + authority; }
};

struct HttpQuestion {
    std::string method = "GET";
    std::string target; ///< a path, with a query or without; what can't be in one is percent-coded
    std::string body = {};
    std::string contentType = {}; ///< of the body
    std::string ifMatch = {};     ///< the tag that the resource must have; empty for any
};

struct HttpReply {
    unsigned status = 0;
    std::string contentType;
    std::string tag; ///< the field ETag; empty when there is none
    std::string body;
};

/// Asks a server of HTTP, with one connection for each question, and waits for the answer.
class HttpClient {
public:
    struct Limits {
        std::chrono::milliseconds connect{5000};
        std::chrono::milliseconds answer{40000}; ///< longer than the sensor works on one
        std::size_t body = Vor::JsonMaxSize;     ///< bytes of an answer
    };

    explicit HttpClient(ServerAddress server)
        : HttpClient(std::move(server), Limits()) {}
    HttpClient(ServerAddress server, const Limits& limits)
        : server(std::move(server))
        , limits(limits) {}

    const ServerAddress& Server() const { return server; }

    /// Throws a RemoteError when there is no answer, or a larger one.
    HttpReply Ask(const HttpQuestion& question) const;

private:
    ServerAddress server;
    Limits limits;
};

} // namespace Sensor::Remote
