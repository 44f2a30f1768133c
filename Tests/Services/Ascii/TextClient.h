#pragma once

#include "Tests/Support/TcpClient.h"

#include <string>

namespace Services::Ascii {

/// Sends texts and receives lines.
class TextClient : public Tests::TcpClient {
public:
    using TcpClient::TcpClient;

    bool Send(const std::string& text) {
        return send(fd, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
    }

    /// Sends as much as possible without waiting; returns the number of bytes.
    std::size_t SendSome(const std::string& text) { return SendSomeOf(text.data(), text.size()); }

    /// The next line, without its end; "(closed)" at the end of the connection, "(nothing)" at the deadline.
    std::string Line(const std::string& terminator = "\r\n") {
        std::size_t end = received.find(terminator);
        while (end == std::string::npos) {
            if (!WaitForBytes()) {
                return "(nothing)";
            }
            char bytes[4096];
            const ssize_t size = recv(fd, bytes, sizeof bytes, 0);
            if (size <= 0) {
                return "(closed)";
            }
            received.append(bytes, static_cast<std::size_t>(size));
            end = received.find(terminator);
        }
        std::string line = received.substr(0, end);
        received.erase(0, end + terminator.size());
        return line;
    }

    std::string Ask(const std::string& request) {
        Send(request + "\r\n");
        return Line();
    }

    /// Waits until the server closes the connection, and ignores what it sends before.
    bool WaitForClose() {
        std::string line = Line();
        while (line != "(closed)" && line != "(nothing)") {
            line = Line();
        }
        return line == "(closed)";
    }

private:
    std::string received;
};

} // namespace Services::Ascii
