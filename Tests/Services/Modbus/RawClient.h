#pragma once

#include "Tests/Services/Modbus/Bytes.h"
#include "Tests/Support/TcpClient.h"

#include <cerrno>

#include <gtest/gtest.h>

namespace Services::Modbus {

class RawClient : public Tests::TcpClient {
public:
    using TcpClient::TcpClient;

    void Send(const Bytes& bytes) {
        ASSERT_EQ(send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }

    /// Receives `count` bytes, fewer at the end of the connection or at the deadline.
    Bytes Receive(std::size_t count) {
        Bytes bytes(count);
        std::size_t size = 0;
        while (size < count && WaitForBytes()) {
            const ssize_t got = recv(fd, &bytes[size], count - size, 0);
            if (got <= 0) {
                break;
            }
            size += static_cast<std::size_t>(got);
        }
        bytes.resize(size);
        return bytes;
    }

    /// Receives one complete reply.
    Bytes ReceiveReply() {
        Bytes reply = Receive(6);
        return reply.size() < 6 ? reply : reply + Receive(Word(&reply[4]));
    }

    Bytes Ask(const Bytes& request) {
        Send(request);
        return ReceiveReply();
    }

    /// Waits until the server closes the connection, and ignores what it sends before.
    bool WaitForClose() {
        unsigned char bytes[4096];
        while (WaitForBytes()) {
            const ssize_t got = recv(fd, bytes, sizeof bytes, 0);
            if (got == 0 || (got < 0 && errno == ECONNRESET)) {
                return true;
            }
        }
        return false;
    }
};

} // namespace Services::Modbus
