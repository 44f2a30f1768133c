#pragma once

#include "Net/NetThread.h"
#include "VorApi/Threads/NamedThread.h"

#include <atomic>
#include <string>
#include <thread>
// Asio of Boost 1.74 uses std::exchange without including its header.
#include <utility>

#include <boost/asio/io_context.hpp>

namespace Net {

class NetThread::Loop {
public:
    explicit Loop(const char* name)
        : name(name) {}

    const std::string name;
    boost::asio::io_context io{1};
    std::atomic<std::thread::id> id{};
    Vor::NamedThread thread; ///< the last member: it uses the others
};

} // namespace Net
