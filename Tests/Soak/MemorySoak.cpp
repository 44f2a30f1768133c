#include "Tests/Soak/MemorySoak.h"

#include "Tests/Soak/SensorProgram.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <modbus/modbus.h>

namespace Soak {

namespace {

using Clock = std::chrono::steady_clock;

constexpr long ResidentLimitKilobytes = 30 * 1024;
constexpr double GrowthLimitKilobytes = 256;
constexpr std::size_t ReadingsPerMinute = 12;

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
    std::vector<long> readings;
    {
        const SensorProgram sensor({"--frame-rate", "1000"});
        const int port = sensor.ModbusPort();
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

    const std::size_t base = minutes > 6 ? 5 * ReadingsPerMinute : 0;
    const double growth = MedianOf(readings, readings.size() - ReadingsPerMinute) - MedianOf(readings, base);
    const bool kept = readings.back() < ResidentLimitKilobytes && growth <= GrowthLimitKilobytes;
    std::printf("resident at the end %ld KB (limit %ld), growth of the minute's median %.0f KB (limit %.0f): %s\n",
                readings.back(), ResidentLimitKilobytes, growth, GrowthLimitKilobytes, kept ? "ok" : "MISSED");
    return kept ? 0 : 1;
}

} // namespace Soak
