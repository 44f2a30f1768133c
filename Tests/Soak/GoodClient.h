#pragma once

#include "Tests/Soak/Connection.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <random>
#include <string>

namespace Soak {

/// A client that keeps to the protocol: sends random commands, waits for their ends, and looks at what it reads. One
/// thread a client.
class GoodClient {
public:
    /// What all clients together did and found.
    struct Totals {
        std::atomic<long> reads{0};
        std::atomic<long> commands{0};     ///< taken by the sensor
        std::atomic<long> busy{0};         ///< refused, since another one ran
        std::atomic<long> interrupted{0};  ///< the service was disabled before their end was seen
        std::atomic<long> wrongStatus{0};  ///< ended otherwise than they must
        std::atomic<long> withoutEnd{0};   ///< taken and not ended in ten seconds
        std::atomic<long> mixedScans{0};   ///< replies with parts of two scans
        std::atomic<long> withoutReply{0}; ///< requests that got no reply
    };

    /// `number` from 1 to 15 makes its request words its own.
    GoodClient(int number, std::uint16_t port, Totals& totals, const std::atomic<bool>& ending);

    void Run();

    /// Starts the scan and sees it done; for the end of a run, when nobody else sends commands.
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
