#include "Sensor/Remote/HttpClient.h"

#include "Sensor/PrintableText.h"
#include "Sensor/Remote/RemoteError.h"
#include "Sensor/StartError.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
// Asio of Boost 1.74 uses std::exchange without including its header.
#include <utility>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/field.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/verb.hpp>
#include <boost/beast/http/write.hpp>

namespace Sensor::Remote {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::ip::tcp;
using beast::error_code;

namespace {

constexpr int HttpVersion = 11;
constexpr std::uint32_t MaxHeaderSize = 64 * 1024;

bool IsPort(std::string_view text) {
    return !text.empty() && text.size() <= 5 &&
           std::ranges::all_of(text, [](char digit) { return digit >= '0' && digit <= '9'; }) &&
           std::stoul(std::string(text)) <= UINT16_MAX;
}

bool IsHost(std::string_view text, bool isBracketed) {
    return !text.empty() && std::ranges::all_of(text, [=](char each) {
        return (each >= '0' && each <= '9') || (each >= 'a' && each <= 'z') || (each >= 'A' && each <= 'Z') ||
               each == '.' || (isBracketed ? each == ':' : each == '-' || each == '_');
    });
}

/// Percent-codes what a target can't have.
std::string Coded(const std::string& target) {
    constexpr std::string_view Digits = "0123456789ABCDEF";
    std::string coded;
    for (const char each : target) {
        const auto byte = static_cast<unsigned char>(each);
        if (byte > ' ' && byte < 0x7F && std::string_view("\"#<>\\^`{|}").find(each) == std::string_view::npos) {
            coded += each;
        } else {
            coded += {'%', Digits[byte >> 4U], Digits[byte & 0xFU]};
        }
    }
    return coded;
}

std::string Text(beast::string_view text) {
    return {text.data(), text.size()};
}

std::string Seconds(std::chrono::milliseconds time) {
    return time.count() % 1000 == 0 ? Counted(static_cast<std::size_t>(time.count() / 1000), "second")
                                    : std::to_string(time.count()) + " ms";
}

/// One connection.
class Exchange {
public:
    explicit Exchange(const ServerAddress& server)
        : server(server) {}

    void Connect(std::chrono::milliseconds limit) {
        error_code error;
        const auto places = tcp::resolver(context).resolve(server.host, server.port, error);
        if (!error) {
            stream.expires_after(limit);
            error = Await([&](auto handler) { stream.async_connect(places, std::move(handler)); });
        }
        if (error) {
            const std::string reason =
                error == beast::error::timeout ? "no connection within " + Seconds(limit) : error.message();
            throw RemoteError(RemoteError::NoAnswer, "Nothing answers at " + server.Url() + " (" + reason +
                                                         "). Expected a sensor that runs; --url says where.");
        }
    }

    HttpReply Ask(const http::request<http::string_body>& request, const HttpClient::Limits& limits) {
        http::response_parser<http::string_body> parser;
        parser.body_limit(limits.body);
        parser.header_limit(MaxHeaderSize);
        beast::flat_buffer buffer;
        stream.expires_after(limits.answer);
        // A server that refuses a connection answers before it has read the request.
        const error_code sent = Await([&](auto handler) { http::async_write(stream, request, std::move(handler)); });
        // The header alone first: Boost 1.74 forgets that a length is beyond the limit when the body comes with it.
        error_code received =
            Await([&](auto handler) { http::async_read_header(stream, buffer, parser, std::move(handler)); });
        if (!received) {
            received = Await([&](auto handler) { http::async_read(stream, buffer, parser, std::move(handler)); });
        }
        if (received) {
            throw RemoteError(RemoteError::NoAnswer, ReasonOf(sent, received, limits));
        }
        auto response = parser.release();
        return {.status = response.result_int(),
                .contentType = Text(response[http::field::content_type]),
                .tag = Text(response[http::field::etag]),
                .body = std::move(response.body())};
    }

private:
    /// Runs an operation to its end, or to the deadline of the stream.
    template <class Start>
    error_code Await(const Start& start) {
        error_code result;
        start([&result](const error_code& error, const auto&...) { result = error; });
        context.restart();
        context.run();
        return result;
    }

    std::string ReasonOf(const error_code& sent, const error_code& received, const HttpClient::Limits& limits) const {
        if (sent == beast::error::timeout || received == beast::error::timeout) {
            return server.Url() + " gave no whole answer within " + Seconds(limits.answer) + ".";
        }
        if (received == http::error::body_limit) {
            return server.Url() + " gave an answer of more than " + Counted(limits.body, "byte") + ".";
        }
        return server.Url() + " gave no answer of HTTP (" + (sent ? sent : received).message() +
               "). Expected a sensor.";
    }

    const ServerAddress& server;
    asio::io_context context{1};
    beast::tcp_stream stream{context};
};

} // namespace

ServerAddress ServerAddress::Parse(const std::string& url) {
    constexpr std::string_view Scheme = "http://";
    std::string_view rest = url;
    const bool hasScheme = rest.starts_with(Scheme);
    rest.remove_prefix(hasScheme ? Scheme.size() : 0);
    if (rest.ends_with('/')) {
        rest.remove_suffix(1);
    }
    const bool isBracketed = rest.starts_with('[');
    const std::size_t hostEnd = isBracketed ? rest.find(']') : rest.find(':');
    std::string_view host = rest.substr(isBracketed ? 1 : 0, hostEnd - (isBracketed ? 1 : 0));
    std::string_view port = hostEnd == std::string_view::npos ? "" : rest.substr(hostEnd + (isBracketed ? 1 : 0));
    const bool hasPort = port.starts_with(':');
    port.remove_prefix(hasPort ? 1 : 0);
    const bool isClosed = !isBracketed || hostEnd != std::string_view::npos;
    if (!hasScheme || !isClosed || !IsHost(host, isBracketed) || (hasPort ? !IsPort(port) : !port.empty())) {
        throw StartError("--url " + url + ": expected http://HOST[:PORT], such as http://127.0.0.1:8080.");
    }
    return {.host = std::string(host), .port = hasPort ? std::string(port) : "80", .authority = std::string(rest)};
}

HttpReply HttpClient::Ask(const HttpQuestion& question) const {
    http::request<http::string_body> request(http::string_to_verb(question.method), Coded(question.target),
                                             HttpVersion);
    request.set(http::field::host, server.authority);
    request.set(http::field::user_agent, "vorsensor/" VOR_VERSION);
    request.set(http::field::accept, "application/hal+json, application/json, application/problem+json");
    request.keep_alive(false);
    if (!question.ifMatch.empty()) {
        request.set(http::field::if_match, question.ifMatch);
    }
    if (!question.contentType.empty()) {
        request.set(http::field::content_type, question.contentType);
    }
    request.body() = question.body;
    request.prepare_payload();
    Exchange exchange(server);
    exchange.Connect(limits.connect);
    return exchange.Ask(request, limits);
}

} // namespace Sensor::Remote
