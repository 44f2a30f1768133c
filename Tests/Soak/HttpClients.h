#pragma once

#include "Tests/Soak/HttpConnection.h"

#include <atomic>
#include <cstdint>
#include <random>
#include <string>

namespace Soak {

/// What all clients of HTTP have seen together.
struct HttpTotals {
    std::atomic<long> reads{0};        ///< documents
    std::atomic<long> edits{0};        ///< made
    std::atomic<long> stale{0};        ///< edits refused because somebody else had changed the service before
    std::atomic<long> busy{0};         ///< requests refused for now
    std::atomic<long> streams{0};      ///< opened
    std::atomic<long> events{0};       ///< received
    std::atomic<long> unexpected{0};   ///< answers that are none of these
    std::atomic<long> withoutReply{0}; ///< requests without an answer, and streams without a beat
};

/// A client of HTTP that works until `ending` is set. Each client has its own thread.
class HttpWorker {
public:
    HttpWorker(int number, std::uint16_t port, HttpTotals& totals, const std::atomic<bool>& ending);
    virtual ~HttpWorker() = default;
    HttpWorker(const HttpWorker&) = delete;
    HttpWorker& operator=(const HttpWorker&) = delete;

    void Run();

protected:
    /// Returns whether the connection can be used again.
    virtual bool WorkOnce(HttpConnection& connection) = 0;
    /// Counts an answer that isn't 200, and says what it is, the first few times.
    void CountFailure(const std::string& what, const HttpAnswer& answer);

    const int number;
    HttpTotals& totals;
    const std::atomic<bool>& ending;
    std::mt19937 random;

private:
    const std::uint16_t port;
};

/// Reads one document after the other.
class HttpReader : public HttpWorker {
public:
    using HttpWorker::HttpWorker;

private:
    bool WorkOnce(HttpConnection& connection) override;
};

/// Changes parameters and the map of Modbus, if nobody else has changed the service since it was read.
class HttpEditor : public HttpWorker {
public:
    using HttpWorker::HttpWorker;

private:
    bool WorkOnce(HttpConnection& connection) override;
    void Edit(HttpConnection& connection, const std::string& tag, const std::string& method, const std::string& path,
              const std::string& body);
};

/// Opens a stream of all topics, reads it for a while, and goes on where it has stopped.
class HttpListener : public HttpWorker {
public:
    using HttpWorker::HttpWorker;

private:
    bool WorkOnce(HttpConnection& connection) override;

    std::string lastId;
};

} // namespace Soak
