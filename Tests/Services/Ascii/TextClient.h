#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>

namespace Services::Ascii {

// A plain TCP socket to a port of 127.0.0.1 that sends texts and receives lines. Whatever it waits for has a deadline.
class TextClient {
public:
    static constexpr int DeadlineMilliseconds = 10000;

    explicit TextClient(std::uint16_t port, int receiveBuffer = 0)
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
    ~TextClient() { close(fd); }
    TextClient(const TextClient&) = delete;
    TextClient& operator=(const TextClient&) = delete;

    bool Connected() const { return connected; }

    bool Send(const std::string& text) {
        return send(fd, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
    }
    // Sends as much as the connection takes without waiting; how many bytes that was.
    std::size_t SendSome(const std::string& text) {
        const ssize_t sent = send(fd, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        return sent < 0 ? 0 : static_cast<std::size_t>(sent);
    }
    void HalfClose() { shutdown(fd, SHUT_WR); }

    // The next line, without its end; "(closed)" at the end of the connection, "(nothing)" at the deadline.
    std::string Line(const std::string& terminator = "\r\n") {
        std::size_t end = received.find(terminator);
        while (end == std::string::npos) {
            pollfd wait{fd, POLLIN, 0};
            if (poll(&wait, 1, DeadlineMilliseconds) != 1) {
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

    // Waits for the other side to close; what comes before is thrown away.
    bool WaitForClose() {
        std::string line = Line();
        while (line != "(closed)" && line != "(nothing)") {
            line = Line();
        }
        return line == "(closed)";
    }

private:
    int fd;
    bool connected = false;
    std::string received;
};

} // namespace Services::Ascii
