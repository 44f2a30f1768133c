#pragma once

// Asio of Boost 1.74 uses std::exchange without including its header.
#include <string>
#include <utility>

#include <boost/asio/ip/tcp.hpp>

namespace Net {

/// "127.0.0.1:502" or "[::1]:502". An IPv4 address that is mapped to IPv6 is written as IPv4.
std::string EndpointText(const boost::asio::ip::tcp::endpoint& endpoint);

} // namespace Net
