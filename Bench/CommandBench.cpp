// The time from the write of a command register to the start of the scan on the main loop, with a Modbus client on one
// core, the service and the main loop on the other. The reference is the simplest server that does the same: a thread
// that receives the request, posts a closure and replies.

#include "Bench/LoopbackSocket.h"
#include "Bench/Measure.h"
#include "Bench/RoundTrips.h"
#include "Services/Modbus/FrameCodec.h"
#include "Services/Modbus/ModbusProtocol.h"
#include "Vor/AsyncRunner.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorApi/ResourceRouter.h"
#include "VorCommon/PlatformAttributes.h"
#include "VorCommon/ProblemsManager.h"
#include "VorCommon/RuntimeCache.h"
#include "VorControl/Control/ControlDataCache.h"
#include "VorControl/Control/ControlDeviceOperations.h"
#include "VorControl/Control/ControlHost.h"
#include "VorControl/Control/ControlProtocolOperations.h"
#include "VorControl/Control/ControlResourceAdaptor.h"
#include "VorControl/Control/ControlScanEngineInterface.h"
#include "VorControl/Control/ControlScanResults.h"
#include "VorControl/Control/ControlSystemInterface.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorCore/ResultHub.h"
#include "VorCore/SystemCore.h"
#include "VorRest/RequestProcessor.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace Services::Modbus;
using Bench::Clock;
using Bench::Fail;
using Bench::LoopbackSocket;
using Bench::PinTo;

constexpr int Commands = 5000;
constexpr std::uint16_t CommandAddress = 1000;
constexpr std::uint16_t AnswerAddress = 1100;

/// When the scan was last started, in nanoseconds of the clock; 0 after WaitForStart.
std::atomic<Clock::rep> started{0};

void NoteStart() {
    started.store(Clock::now().time_since_epoch().count(), std::memory_order_release);
}

Clock::rep WaitForStart() {
    for (;;) {
        if (const Clock::rep time = started.exchange(0, std::memory_order_acquire); time != 0) {
            return time;
        }
        std::this_thread::yield();
    }
}

void ReceiveAll(int fd, unsigned char* bytes, std::size_t size) {
    for (std::size_t got = 0; got < size;) {
        const ssize_t count = recv(fd, bytes + got, size - got, 0);
        if (count <= 0) {
            Fail("recv");
        }
        got += static_cast<std::size_t>(count);
    }
}

/// Function 16 with two registers: the request word and a command.
using Request = std::array<unsigned char, HeaderSize + 10>;

Request MakeRequest(std::uint16_t word, std::uint16_t command) {
    Request request{};
    EncodeHeader(request.data(), word, 1, 10);
    request[7] = 16;
    PutWord(&request[8], CommandAddress);
    PutWord(&request[10], 2);
    request[12] = 4;
    PutWord(&request[13], word);
    PutWord(&request[15], command);
    return request;
}

constexpr std::size_t ReplySize = HeaderSize + 5;

class Client {
public:
    explicit Client(std::uint16_t port)
        : socket(port) {}

    /// Returns the microseconds from each write to the start that it causes. `done` runs between two commands.
    std::vector<double> Run(const std::function<void()>& done) {
        std::vector<double> times;
        for (int i = 0; i < Commands; ++i) {
            const Request request = MakeRequest(++word, 1);
            const auto begin = Clock::now().time_since_epoch().count();
            if (send(socket.fd, request.data(), request.size(), 0) != static_cast<ssize_t>(request.size())) {
                Fail("send");
            }
            const Clock::rep end = WaitForStart();
            std::array<unsigned char, ReplySize> reply{};
            ReceiveAll(socket.fd, reply.data(), reply.size());
            if (reply[7] != 16) {
                std::fprintf(stderr, "command %d is refused with exception %d\n", i, reply[8]);
                std::exit(1);
            }
            times.push_back(static_cast<double>(end - begin) / 1000);
            done();
        }
        return times;
    }

    /// Reads the answer registers until the last command has status 2 (done).
    void WaitUntilDone() {
        std::array<unsigned char, HeaderSize + 5> request{};
        EncodeHeader(request.data(), 1, 1, 5);
        request[7] = 3;
        PutWord(&request[8], AnswerAddress);
        PutWord(&request[10], 2);
        std::array<unsigned char, HeaderSize + 6> reply{};
        do {
            send(socket.fd, request.data(), request.size(), 0);
            ReceiveAll(socket.fd, reply.data(), reply.size());
        } while (Word(&reply[9]) != word || Word(&reply[11]) != 2);
    }

private:
    const LoopbackSocket socket;
    std::uint16_t word = 0;
};

/// The simplest server: one client, one frame at a time, no checks.
class BareServer {
public:
    BareServer()
        : listener(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        if (bind(listener, reinterpret_cast<const sockaddr*>(&address), size) != 0 || listen(listener, 1) != 0) {
            Fail("listen");
        }
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
        port = ntohs(address.sin_port);
        thread = std::thread([this] { Serve(); });
    }
    ~BareServer() {
        thread.join();
        close(listener);
    }
    BareServer(const BareServer&) = delete;
    BareServer& operator=(const BareServer&) = delete;

