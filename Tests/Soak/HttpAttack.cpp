#include "Tests/Soak/HttpAttack.h"

#include "Tests/Soak/Connection.h"
#include "Tests/Soak/HttpConnection.h"
#include "Tests/Soak/SensorProgram.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

namespace Soak {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using Json = nlohmann::json;

constexpr int Attackers = 256;
constexpr int BlockCount = 60000;
constexpr int BlocksOfRequest = 7500; ///< less than 1 MiB of text
constexpr int FirstAddress = 2000;    ///< behind the blocks of the demo job
constexpr long MemoryLimitKilobytes = 400 * 1024;
constexpr double TimeLimitMilliseconds = 1000;

const std::string AssemblyPath = "/controls/modbus/registerAssemblies/registerAssembly-0";
const std::string DocumentRequest = HttpConnection::Request("GET", AssemblyPath + "?schema=1");

constexpr std::uint16_t CommandAddress = 1000;
constexpr std::uint16_t AnswerAddress = 1100;
constexpr std::uint16_t InProgress = 1;

void FillAssembly(std::uint16_t port) {
    HttpConnection client(port);
    for (int begin = 0; begin < BlockCount; begin += BlocksOfRequest) {
        Json blocks = Json::array();
        for (int i = begin; i < begin + BlocksOfRequest; ++i) {
            blocks.push_back({{"type", "MeasurementDecision"},
                              {"dataSource", "profile/" + std::to_string(i)},
                              {"displayName", "block"},
                              {"outputId", FirstAddress + i}});
        }
        const HttpAnswer answer =
            client.Ask("POST", AssemblyPath + "/commands/add", "", Json{{"blocks", blocks}}.dump());
        if (answer.status != 200) {
            throw std::runtime_error("the blocks can't be added: " + answer.body);
        }
    }
}

class Attack {
public:
    explicit Attack(const SensorProgram& sensor)
        : sensor(sensor) {}

    void Run(int seconds) {
        // They are there before, and stay connected.
        HttpConnection health(sensor.HttpPort());
        Connection command(sensor.ModbusPort());
        std::vector<std::thread> threads;
        threads.emplace_back([&] { Probe(healthTimes, [&] { AskHealth(health); }); });
        threads.emplace_back([&] { Probe(commandTimes, [&] { RunCommand(command); }); });
        for (int i = 0; i < Attackers; ++i) {
            threads.emplace_back([this, reads = i % 2 == 0] { AttackUntilTheEnd(reads); });
        }
        std::this_thread::sleep_for(std::chrono::seconds(seconds));
        ending = true;
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    /// Prints the results; false when a limit was missed.
    bool Report(long memoryKilobytes, double readSeconds) const {
        std::printf("%ld documents read, %ld times refused, %ld connections lost\n", documents.load(), refusals.load(),
                    losses.load());
        bool kept = true;
        const auto require = [&kept](const char* what, bool held, double value) {
            std::printf("%-60s %10.1f  %s\n", what, value, held ? "ok" : "MISSED");
            kept = kept && held;
        };
        const auto requireTimes = [&](const char* what, const std::vector<double>& times) {
            const double longest = times.empty() ? 0 : *std::ranges::max_element(times);
            require(what, !times.empty() && longest <= TimeLimitMilliseconds, longest);
        };
        require("memory above that before in MiB, at most 400", memoryKilobytes <= MemoryLimitKilobytes,
                static_cast<double>(memoryKilobytes) / 1024);
        std::printf("%zu answers of /healthz, %zu commands\n", healthTimes.size(), commandTimes.size());
        requireTimes("longest time of /healthz in ms, at most 1,000", healthTimes);
        requireTimes("longest time of a Modbus command in ms, at most 1,000", commandTimes);
        require("the document can be read afterwards, in ms", readSeconds > 0, readSeconds * 1e3);
        return kept;
    }

private:
    void Probe(std::vector<double>& times, const std::function<void()>& ask) {
        try {
            while (!ending) {
                const auto begin = Clock::now();
                ask();
                times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
                std::this_thread::sleep_for(milliseconds(20));
            }
        } catch (const std::exception& e) {
            std::printf("%s\n", e.what());
            times.push_back(1e6);
        }
    }

    static void AskHealth(HttpConnection& health) {
        if (health.Ask("GET", "/healthz").status != 200) {
            throw std::runtime_error("/healthz isn't well");
        }
    }

    /// Starts the scan, which runs already.
    void RunCommand(Connection& connection) {
        ++word;
        if (connection.Write(CommandAddress, {word, 1}) != 0) {
            throw std::runtime_error("a command is refused");
        }
        for (;;) {
            const auto answer = connection.Read(AnswerAddress, 2);
            if (!answer) {
                throw std::runtime_error("the answer of a command can't be read");
            }
            if ((*answer)[0] == word && (*answer)[1] != InProgress) {
                return;
            }
        }
    }

    void AttackUntilTheEnd(bool reads) {
        while (!ending) {
            try {
                HttpConnection connection(sensor.HttpPort());
                if (reads) {
                    ReadOn(connection);
                } else {
                    DontRead(connection);
                }
            } catch (const std::runtime_error&) {
                ++losses;
                std::this_thread::sleep_for(milliseconds(100));
            }
        }
    }

    void ReadOn(HttpConnection& connection) {
        while (!ending) {
            connection.Send(DocumentRequest);
            const HttpAnswer answer = connection.Receive(true);
            if (answer.status == 200) {
                ++documents;
            } else {
                ++refusals;
                std::this_thread::sleep_for(milliseconds(50));
            }
        }
    }

    void DontRead(HttpConnection& connection) {
        for (int i = 0; i < 8; ++i) {
            connection.Send(DocumentRequest);
        }
        while (!ending && !connection.HasEnded()) {
            std::this_thread::sleep_for(milliseconds(100));
        }
    }

    const SensorProgram& sensor;
    std::atomic<bool> ending{false};
    std::atomic<long> documents{0};
    std::atomic<long> refusals{0};
    std::atomic<long> losses{0};
    std::vector<double> healthTimes; ///< milliseconds, as the next
    std::vector<double> commandTimes;
    std::uint16_t word = 0;
};

/// Waits until the memory of those who have gone is free again. Returns how long that took, in seconds; 0 when the
/// document can't be read.
double ReadAfterwards(std::uint16_t port) {
    const auto begin = Clock::now();
    HttpConnection client(port);
    while (Clock::now() - begin < std::chrono::seconds(30)) {
        client.Send(DocumentRequest);
        if (client.Receive(true).status == 200) {
            return std::chrono::duration<double>(Clock::now() - begin).count();
        }
        std::this_thread::sleep_for(milliseconds(50));
    }
    return 0;
}

} // namespace

int HttpAttack(int seconds) {
    const SensorProgram sensor;
    const long atStart = sensor.ResidentKilobytes();
    FillAssembly(sensor.HttpPort());
    const long before = sensor.ResidentKilobytes();
    sensor.ForgetHighest();
    std::printf("resident %ld KB at the start, %ld KB with 60,000 blocks\n", atStart, before);
    Attack attack(sensor);
    attack.Run(seconds);
    const long highest = sensor.HighestResidentKilobytes();
    const double readSeconds = ReadAfterwards(sensor.HttpPort());
    std::printf("resident %ld KB at the most, %ld KB afterwards\n", highest, sensor.ResidentKilobytes());
    return attack.Report(highest - before, readSeconds) ? 0 : 1;
}

} // namespace Soak
