#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "Tests/Services/Modbus/Bytes.h"

namespace Services::Modbus {

// A plain TCP socket to a port of 127.0.0.1. Whatever it waits for has a deadline.
class RawClient {
public:
    static constexpr int DeadlineMilliseconds = 10000;

    explicit RawClient(std::uint16_t port, int receiveBuffer = 0)
        : fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const int one = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        if (receiveBuffer > 0) {
            setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        }
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connected = connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~RawClient() { close(fd); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    bool Connected() const { return connected; }

    void Send(const Bytes& bytes) {
        ASSERT_EQ(send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }

    // Sends as much as the connection takes without waiting; how many bytes that was.
    std::size_t SendSome(const Bytes& bytes) {
        const ssize_t sent = send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        return sent < 0 ? 0 : static_cast<std::size_t>(sent);
    }

    void HalfClose() { shutdown(fd, SHUT_WR); }

    // Exactly `count` bytes, fewer at the end of the connection or the deadline.
    Bytes Receive(std::size_t count) {
        Bytes bytes(count);
        std::size_t size = 0;
        while (size < count && Readable()) {
            const ssize_t got = recv(fd, &bytes[size], count - size, 0);
            if (got <= 0) {
                break;
            }
            size += static_cast<std::size_t>(got);
        }
        bytes.resize(size);
        return bytes;
    }

    // One whole reply.
    Bytes ReceiveReply() {
        Bytes reply = Receive(6);
        return reply.size() < 6 ? reply : reply + Receive(Word(&reply[4]));
    }

    Bytes Ask(const Bytes& request) {
        Send(request);
        return ReceiveReply();
    }

    // Waits for the other side to close; bytes that come before are thrown away.
    bool WaitForClose() {
        unsigned char bytes[4096];
        while (Readable()) {
            const ssize_t got = recv(fd, bytes, sizeof bytes, 0);
            if (got == 0 || (got < 0 && errno == ECONNRESET)) {
                return true;
            }
        }
        return false;
    }

private:
    bool Readable() {
        pollfd wait{fd, POLLIN, 0};
        return poll(&wait, 1, DeadlineMilliseconds) == 1;
    }

    int fd;
    bool connected = false;
};

} // namespace Services::Modbus
