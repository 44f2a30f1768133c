#pragma once

#include "Sensor/Http/HttpRequest.h"
#include "Sensor/Http/WireProblems.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace Sensor::Http {

/// How large a request may be.
struct RequestLimits {
    std::size_t requestLine = 8192; ///< bytes
    std::size_t header = 16384;     ///< bytes, with the request line and the empty line at the end
    std::size_t fields = 100;
    std::size_t body = std::size_t{1} << 20;    ///< bytes, without the framing of chunks
    std::size_t pieces = std::size_t{64} << 20; ///< as `body`, of a body that is taken in pieces
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

    /// `inPieces`: whether the body of a request, of which the header is whole, is taken in pieces. None is without it.
    explicit RequestParser(const RequestLimits& limits,
                           std::function<bool(const HttpRequest& request)> inPieces = nullptr);
    ~RequestParser();
    RequestParser(const RequestParser&) = delete;
    RequestParser& operator=(const RequestParser&) = delete;

    /// Reads bytes, of the header at most to its end. Returns how many were used; the others have to be given again
    /// with those that follow. For the states Header and Body. At most `limits.header` or MaxFraming bytes stay unused
    /// without a refusal.
    std::size_t Read(std::span<const unsigned char> bytes);

    State GetState() const;
    const Refusal& GetRefusal() const;

    /// What was read so far; whole when Done, but for the body that was taken.
    HttpRequest& Request();
    /// Removes what was read of the body, and returns it.
    std::string TakeBody();
    /// Whether the method is HEAD, whose answer has no body. Known as soon as the method is, also of a refused request.
    bool IsHead() const;

    // From Body or Done on:

    /// Whether the version is 1.1.
    bool IsHttp11() const;
    /// Whether the client wants to use the connection for further requests.
    bool KeepsAlive() const;
    /// Whether the client waits for "100 Continue" before it sends the body.
    bool ExpectsContinue() const;
    bool IsInPieces() const;
    /// How many bytes of the body were read, with those that were taken.
    std::size_t BodySize() const;

private:
    class HeaderScan;
    class Impl;
    const std::unique_ptr<Impl> impl;
};

} // namespace Sensor::Http
