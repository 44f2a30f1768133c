#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace Bench {

/// What the servers of this tree are measured against: a plain server of Boost.Beast on one thread that posts each
/// request to a second loop, on another thread, where its answer is made.
class PlainHttpServer {
public:
    /// `document` returns the text that each GET gets. It is called on the second loop.
    explicit PlainHttpServer(std::function<std::string()> document);
    ~PlainHttpServer();
    PlainHttpServer(const PlainHttpServer&) = delete;
    PlainHttpServer& operator=(const PlainHttpServer&) = delete;

    std::uint16_t Port() const;

private:
    class Impl;
    const std::unique_ptr<Impl> impl;
};

} // namespace Bench
