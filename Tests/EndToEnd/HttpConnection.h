#pragma once

#include "Tests/EndToEnd/HttpAnswer.h"
#include "Tests/Support/TcpClient.h"

#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace Tests {

/// One connection to the sensor's HTTP, whose answers are read when the test wants them.
class HttpConnection : public TcpClient {
public:
    using TcpClient::TcpClient;

    void Send(const std::string& method, const std::string& path, const nlohmann::json& body = nullptr,
              const std::vector<std::string>& fields = {}) {
        std::string text = method + ' ' + path + " HTTP/1.1\r\nHost: localhost\r\n";
        for (const std::string& field : fields) {
            text += field + "\r\n";
        }
        const std::string content = body.is_null() ? "" : body.dump();
        if (!content.empty()) {
            text += "Content-Type: application/json\r\nContent-Length: " + std::to_string(content.size()) + "\r\n";
        }
        text += "\r\n" + content;
        send(fd, text.data(), text.size(), MSG_NOSIGNAL);
    }

    /// The next answer; its status is 0 when the connection ends or the deadline passes before. Of a stream it is the
    /// head.
    HttpAnswer Receive() {
        std::size_t end = received.find("\r\n\r\n");
        while (end == std::string::npos && ReceiveSome()) {
            end = received.find("\r\n\r\n");
        }
        if (end == std::string::npos) {
            return {};
        }
        end += 4;
        const std::string length = ParseHttpAnswer(received.substr(0, end)).Field("content-length");
        end += length.empty() ? 0 : std::stoul(length);
        while (received.size() < end) {
            if (!ReceiveSome()) {
                return {};
            }
        }
        const HttpAnswer answer = ParseHttpAnswer(received.substr(0, end));
        received.erase(0, end);
        return answer;
    }

    HttpAnswer Ask(const std::string& method, const std::string& path, const nlohmann::json& body = nullptr,
                   const std::vector<std::string>& fields = {}) {
        Send(method, path, body, fields);
        return Receive();
    }

private:
    bool ReceiveSome() {
        char bytes[16384];
        const ssize_t size = WaitForBytes() ? recv(fd, bytes, sizeof bytes, 0) : -1;
        received.append(bytes, size > 0 ? static_cast<std::size_t>(size) : 0);
        return size > 0;
    }

    std::string received;
};

} // namespace Tests
