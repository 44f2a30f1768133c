#pragma once

#include "Sensor/Http/HttpRequest.h"
#include "Sensor/Http/WireProblems.h"

#include <cstddef>
#include <memory>
#include <span>

namespace Sensor::Http {

/// How large a request may be.
struct RequestLimits {
    std::size_t requestLine = 8192; ///< bytes
    std::size_t header = 16384;     ///< bytes, with the request line and the empty line at the end
    std::size_t fields = 100;
    std::size_t body = std::size_t{1} << 20; ///< bytes, without the framing of chunks
};

/// Reads one request of HTTP/1.1 or HTTP/1.0 (RFC 9112). What two readers could understand in two ways is refused:
/// lines that don't end in CR LF, folded lines, control characters, several lengths, a length with a transfer coding,
/// no or several Host. Bytes may come in any pieces, with the same outcome.
class RequestParser {
public:
    enum class State {
        Header,  ///< the header isn't whole
        Body,    ///< the header is whole and correct, the body isn't whole
        Done,    ///< the request is whole
        Refused, ///< see GetRefusal
    };

    /// A longer line before a chunk, and longer trailers, are refused.
    static constexpr std::size_t MaxFraming = 8192;

    explicit RequestParser(const RequestLimits& limits);
    ~RequestParser();
    RequestParser(const RequestParser&) = delete;
    RequestParser& operator=(const RequestParser&) = delete;

    /// Reads bytes, of the header at most to its end. Returns how many were used; the others have to be given again
    /// with those that follow. For the states Header and Body. At most `limits.header` or MaxFraming bytes stay unused
    /// without a refusal.
    std::size_t Read(std::span<const unsigned char> bytes);

    State GetState() const;
    const Refusal& GetRefusal() const;

    /// What was read so far; whole when Done.
    HttpRequest& Request();
    /// Whether the method is HEAD, whose answer has no body. Known as soon as the method is, also of a refused request.
    bool IsHead() const;

    // From Body or Done on:

    /// Whether the version is 1.1.
    bool IsHttp11() const;
    /// Whether the client wants to use the connection for further requests.
    bool KeepsAlive() const;
    /// Whether the client waits for "100 Continue" before it sends the body.
    bool ExpectsContinue() const;

private:
    class HeaderScan;
    class Impl;
    const std::unique_ptr<Impl> impl;
};

} // namespace Sensor::Http
