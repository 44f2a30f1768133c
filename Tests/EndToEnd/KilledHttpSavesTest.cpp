// Kills the sensor in its saves over HTTP, while clients of all its services are busy. Each time the job must have the
// whole content of the save that ran, or of the one before: with VOR_LONG_TESTS 500 times.

#include "Tests/EndToEnd/HttpConnection.h"
#include "Tests/EndToEnd/ModbusReader.h"
#include "Tests/EndToEnd/Program.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Net/LineClient.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/Threads.h"
#include "VorCommon/ArchiveStore.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {
namespace {

using nlohmann::json;

constexpr std::array SavedServices{"modbus", "ascii"};
constexpr unsigned MaxReads = 100; ///< of a Modbus client between the begin of a save and the kill

/// The parameter `idleTimeout` of each service in a generation.
int ValueOf(unsigned generation) {
    return 1000 + static_cast<int>(generation % 1000);
}

class KilledHttpSaves : public testing::Test {
protected:
    struct Ports {
        std::uint16_t modbus;
        std::uint16_t ascii;
        std::uint16_t http;
    };

    static Ports PortsOf(Program& sensor) {
        Ports ports{};
        ports.ascii = VirtualSensor::PortOf(sensor.WaitForLine("Service ascii (e-ascii):").value_or("none"), sensor);
        ports.modbus =
            VirtualSensor::PortOf(sensor.WaitForLine("Service modbus (Modbus TCP):").value_or("none"), sensor);
        const std::string http = sensor.WaitForLine("HTTP: http://127.0.0.1:").value_or("HTTP: :0/");
        ports.http = static_cast<std::uint16_t>(std::stoi(http.substr(http.rfind(':') + 1)));
        return ports;
    }

    /// Saves one generation after the other, until the sensor is gone.
    void Save(std::uint16_t port, unsigned former) {
        HttpConnection http(port);
        for (unsigned generation = former + 1;; ++generation) {
            for (const char* const service : SavedServices) {
                const json change{{"parameters", {{"idleTimeout", ValueOf(generation)}}}};
                if (http.Ask("PATCH", std::string("/controls/") + service, change).status != 200) {
                    return;
                }
            }
            begun = generation;
            if (http.Ask("POST", "/sensor/jobs/demo/commands/save").status != 200) {
                return;
            }
            ended = generation;
        }
    }
    static void ReadFrames(std::uint16_t port) {
        Net::LineClient ascii(port);
        while (ascii.SendSome("RESULT\n") > 0 && !ascii.Line().empty()) {
        }
    }
    static void ReadDocuments(std::uint16_t port) {
        HttpConnection http(port);
        while (http.Ask("GET", "/sensor/jobs/loaded/changes").status != 0) {
        }
    }

    /// What the job has for a service.
    int Saved(const std::string& service) const {
        VorCommon::ArchiveStore store(data.File("jobs/demo.vrjob"));
        store.OpenJob();
        const VorCommon::PersistBuffer buffer = store.Read("/controls/" + service + "/config.json");
        const auto* const text = buffer.pointer + buffer.offset;
        return json::parse(text, text + buffer.size).at("vor:control").at("parameters").at("idleTimeout");
    }

    /// Returns the generation that the job has afterwards.
    unsigned KillOnce(unsigned former) {
        Program sensor(VirtualSensor::Command(data.Path().string(),
                                              {"--modbus-port", "0", "--set", "ascii.port=0", "--frame-rate", "1000"}));
        const Ports ports = PortsOf(sensor);
        if (former > 0) {
            HttpConnection http(ports.http);
            for (const char* const service : SavedServices) {
                const HttpAnswer answer = http.Ask("GET", std::string("/controls/") + service);
                EXPECT_EQ(answer.body.at("parameters").at("idleTimeout"), ValueOf(former)) << service;
            }
        }
        begun = ended = former;
        std::thread saver([&] { Save(ports.http, former); });
        std::thread documents([&] { ReadDocuments(ports.http); });
        std::thread frames([&] { ReadFrames(ports.ascii); });
        EXPECT_TRUE(WaitUntil([&] { return former > 0 ? begun > former : ended > 0; })) << sensor.Errors();
        ModbusReader modbus(ports.modbus);
        const unsigned reads = std::uniform_int_distribution<unsigned>(0, MaxReads)(random);
        for (unsigned i = 0; i < reads; ++i) {
            EXPECT_FALSE(modbus.Read(0, 16).empty());
        }
        sensor.Signal(SIGKILL);
        EXPECT_EQ(sensor.WaitForExit(), 128 + SIGKILL);
        saver.join();
        documents.join();
        frames.join();
        const int found = Saved("modbus");
        EXPECT_EQ(Saved("ascii"), found) << "the job is a mixture";
        EXPECT_TRUE(found == ValueOf(ended) || found == ValueOf(begun))
            << found << ", " << ValueOf(ended) << ", " << ValueOf(begun);
        return found == ValueOf(begun) ? begun : ended;
    }

    const TempFolder data;
    std::mt19937 random{std::random_device{}()};
    std::atomic<unsigned> begun = 0;
    std::atomic<unsigned> ended = 0;
};

TEST_F(KilledHttpSaves, LeaveWholeJobs) {
    const int count = std::getenv("VOR_LONG_TESTS") == nullptr ? 3 : 500;
    unsigned generation = 0;
    for (int i = 0; i < count && !HasFailure(); ++i) {
        generation = KillOnce(generation);
        EXPECT_GT(generation, 0U);
    }
}

} // namespace
} // namespace Tests
