#pragma once

#include <arpa/inet.h>
#include <cstdint>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Tests {

/// A plain TCP socket to a port of 127.0.0.1. Each wait has a deadline.
class TcpClient {
public:
    static constexpr int DeadlineMilliseconds = 10000;

    /// `source` is the client's own address, such as "127.0.0.2".
    explicit TcpClient(std::uint16_t port, int receiveBuffer = 0, const char* source = nullptr)
        : fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const int one = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        if (receiveBuffer > 0) {
            setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        }
        if (source != nullptr) {
            sockaddr_in own{};
            own.sin_family = AF_INET;
            inet_pton(AF_INET, source, &own.sin_addr);
            bind(fd, reinterpret_cast<const sockaddr*>(&own), sizeof own);
        }
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connected = connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~TcpClient() { close(fd); }
    TcpClient(const TcpClient&) = delete;
    TcpClient& operator=(const TcpClient&) = delete;

    bool Connected() const { return connected; }

    void HalfClose() { shutdown(fd, SHUT_WR); }

protected:
    /// Sends as much as possible without waiting; returns the number of bytes.
    std::size_t SendSomeOf(const void* bytes, std::size_t size) {
        const ssize_t sent = send(fd, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
        return sent < 0 ? 0 : static_cast<std::size_t>(sent);
    }

    /// Waits for bytes or the end of the connection; false at the deadline.
    bool WaitForBytes() {
        pollfd wait{fd, POLLIN, 0};
        return poll(&wait, 1, DeadlineMilliseconds) == 1;
    }

    const int fd;

private:
    bool connected = false;
};

} // namespace Tests