    std::uint16_t port = 0;

private:
    void Serve() {
        const int fd = accept(listener, nullptr, nullptr);
        const int one = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        Request request{};
        while (recv(fd, request.data(), request.size(), MSG_WAITALL) == static_cast<ssize_t>(request.size())) {
            runner.Run(NoteStart);
            EncodeHeader(request.data(), Word(request.data()), 1, 5);
            send(fd, request.data(), ReplySize, MSG_NOSIGNAL);
        }
        close(fd);
    }

    int listener;
    Vor::AsyncRunner runner;
    std::thread thread;
};

/// The service on a host with real operations. Only the start of the scan is replaced by NoteStart.
class OwnServer {
public:
    OwnServer()
        : core({.startScan = NoteStart,
                .stopScan = [] {},
                .factoryRestore = [] {},
                .restart = [] {},
                .blinkLed = [] {},
                .storageFolders = {}})
        , service({.typeName = "modbus", .displayName = "Modbus TCP", .controlHost = &host}) {
        auto& params = dynamic_cast<ModbusParams&>(service.Params());
        params.port = 0;
        AddBlock("ControlInput", CommandAddress);
        AddBlock("ControlOutput", AnswerAddress);
        service.AddControlScanResultsHandler();
        service.Start();
    }
    ~OwnServer() {
        service.Stop();
        service.RemoveControlScanResultsHandler();
    }
    OwnServer(const OwnServer&) = delete;
    OwnServer& operator=(const OwnServer&) = delete;

    std::uint16_t Port() {
        const VorControl::ControlProtocol::PropertiesLock lock(service);
        const std::string url =
            dynamic_cast<Services::Common::TcpServerProperties&>(service.Properties()).address.Get();
        return static_cast<std::uint16_t>(std::stoi(url.substr(url.rfind(':') + 1)));
    }

    void StopScan() { core.Stop(false, false); }

private:
    void AddBlock(const char* type, std::uint16_t address) {
        VorControl::ControlProtocol::AddBlockParams request;
        request.blocks.Resize(1);
        request.blocks.At(0).type = type;
        request.blocks.At(0).outputId = address;
        service.RegisterAssembly("registerAssembly-0")->Add(request);
    }

    VorCommon::PlatformAttributes platform{VorCommon::PlatformKind::VirtualSensor};
    VorCommon::RuntimeCache runtimeCache;
    VorCommon::ProblemsManager problems;
    VorCore::ResultHub hub;
    VorCore::SystemCore core;
    VorControl::ControlScanResults scanResults{&hub, nullptr};
    VorControl::ControlSystemInterface system{&core, nullptr, nullptr};
    VorControl::ControlScanEngineInterface scanEngine{nullptr};
    VorControl::ControlProtocolOperations operations{system, scanEngine, runtimeCache};
    VorControl::ControlDeviceOperations deviceOperations{scanEngine};
    VorControl::ControlDataCache cache{system, scanEngine};
    VorApi::ResourceRouter router;
    VorRest::RequestProcessor requests{router};
    VorControl::ControlResourceAdaptor resources{requests};
    VorControl::ControlHost host{scanResults, operations,       cache, resources, platform, runtimeCache, &problems,
                                 scanEngine,  deviceOperations, 1,     2,         3,        nullptr};
    ModbusProtocol service;
};

double Percentile(std::vector<double> values, double part) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

Bench::Comparison CompareAt(double part, const std::vector<double>& subject, const std::vector<double>& reference) {
    const double own = Percentile(subject, part);
    const double bare = Percentile(reference, part);
    return {own, bare, own / bare, own / bare, own / bare};
}

} // namespace

int main(int argc, char** argv) {
    Bench::Report report("command", argc, argv);
    if (std::thread::hardware_concurrency() < 2) {
        report.Skip("command to the start of the scan", "needs two cores");
        return report.Finish();
    }
    Vor::Logging::SetMinimumLevel(Vor::LevelWarning); // as in a sensor without --verbose
    PinTo(Bench::ServerCore);
    Vor::MainLoop loop;
    OwnServer own;
    std::optional<BareServer> bare(std::in_place);
    Vor::AsyncRunner runner;
    std::thread clients([&] {
        PinTo(Bench::ClientCore);
        std::vector<double> reference;
        {
            Client client(bare->port);
            client.Run([] {});
            reference = client.Run([] {});
        }
        Client client(own.Port());
        const auto ended = [&] {
            client.WaitUntilDone();
            runner.RunAndWait([&] { own.StopScan(); }, 10'000'000);
        };
        client.Run(ended);
        const std::vector<double> subject = client.Run(ended);
        report.Add("write of a command to the start of the scan, p50", CompareAt(0.5, subject, reference), "us");
        report.Add("write of a command to the start of the scan, p99", CompareAt(0.99, subject, reference), "us");
        loop.Stop();
    });
    loop.Run();
    clients.join();
    bare.reset();
    return report.Finish();
}
