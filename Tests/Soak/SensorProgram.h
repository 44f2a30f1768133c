#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace Soak {

/// The program `vorsensor` in a data folder of its own, from the construction to the destruction, with free ports.
class SensorProgram {
public:
    explicit SensorProgram(const std::vector<std::string>& arguments = {});
    ~SensorProgram();
    SensorProgram(const SensorProgram&) = delete;
    SensorProgram& operator=(const SensorProgram&) = delete;

    std::uint16_t ModbusPort() const { return modbusPort; }
    std::uint16_t HttpPort() const { return httpPort; }

    long ResidentKilobytes() const { return StatusKilobytes("VmRSS:"); }
    /// The most since ForgetHighest.
    long HighestResidentKilobytes() const { return StatusKilobytes("VmHWM:"); }
    void ForgetHighest() const;

private:
    void Start(const std::vector<std::string>& arguments);
    /// The port behind that text, in the next line of the output that begins with it.
    std::uint16_t ReadPort(const std::string& text);
    long StatusKilobytes(const std::string& name) const;

    std::string folder = "/tmp/soak-XXXXXX";
    pid_t process = -1;
    FILE* output = nullptr;
    std::uint16_t modbusPort = 0;
    std::uint16_t httpPort = 0;
    std::thread reader; ///< of the rest of the output, so that the program never waits for it to be read
};

} // namespace Soak
