#include "Tests/Soak/BadClient.h"

#include "Tests/Soak/Connection.h"

#include <random>
#include <thread>

namespace Soak {

namespace {

void MisbehaveOnce(Manner manner, std::uint16_t port, std::mt19937& random) {
    Connection connection(port);
    const Bytes request = Connection::Frame(Connection::Request(3, 0, 125));
    switch (manner) {
    case Manner::HalfRequests:
        connection.Send(std::span(request).first(1 + random() % (request.size() - 1)));
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 50));
        return;
    case Manner::Resets:
        connection.Send(request);
        connection.ResetAtEnd();
        return;
    case Manner::Silence:
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        return;
    case Manner::Floods: // requests whose replies nobody reads
        for (int i = 0; i < 10000 && connection.Send(request); ++i) {
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        return;
    case Manner::Garbage: {
        Bytes bytes(1 + random() % 300);
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(random());
        }
        connection.Send(bytes);
        return;
    }
    }
}

} // namespace

void Misbehave(Manner manner, std::uint16_t port, const std::atomic<bool>& ending) {
    std::mt19937 random(static_cast<unsigned>(manner));
    while (!ending) {
        try {
            MisbehaveOnce(manner, port, random);
        } catch (const std::runtime_error&) {
            // the server may close the connection
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 20));
    }
}

} // namespace Soak
