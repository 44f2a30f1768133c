#pragma once

#include <arpa/inet.h>
#include <chrono>
#include <cstdint>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <optional>
#include <poll.h>
#include <span>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace Soak {

using Bytes = std::vector<unsigned char>;
using Words = std::vector<std::uint16_t>;

/// A Modbus TCP connection that can also send invalid bytes.
class Connection {
public:
    /// The connection was refused or closed.
    struct Lost : std::runtime_error {
        using std::runtime_error::runtime_error;
    };

    static constexpr std::chrono::seconds Patience{10};

    explicit Connection(std::uint16_t port)
        : socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int one = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            close(socket);
            throw Lost("no connection");
        }
    }
    ~Connection() { close(socket); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// The destructor will reset the connection instead of closing it.
    void ResetAtEnd() {
        const linger hard{1, 0};
        setsockopt(socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    }

    /// Sends without waiting; false when the connection can't take all of it, or is closed.
    bool Send(std::span<const unsigned char> bytes) {
        const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        return sent == static_cast<ssize_t>(bytes.size());
    }

    /// Returns the registers; nothing when the server answers with an exception.
    std::optional<Words> Read(std::uint16_t address, std::uint16_t count) {
        const Bytes pdu = Ask(Request(3, address, count));
        if (pdu[0] != 3 || pdu.size() != 2U + 2U * count) {
            return std::nullopt;
        }
        Words words;
        for (std::size_t at = 2; at < pdu.size(); at += 2) {
            words.push_back(static_cast<std::uint16_t>(pdu[at] << 8 | pdu[at + 1]));
        }
        return words;
    }

    /// Returns the exception code, 0 for none.
    int Write(std::uint16_t address, const Words& words) {
        Bytes pdu = Request(16, address, static_cast<std::uint16_t>(words.size()));
        pdu.push_back(static_cast<unsigned char>(2 * words.size()));
        for (const std::uint16_t word : words) {
            pdu.push_back(static_cast<unsigned char>(word >> 8));
            pdu.push_back(static_cast<unsigned char>(word));
        }
        const Bytes answer = Ask(pdu);
        return answer[0] == 16 ? 0 : answer.at(1);
    }

    static Bytes Request(unsigned char function, std::uint16_t address, std::uint16_t count) {
        return {function, static_cast<unsigned char>(address >> 8), static_cast<unsigned char>(address),
                static_cast<unsigned char>(count >> 8), static_cast<unsigned char>(count)};
    }

    static Bytes Frame(const Bytes& pdu) {
        const std::size_t size = pdu.size() + 1;
        Bytes frame = {0, 1, 0, 0, static_cast<unsigned char>(size >> 8), static_cast<unsigned char>(size), 1};
        frame.insert(frame.end(), pdu.begin(), pdu.end());
        return frame;
    }

private:
    Bytes Ask(const Bytes& pdu) {
        if (!Send(Frame(pdu))) {
            throw Lost("the server takes no request");
        }
        const Bytes header = Receive(7);
        return Receive((header[4] << 8 | header[5]) - 1U);
    }

    Bytes Receive(std::size_t size) {
        Bytes bytes(size);
        std::size_t got = 0;
        const auto end = std::chrono::steady_clock::now() + Patience;
        while (got < size) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
            pollfd wait{socket, POLLIN, 0};
            if (left.count() <= 0 || poll(&wait, 1, static_cast<int>(left.count())) != 1) {
                throw std::runtime_error("a request got no reply in ten seconds");
            }
            const ssize_t count = recv(socket, bytes.data() + got, size - got, 0);
            if (count <= 0) {
                throw Lost("the server has closed the connection");
            }
            got += static_cast<std::size_t>(count);
        }
        return bytes;
    }

    int socket;
};

} // namespace Soak
