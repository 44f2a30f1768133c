#pragma once

#include "Sensor/Http/HttpRequest.h"
#include "Sensor/Http/HttpResponse.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Sensor::Http {

/// The right to answer one request. Copies are the same right, of which the first use counts; when the client has gone
/// it does nothing. From any thread. A request whose last copy goes without an answer is answered with status 500.
class Responder {
public:
    class Target;

    explicit Responder(std::shared_ptr<Target> target);

    void Respond(HttpResponse response) const;
    /// Whether the client waits for the answer. One that has closed its side of the connection doesn't, though it may
    /// get it. It may be false soon after.
    bool IsWanted() const;
    /// Makes the server read more of a stream with which this was answered.
    void Wake() const;

private:
    std::shared_ptr<Target> target;
};

/// Takes the body of one request in pieces, so that it needn't be kept in memory. Called on the network thread; none of
/// it waits for anything. It is destroyed, perhaps without End, when the client has gone, and when the request is
/// answered.
class IBodyReceiver {
public:
    virtual ~IBodyReceiver() = default;
    /// Whether a piece can be taken. Otherwise the client isn't read from, and isn't asked for the body. Whoever makes
    /// it true calls Responder::Wake.
    virtual bool HasRoom() const = 0;
    /// The next piece, which isn't empty. Only while there is room.
    virtual void Take(std::string piece) = 0;
    /// The body is whole. Only while there is room.
    virtual void End() = 0;
};

/// What answers the requests of a server. Called on the network thread; none of it waits for anything.
class IHttpHandler {
public:
    virtual ~IHttpHandler() = default;
    /// Called with a request whose body hasn't been received yet, before the client is asked for it. Returns a response
    /// when the request is refused whatever its body is; the connection is closed then.
    virtual std::optional<HttpResponse> CheckHeader(const HttpRequest& request) = 0;
    /// Called with the whole request. The answers to requests of one connection are sent in the order of the requests.
    virtual void Handle(HttpRequest request, Responder responder) = 0;
    /// Whether the body of a request is taken in pieces. Called before CheckHeader.
    virtual bool IsInPieces(const HttpRequest& /*request*/) const { return false; }
    /// Called instead of Handle, with a request whose body is taken in pieces and hasn't been received yet. Returns
    /// what takes it. An answer before its end refuses the request: the rest isn't read, and the connection is closed.
    // NOLINTNEXTLINE(performance-unnecessary-value-param): those who receive bodies keep both
    virtual std::shared_ptr<IBodyReceiver> Receive(HttpRequest /*request*/, Responder /*responder*/) { return nullptr; }
};

} // namespace Sensor::Http
