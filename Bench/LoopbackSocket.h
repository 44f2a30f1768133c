#pragma once

#include <arpa/inet.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Bench {

[[noreturn]] inline void Fail(const char* what) {
    std::perror(what);
    std::exit(1);
}

/// A connection to a server on this machine, without delay (TCP_NODELAY).
class LoopbackSocket {
public:
    explicit LoopbackSocket(std::uint16_t port)
        : fd(socket(AF_INET, SOCK_STREAM, 0)) {
        const int one = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            Fail("connect");
        }
    }
    ~LoopbackSocket() { close(fd); }
    LoopbackSocket(const LoopbackSocket&) = delete;
    LoopbackSocket& operator=(const LoopbackSocket&) = delete;

    const int fd;
};

} // namespace Bench
