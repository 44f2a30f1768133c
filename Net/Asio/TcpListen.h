#pragma once

// Asio of Boost 1.74 uses std::exchange without including its header.
#include "Net/TcpServer.h"

#include <utility>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

namespace Net {

/// Listens at the address and port of the settings. Throws a Vor::Exception with a text for the user when it can't.
boost::asio::ip::tcp::acceptor Listen(boost::asio::io_context& io, const TcpServerSettings& wanted);

} // namespace Net
