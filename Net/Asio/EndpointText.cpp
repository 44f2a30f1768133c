#include "Net/Asio/EndpointText.h"

namespace Net {

namespace asio = boost::asio;

std::string EndpointText(const asio::ip::tcp::endpoint& endpoint) {
    const asio::ip::address address = endpoint.address();
    const std::string port = ":" + std::to_string(endpoint.port());
    if (address.is_v4()) {
        return address.to_string() + port;
    }
    if (address.to_v6().is_v4_mapped()) {
        return asio::ip::make_address_v4(asio::ip::v4_mapped, address.to_v6()).to_string() + port;
    }
    return "[" + address.to_string() + "]" + port;
}

} // namespace Net
