#pragma once

#include <arpa/inet.h>
#include <cstddef>
#include <cstdint>
#include <netinet/in.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace Sensor::Remote {

/// A server on the loopback address that answers each connection with the next of its texts, whatever is asked, and
/// closes it. Without texts it never answers.
class AnswerServer {
public:
    explicit AnswerServer(std::vector<std::string> answers)
        : listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const place = reinterpret_cast<sockaddr*>(&address);
        if (bind(listener, place, size) != 0 || listen(listener, 8) != 0 || getsockname(listener, place, &size) != 0) {
            throw std::runtime_error("no server");
        }
        port = ntohs(address.sin_port);
        thread = std::thread([this, answers = std::move(answers)] {
            for (const std::string& answer : answers) {
                Answer(answer);
            }
        });
    }
    ~AnswerServer() {
        shutdown(listener, SHUT_RDWR);
        Join();
        close(listener);
    }
    AnswerServer(const AnswerServer&) = delete;
    AnswerServer& operator=(const AnswerServer&) = delete;

    std::string Url() const { return "http://127.0.0.1:" + std::to_string(port); }

    /// What was asked, once all texts are sent.
    const std::vector<std::string>& Requests() {
        Join();
        return requests;
    }

    /// An answer of a sensor.
    static std::string Success(const std::string& body, const std::string& fields = "") {
        return Whole("200 OK", "application/hal+json", body, fields);
    }
    static std::string Whole(const std::string& status, const std::string& type, const std::string& body,
                             const std::string& fields = "") {
        return "HTTP/1.1 " + status + "\r\nContent-Type: " + type + "\r\n" + fields +
               "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    }

private:
    void Join() {
        if (thread.joinable()) {
            thread.join();
        }
    }

    void Answer(const std::string& answer) {
        const int client = accept(listener, nullptr, nullptr);
        if (client < 0) {
            return;
        }
        requests.push_back(Request(client));
        for (std::size_t sent = 0; sent < answer.size();) {
            const ssize_t size = send(client, answer.data() + sent, answer.size() - sent, MSG_NOSIGNAL);
            if (size <= 0) {
                break;
            }
            sent += static_cast<std::size_t>(size);
        }
        close(client);
    }

    /// The bytes up to the end of the body, whose size is in the header if there is one.
    static std::string Request(int client) {
        std::string request;
        for (;;) {
            const std::size_t end = request.find("\r\n\r\n");
            if (end != std::string::npos) {
                const std::string field = "Content-Length: ";
                const std::size_t at = request.find(field);
                const std::size_t body = at < end ? std::stoul(request.substr(at + field.size())) : 0;
                if (request.size() >= end + 4 + body) {
                    return request;
                }
            }
            char bytes[4096];
            const ssize_t size = recv(client, bytes, sizeof bytes, 0);
            if (size <= 0) {
                return request;
            }
            request.append(bytes, static_cast<std::size_t>(size));
        }
    }

    int listener;
    std::uint16_t port = 0;
    std::vector<std::string> requests;
    std::thread thread;
};

} // namespace Sensor::Remote
