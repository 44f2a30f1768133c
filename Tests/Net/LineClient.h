#pragma once

#include "Tests/Support/TcpClient.h"

#include <cerrno>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

namespace Net {

/// A client that exchanges lines.
class LineClient : public Tests::TcpClient {
public:
    using TcpClient::TcpClient;

    void Send(std::string_view bytes) {
        ASSERT_EQ(send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }
    /// Sends as much as possible without waiting; returns the number of bytes.
    std::size_t SendSome(std::string_view bytes) { return SendSomeOf(bytes.data(), bytes.size()); }

    /// The next line without its end; what there is at the end of the connection or at the deadline.
    std::string Line() {
        for (;;) {
            const std::size_t end = received.find('\n');
            if (end != std::string::npos) {
                const std::string line = received.substr(0, end);
                received.erase(0, end + 1);
                return line;
            }
            if (!Receive()) {
                return std::exchange(received, "");
            }
        }
    }

    std::string Ask(const std::string& line) {
        Send(line + "\n");
        return Line();
    }

    /// All that the server sends until it closes the connection.
    std::string Rest() {
        while (Receive()) {
        }
        return std::exchange(received, "");
    }

    /// Waits until the server closes the connection, and ignores what it sends before.
    bool WaitForClose() {
        while (Receive()) {
            received.clear();
        }
        return ended;
    }

private:
    bool Receive() {
        char bytes[4096];
        if (!WaitForBytes()) {
            return false;
        }
        const ssize_t got = recv(fd, bytes, sizeof bytes, 0);
        ended = got == 0 || (got < 0 && errno == ECONNRESET);
        if (got > 0) {
            received.append(bytes, static_cast<std::size_t>(got));
        }
        return got > 0;
    }

    std::string received;
    bool ended = false;
};

} // namespace Net
