#pragma once

#include "Tests/Soak/Connection.h"
#include "Tests/Support/TcpClient.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace Soak {

struct HttpAnswer {
    int status = 0;
    std::string tag = {};  ///< the field ETag; empty for none
    std::string body = {}; ///< empty when it was skipped
    std::size_t size = 0;  ///< of the body
};

/// A connection of HTTP. What it waits for has to come within ten seconds. A connection that was refused or closed is
/// Connection::Lost.
class HttpConnection : public Tests::TcpClient {
public:
    explicit HttpConnection(std::uint16_t port)
        : TcpClient(port) {
        if (!Connected()) {
            throw Connection::Lost("no connection");
        }
    }

    static std::string Request(const std::string& method, const std::string& path, const std::string& fields = "",
                               const std::string& body = "") {
        return method + ' ' + path + " HTTP/1.1\r\nHost: localhost\r\n" + fields +
               (body.empty()
                    ? std::string()
                    : "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) + "\r\n") +
               "\r\n" + body;
    }

    void Send(const std::string& request) {
        for (std::size_t sent = 0; sent < request.size();) {
            pollfd wait{fd, POLLOUT, 0};
            if (poll(&wait, 1, DeadlineMilliseconds) != 1) {
                throw std::runtime_error("a request wasn't read in ten seconds");
            }
            const ssize_t count = send(fd, request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) {
                throw Connection::Lost("the server has closed the connection");
            }
            sent += static_cast<std::size_t>(count);
        }
    }

    /// Waits for the next answer.
    HttpAnswer Receive(bool skipsBody = false) {
        std::size_t end = std::string::npos;
        while ((end = received.find("\r\n\r\n")) == std::string::npos) {
            received += Piece();
        }
        const std::string head = received.substr(0, end + 2);
        received.erase(0, end + 4);
        HttpAnswer answer{.status = std::atoi(head.substr(head.find(' ') + 1).c_str()), .tag = Field(head, "ETag")};
        answer.size = std::strtoul(Field(head, "Content-Length").c_str(), nullptr, 10);
        std::size_t count = 0;
        while (count < answer.size) {
            if (received.empty()) {
                received = Piece();
            }
            const std::size_t taken = std::min(received.size(), answer.size - count);
            if (!skipsBody) {
                answer.body.append(received, 0, taken);
            }
            received.erase(0, taken);
            count += taken;
        }
        return answer;
    }
    HttpAnswer Ask(const std::string& method, const std::string& path, const std::string& fields = "",
                   const std::string& body = "") {
        Send(Request(method, path, fields, body));
        return Receive();
    }

    /// Whether the server has closed the connection, behind what it has sent and nobody has read.
    bool HasEnded() const {
        pollfd state{fd, POLLRDHUP, 0};
        return poll(&state, 1, 0) == 1;
    }

    /// The bytes that come next.
    std::string Piece() {
        if (!WaitForBytes()) {
            throw std::runtime_error("nothing was received in ten seconds");
        }
        std::string piece(65536, '\0');
        const ssize_t count = recv(fd, piece.data(), piece.size(), 0);
        if (count <= 0) {
            throw Connection::Lost("the server has closed the connection");
        }
        piece.resize(static_cast<std::size_t>(count));
        return piece;
    }

private:
    static std::string Field(const std::string& head, const std::string& name) {
        const std::size_t at = head.find("\r\n" + name + ": ");
        if (at == std::string::npos) {
            return "";
        }
        const std::size_t begin = at + name.size() + 4;
        return head.substr(begin, head.find("\r\n", begin) - begin);
    }

    std::string received; ///< behind the last answer
};

} // namespace Soak
