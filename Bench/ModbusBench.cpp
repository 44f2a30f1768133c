// The Modbus server against a bare one: round trips of 100 registers with 1, 8 and 32 clients, and the influence of
// misbehaving clients on well-behaved ones. Servers run on core 0, clients on core 1.

#include "Bench/LoopbackSocket.h"
#include "Bench/Measure.h"
#include "Bench/RoundTrips.h"
#include "Net/TcpServer.h"
#include "Services/Common/Registers/CommandCells.h"
#include "Services/Common/Registers/ICommandRunner.h"
#include "Services/Common/Registers/RegisterImage.h"
#include "Services/Common/ServiceCounters.h"
#include "Services/Modbus/FrameCodec.h"
#include "Services/Modbus/RegisterMap.h"
#include "Services/Modbus/RequestHandler.h"
#include "Services/Modbus/Session.h"
#include "Vor/Logging.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/select.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include <modbus/modbus.h>

namespace {

using namespace Services::Modbus;
using Bench::Clock;
using Bench::Fail;
using Bench::Figures;
using Bench::LoopbackSocket;
using Bench::Pairs;
using Bench::PinTo;
using Bench::RunInTurns;

constexpr unsigned Registers = 100;
constexpr std::size_t ReplySize = HeaderSize + 2 + 2 * Registers;

void MakeRequest(unsigned char (&request)[12]) {
    EncodeHeader(request, 1, 1, 5);
    request[7] = 3;
    PutWord(request + 8, 0);
    PutWord(request + 10, Registers);
}

void RoundTrips(std::uint16_t port, Clock::time_point end, std::vector<float>& times) {
    const LoopbackSocket socket(port);
    unsigned char request[12];
    unsigned char reply[ReplySize];
    MakeRequest(request);
    for (auto begin = Clock::now(); begin < end;) {
        if (send(socket.fd, request, sizeof request, MSG_NOSIGNAL) != sizeof request ||
            recv(socket.fd, reply, ReplySize, MSG_WAITALL) != static_cast<ssize_t>(ReplySize)) {
            Fail("round trip");
        }
        const auto now = Clock::now();
        times.push_back(std::chrono::duration<float>(now - begin).count());
        begin = now;
    }
}

Figures Run(std::uint16_t port, int clients, std::chrono::milliseconds duration) {
    std::vector<std::vector<float>> times(static_cast<std::size_t>(clients));
    for (auto& own : times) {
        own.reserve(200000);
    }
    const auto begin = Clock::now();
    std::vector<std::thread> threads;
    for (auto& own : times) {
        threads.emplace_back([&own, port, begin, duration] { RoundTrips(port, begin + duration, own); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const auto time = Clock::now() - begin;
    std::vector<float> all;
    for (const auto& own : times) {
        all.insert(all.end(), own.begin(), own.end());
    }
    return Bench::FiguresOf(std::move(all), time);
}

/// The usual loop around the C library: one thread, select, receive, reply.
class BareServer {
public:
    BareServer()
        : context(modbus_new_tcp("127.0.0.1", 0))
        , mapping(modbus_mapping_new(0, 0, Registers, 0)) {
        listening = modbus_tcp_listen(context, 32);
        if (listening < 0 || pipe(wake) != 0) {
            Fail("bare server");
        }
        sockaddr_in address{};
        socklen_t size = sizeof address;
        getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size);
        port = ntohs(address.sin_port);
        thread = std::thread([this] { Serve(); });
    }
    ~BareServer() {
        if (write(wake[1], "", 1) != 1) {
            Fail("wake");
        }
        thread.join();
        close(wake[0]);
        close(wake[1]);
        close(listening);
        modbus_mapping_free(mapping);
        modbus_free(context);
    }
    BareServer(const BareServer&) = delete;
    BareServer& operator=(const BareServer&) = delete;

    std::uint16_t Port() const { return port; }

private:
    void Serve() {
        fd_set known;
        FD_ZERO(&known);
        FD_SET(listening, &known);
        FD_SET(wake[0], &known);
        int highest = std::max(listening, wake[0]);
        for (;;) {
            fd_set ready = known;
            if (select(highest + 1, &ready, nullptr, nullptr, nullptr) < 0) {
                Fail("select");
            }
            if (FD_ISSET(wake[0], &ready)) {
                return;
            }
            for (int fd = 0; fd <= highest; ++fd) {
                if (!FD_ISSET(fd, &ready)) {
                    continue;
                }
                if (fd == listening) {
                    const int client = accept(listening, nullptr, nullptr);
                    const int one = 1;
                    setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
                    FD_SET(client, &known);
                    highest = std::max(highest, client);
                } else if (!Answer(fd)) {
                    close(fd);
                    FD_CLR(fd, &known);
                }
            }
        }
    }

    bool Answer(int fd) {
        unsigned char query[MODBUS_TCP_MAX_ADU_LENGTH];
        modbus_set_socket(context, fd);
        const int size = modbus_receive(context, query);
        return size > 0 && modbus_reply(context, query, size, mapping) > 0;
    }

    modbus_t* context;
    modbus_mapping_t* mapping;
    int listening = -1;
    int wake[2] = {-1, -1};
    std::uint16_t port = 0;
    std::thread thread;
};

class NoCommands : public Services::Common::ICommandRunner {
public:
    bool IsBusy() const override { return false; }
    void Run(const VorControl::ControlProtocol::ControlRegisterCommandData&) override {}
};

class OwnServer {
public:
    OwnServer()
        : handler(map, counters, 0)
        , server(thread, counters, {.idleTimeOut = std::chrono::hours(1)},
                 [this](bool mayWrite) { return std::make_unique<Session>(handler, mayWrite); }) {
        constexpr std::size_t Size = std::size_t{2} * Registers;
        image.Replace({{0, Size}}, std::vector<unsigned char>(Size, 7));
    }
    std::uint16_t Port() const { return server.Port(); }

private:
    Services::Common::RegisterImage image;
    NoCommands commands;
    Services::Common::CommandCells cells{image, commands, MakeCellTypes(), MakeRegisterFormat()};
    RegisterMap map{image, cells};
    Services::Common::ServiceCounters counters;
    RequestHandler handler;
    Net::NetThread thread{"ModbusNet"};
    Net::TcpServer server;
};

/// One client that stops in the middle of a request, one whose requests come byte by byte, one that never reads.
class Misbehaving {
public:
    explicit Misbehaving(std::uint16_t port)
        : half(port)
        , drip(port)
        , deaf(port) {
        unsigned char request[12];
        MakeRequest(request);
        if (send(half.fd, request, 6, MSG_NOSIGNAL) != 6) {
            Fail("half a request");
        }
        thread = std::thread([this] { Work(); });
    }
    ~Misbehaving() {
        stop = true;
        thread.join();
    }

private:
    void Work() {
        unsigned char request[12];
        MakeRequest(request);
        for (std::size_t i = 0; !stop; ++i) {
            send(drip.fd, &request[i % sizeof request], 1, MSG_NOSIGNAL | MSG_DONTWAIT);
            unsigned char replies[ReplySize];
            recv(drip.fd, replies, sizeof replies, MSG_DONTWAIT);
            send(deaf.fd, request, sizeof request, MSG_NOSIGNAL | MSG_DONTWAIT);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    const LoopbackSocket half;
    const LoopbackSocket drip;
    const LoopbackSocket deaf;
    std::atomic<bool> stop = false;
    std::thread thread;
};

} // namespace

int main(int argc, char** argv) {
    Vor::Logging::SetMinimumLevel(Vor::LevelWarning); // as in a sensor without --verbose
    Bench::Report report("modbus", argc, argv);
    const bool quick = report.Has("--quick");
    const int pairs = quick ? 3 : 10;
    const std::chrono::milliseconds duration(quick ? 500 : 3000);
    if (std::thread::hardware_concurrency() < 2) {
        report.Skip("Modbus round trips", "needs two cores");
        return report.Finish();
    }

    PinTo(Bench::ServerCore);
    const BareServer bare;
    const OwnServer own;
    PinTo(Bench::ClientCore);

    Run(own.Port(), 1, duration / 3);
    Run(bare.Port(), 1, duration / 3);
    for (const int clients : {1, 8, 32}) {
        const Pairs result = RunInTurns(
            pairs, [&] { return Run(own.Port(), clients, duration); },
            [&] { return Run(bare.Port(), clients, duration); });
        const std::string who = std::to_string(clients) + (clients == 1 ? " client" : " clients");
        report.AddRate("round trips, " + who, result.Compare(&Figures::rate), "1/s", 0.9);
        report.Add("99th percentile, " + who, result.Compare(&Figures::p99), "us", 1.2, 1e6);
    }
    const Pairs disturbed = RunInTurns(
        pairs,
        [&] {
            const Misbehaving clients(own.Port());
            return Run(own.Port(), 4, duration);
        },
        [&] { return Run(own.Port(), 4, duration); });
    report.Add("99th percentile of 4 clients, beside 3 that misbehave", disturbed.Compare(&Figures::p99), "us", 1.2,
               1e6);
    return report.Finish();
}
