#include "Tests/Soak/MemorySoak.h"

#include "Tests/Support/BuildFolders.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <signal.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <modbus/modbus.h>

namespace Soak {

namespace {

using Clock = std::chrono::steady_clock;

constexpr long ResidentLimitKilobytes = 30 * 1024;
constexpr double GrowthLimitKilobytes = 256;
constexpr std::size_t ReadingsPerMinute = 12;

/// The program, started at construction and ended at destruction.
class Sensor {
public:
    explicit Sensor(const std::string& dataFolder) {
        int ends[2];
        if (pipe(ends) != 0) {
            throw std::runtime_error("pipe failed");
        }
        process = fork();
        if (process == 0) {
            dup2(ends[1], STDOUT_FILENO);
            close(ends[0]);
            close(ends[1]);
            const std::string program = Tests::BuiltFile("vorsensor");
            execl(program.c_str(), "vorsensor", "--data", dataFolder.c_str(), "--frame-rate", "1000", "--modbus-port",
                  "0", "--http-port", "0", static_cast<char*>(nullptr));
            _exit(127);
        }
        close(ends[1]);
        output = fdopen(ends[0], "r");
    }

    ~Sensor() {
        kill(process, SIGTERM);
        waitpid(process, nullptr, 0);
        if (reader.joinable()) {
            reader.join();
        }
        std::fclose(output);
    }

    Sensor(const Sensor&) = delete;
    Sensor& operator=(const Sensor&) = delete;

    /// The port that the sensor prints in an address such as tcp://127.0.0.1:40001.
    int Port() {
        char line[1024];
        while (std::fgets(line, sizeof line, output) != nullptr) {
            if (const char* address = std::strstr(line, "tcp://")) {
                const char* colon = std::strchr(address + std::strlen("tcp://"), ':');
                return colon == nullptr ? 0 : std::atoi(colon + 1);
            }
        }
        throw std::runtime_error("the sensor printed no address");
    }

    /// Reads the output of the sensor, so that its writes never block.
    void Drain() {
        reader = std::thread([this] {
            char line[1024];
            while (std::fgets(line, sizeof line, output) != nullptr) {
            }
        });
    }

    long ResidentKilobytes() const {
        std::ifstream status("/proc/" + std::to_string(process) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("VmRSS:")) {
                return std::atol(line.c_str() + std::strlen("VmRSS:"));
            }
        }
        throw std::runtime_error("the sensor has ended");
    }

private:
    pid_t process = -1;
    FILE* output = nullptr;
    std::thread reader;
};

double MedianOf(const std::vector<long>& readings, std::size_t first) {
    const std::size_t last = std::min(first + ReadingsPerMinute, readings.size());
    std::vector<long> minute(readings.begin() + static_cast<long>(first), readings.begin() + static_cast<long>(last));
    std::sort(minute.begin(), minute.end());
    return static_cast<double>(minute[(minute.size() - 1) / 2] + minute[minute.size() / 2]) / 2;
}

/// Reads the measurements until `end`. Returns the number of round trips.
long ReadUntil(modbus_t* client, Clock::time_point end) {
    long count = 0;
    for (; Clock::now() < end; ++count) {
        std::uint16_t registers[15];
        if (modbus_read_registers(client, 0, 15, registers) != 15) {
            throw std::runtime_error(std::string("reading failed: ") + modbus_strerror(errno));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return count;
}

} // namespace

int MemorySoak(int minutes) {
    char folder[] = "/tmp/soak-XXXXXX";
    if (mkdtemp(folder) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    std::vector<long> readings;
    {
        Sensor sensor(folder);
        const int port = sensor.Port();
        sensor.Drain();
        modbus_t* client = modbus_new_tcp("127.0.0.1", port);
        if (modbus_connect(client) != 0) {
            throw std::runtime_error("no connection to port " + std::to_string(port));
        }
        auto next = Clock::now();
        for (int i = 0; i < minutes * static_cast<int>(ReadingsPerMinute); ++i) {
            next += std::chrono::seconds(5);
            const long trips = ReadUntil(client, next);
            readings.push_back(sensor.ResidentKilobytes());
            std::printf("%5d s  resident %7ld KB  %6ld reads\n", (i + 1) * 5, readings.back(), trips);
            std::fflush(stdout);
        }
        modbus_close(client);
        modbus_free(client);
    }
    std::filesystem::remove_all(folder);

    const std::size_t base = minutes > 6 ? 5 * ReadingsPerMinute : 0;
    const double growth = MedianOf(readings, readings.size() - ReadingsPerMinute) - MedianOf(readings, base);
    const bool kept = readings.back() < ResidentLimitKilobytes && growth <= GrowthLimitKilobytes;
    std::printf("resident at the end %ld KB (limit %ld), growth of the minute's median %.0f KB (limit %.0f): %s\n",
                readings.back(), ResidentLimitKilobytes, growth, GrowthLimitKilobytes, kept ? "ok" : "MISSED");
    return kept ? 0 : 1;
}

} // namespace Soak
