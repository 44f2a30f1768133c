#pragma once

#include "Tests/Soak/Connection.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <random>
#include <string>

namespace Soak {

/// A client that follows the protocol: sends random commands, waits for their ends, and checks the values that it
/// reads. Each client has its own thread.
class GoodClient {
public:
    /// The results of all clients together.
    struct Totals {
        std::atomic<long> reads{0};
        std::atomic<long> commands{0};     ///< accepted by the sensor
        std::atomic<long> busy{0};         ///< refused because another one was in progress
        std::atomic<long> interrupted{0};  ///< the service was disabled before the client read their end
        std::atomic<long> wrongStatus{0};  ///< refused or ended with a wrong status
        std::atomic<long> withoutEnd{0};   ///< accepted and not ended in ten seconds
        std::atomic<long> mixedScans{0};   ///< replies with parts of two scans
        std::atomic<long> withoutReply{0}; ///< requests that got no reply
    };

    /// `number` from 1 to 15 makes the client's request words unique.
    GoodClient(int number, std::uint16_t port, Totals& totals, const std::atomic<bool>& ending);

    void Run();

    /// Returns whether a command to start the scan succeeds. For the end of a run, when no other client sends commands.
    bool StartsTheScan();

private:
    struct Command {
        std::uint16_t id;
        std::string argument;
        int expected; ///< 2 or 3; 0 when either is right
    };

    Command RandomCommand();
    void SendCommand(const Command& command);
    void WaitForEnd(const Command& command, std::uint16_t word);
    void ReadScan();

    const int number;
    const std::uint16_t port;
    Totals& totals;
    const std::atomic<bool>& ending;
    std::mt19937 random;
    std::unique_ptr<Connection> connection;
    std::uint16_t counter = 0;
};

} // namespace Soak
