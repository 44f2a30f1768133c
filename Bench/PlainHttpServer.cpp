#include "Bench/PlainHttpServer.h"

#include <chrono>
#include <optional>
#include <thread>
#include <utility>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

namespace Bench {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::ip::tcp;

using Document = std::function<std::string()>;

class Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(tcp::socket socket, asio::io_context& secondLoop, const Document& document)
        : stream(std::move(socket))
        , secondLoop(secondLoop)
        , document(document) {
        stream.socket().set_option(tcp::no_delay(true));
    }

    void Read() {
        request = {};
        stream.expires_after(std::chrono::seconds(60));
        http::async_read(stream, buffer, request,
                         [self = shared_from_this()](const beast::error_code& error, std::size_t) {
                             if (!error) {
                                 self->Ask();
                             }
                         });
    }

private:
    void Ask() {
        asio::post(secondLoop, [self = shared_from_this()] {
            asio::post(self->stream.get_executor(),
                       [self, text = self->document()]() mutable { self->Answer(std::move(text)); });
        });
    }

    void Answer(std::string text) {
        response = {http::status::ok, request.version()};
        response.set(http::field::content_type, "application/hal+json");
        response.set(http::field::cache_control, "no-store");
        response.keep_alive(request.keep_alive());
        response.body() = std::move(text);
        response.prepare_payload();
        http::async_write(stream, response, [self = shared_from_this()](const beast::error_code& error, std::size_t) {
            if (!error && self->response.keep_alive()) {
                self->Read();
            }
        });
    }

    beast::tcp_stream stream;
    asio::io_context& secondLoop;
    const Document& document;
    beast::flat_buffer buffer;
    http::request<http::string_body> request;
    http::response<http::string_body> response;
};

} // namespace

class PlainHttpServer::Impl {
public:
    explicit Impl(Document given)
        : document(std::move(given)) {
        Accept();
        threads.first = std::thread([this] { loop.run(); });
        threads.second = std::thread([this] { secondLoop.run(); });
    }
    ~Impl() {
        loop.stop();
        secondLoop.stop();
        threads.first.join();
        threads.second.join();
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    std::uint16_t Port() const { return acceptor.local_endpoint().port(); }

private:
    void Accept() {
        acceptor.async_accept([this](const beast::error_code& error, tcp::socket socket) {
            if (!error) {
                std::make_shared<Connection>(std::move(socket), secondLoop, document)->Read();
                Accept();
            }
        });
    }

    const Document document;
    asio::io_context loop{1};
    asio::io_context secondLoop{1};
    const asio::executor_work_guard<asio::io_context::executor_type> work{secondLoop.get_executor()};
    tcp::acceptor acceptor{loop, {asio::ip::address_v4::loopback(), 0}};
    std::pair<std::thread, std::thread> threads;
};

PlainHttpServer::PlainHttpServer(Document document)
    : impl(std::make_unique<Impl>(std::move(document))) {}

PlainHttpServer::~PlainHttpServer() = default;

std::uint16_t PlainHttpServer::Port() const {
    return impl->Port();
}

} // namespace Bench
