#include "Net/Asio/TcpListen.h"

#include "Vor/Exception.h"
#include "yApi/yStatus.h"

#include <boost/asio/ip/v6_only.hpp>

namespace Net {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

namespace {

tcp::endpoint ParseEndpoint(const TcpServerSettings& settings) {
    error_code error;
    const auto address = asio::ip::make_address(settings.address, error);
    if (error) {
        Vor::Throw(yERROR_PARAMETER, "\"%s\" is not an IP address", settings.address);
    }
    return tcp::endpoint(address, settings.port);
}

[[noreturn]] void ThrowListenFailure(const TcpServerSettings& settings, const error_code& error) {
    const unsigned port = settings.port;
    if (error == asio::error::address_in_use) {
        Vor::Throw(yERROR_CONFLICT, "port %u on %s is in use", port, settings.address);
    }
    if (error == asio::error::access_denied) {
        Vor::Throw(yERROR, "port %u on %s needs rights that this program doesn't have", port, settings.address);
    }
    if (error == boost::system::errc::address_not_available) {
        Vor::Throw(yERROR_CONFLICT, "%s is not an address of this device", settings.address);
    }
    Vor::Throw(yERROR, "can't listen on port %u of %s: %s", port, settings.address, error.message());
}

} // namespace

tcp::acceptor Listen(asio::io_context& io, const TcpServerSettings& wanted) {
    const tcp::endpoint endpoint = ParseEndpoint(wanted);
    tcp::acceptor listening(io);
    error_code error;
    error_code ignored;
    listening.open(endpoint.protocol(), error);
    if (!error) {
        listening.set_option(asio::socket_base::reuse_address(true), ignored);
        if (endpoint.protocol() == tcp::v6()) {
            listening.set_option(asio::ip::v6_only(false), ignored);
        }
        listening.bind(endpoint, error);
    }
    if (!error) {
        listening.listen(asio::socket_base::max_listen_connections, error);
    }
    if (error) {
        ThrowListenFailure(wanted, error);
    }
    return listening;
}

} // namespace Net
