// A master that writes its registers cyclically, and a sensor that is killed and started again.

#include "Tests/EndToEnd/ModbusCommands.h"
#include "Tests/EndToEnd/ModbusReader.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Support/Threads.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <modbus/modbus.h>

namespace Tests {
namespace {

constexpr int RunStateAddress = SystemAddress + 4;
using Registers = std::vector<std::uint16_t>;

/// Writes the same command registers all the time, and connects again whenever the connection is lost.
class CyclicMaster {
public:
    CyclicMaster(std::uint16_t port, const Registers& image)
        : port(port)
        , image(image)
        , thread([this] { Run(); }) {}
    ~CyclicMaster() {
        stop = true;
        thread.join();
    }

    void SetImage(const Registers& next) {
        const std::lock_guard lock(mutex);
        image = next;
    }
    /// Waits for a number of further writes.
    bool WaitForWrites(unsigned count) {
        return WaitUntil([this, target = writes + count] { return writes >= target; });
    }

private:
    void Run() {
        while (!stop) {
            modbus_t* const context = modbus_new_tcp("127.0.0.1", port);
            if (modbus_connect(context) == 0) {
                while (!stop && Write(context)) {
                    ++writes;
                }
            }
            modbus_close(context);
            modbus_free(context);
            std::this_thread::yield();
        }
    }

    bool Write(modbus_t* context) {
        Registers words;
        {
            const std::lock_guard lock(mutex);
            words = image;
        }
        return modbus_write_registers(context, CommandAddress, static_cast<int>(words.size()), words.data()) >= 0 ||
               errno == EMBXSBUSY;
    }

    const std::uint16_t port;
    std::mutex mutex; ///< guards `image`
    Registers image;
    std::atomic<bool> stop = false;
    std::atomic<unsigned> writes = 0;
    std::thread thread;
};

class FirstRequestTest : public testing::Test {
protected:
    /// Starts the sensor without a scan, on `port` or on a free port.
    void StartSensor(const std::string& firstRequest) {
        program = std::make_unique<Program>(VirtualSensor::Command(
            data.Path().string(), {"--no-scan", "--modbus-port", std::to_string(port), "--set", "ascii.port=0", "--set",
                                   "modbus.firstRequest=" + firstRequest}));
        port = VirtualSensor::PortOf(program->WaitForLine("Service modbus (Modbus TCP):").value_or("none"), *program);
        reader = std::make_unique<ModbusReader>(port);
    }
    void Kill() {
        program->Signal(SIGKILL);
        ASSERT_EQ(program->WaitForExit(), 128 + SIGKILL);
    }

    bool WaitForAnswer(const Registers& expected) {
        return WaitUntil([&] { return reader->Read(AnswerAddress, 2) == expected; });
    }
    bool WaitForRunState(std::uint16_t expected) {
        return WaitUntil([&] { return reader->Read(RunStateAddress, 1) == Registers{expected}; });
    }

    TempFolder data;
    std::uint16_t port = 0;
    std::unique_ptr<Program> program;
    std::unique_ptr<ModbusReader> reader;
};

TEST_F(FirstRequestTest, RunsAgainAfterARestartByDefault) {
    StartSensor("run");
    CyclicMaster master(port, {7, Start});
    EXPECT_TRUE(WaitForAnswer({7, Done}));
    EXPECT_TRUE(WaitForRunState(1));
    Kill();
    StartSensor("run");
    EXPECT_TRUE(WaitForAnswer({7, Done}));
    EXPECT_TRUE(WaitForRunState(1)) << "the command in the master's registers has run again";
}

TEST_F(FirstRequestTest, IsABaseAfterEachStartWhereTheJobSaysSo) {
    StartSensor("base");
    CyclicMaster master(port, {7, Start});
    EXPECT_TRUE(WaitForAnswer({7, NothingRan}));
    master.SetImage({8, Start});
    EXPECT_TRUE(WaitForAnswer({8, Done}));
    EXPECT_TRUE(WaitForRunState(1));
    Kill();
    StartSensor("base");
    EXPECT_TRUE(WaitForAnswer({8, NothingRan})) << "the master sees that nothing has run";
    EXPECT_TRUE(master.WaitForWrites(100));
    EXPECT_EQ(reader->Read(AnswerAddress, 2), (Registers{8, NothingRan}));
    EXPECT_EQ(reader->Read(RunStateAddress, 1), Registers{0});
    master.SetImage({9, Start});
    EXPECT_TRUE(WaitForAnswer({9, Done}));
    EXPECT_TRUE(WaitForRunState(1));
}

} // namespace
} // namespace Tests
