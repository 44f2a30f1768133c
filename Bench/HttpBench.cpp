// The resources over HTTP against a plain server that makes the same documents by hand: reads of a service by 32
// connections, what these do to a Modbus client, the document of an assembly with 60,000 blocks, and what streams of
// figures cost. Servers run on core 0, clients on core 1.

#include "Bench/LoopbackSocket.h"
#include "Bench/Measure.h"
#include "Bench/PlainHttpServer.h"
#include "Bench/RoundTrips.h"
#include "Bench/TempFolder.h"
#include "Net/NetThread.h"
#include "Sensor/Http/EventStreams.h"
#include "Sensor/Http/HttpServer.h"
#include "Sensor/Http/ResourceGateway.h"
#include "Sensor/Resources/Revisions.h"
#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/ServiceHost.h"
#include "Sensor/VirtualSensor.h"
#include "Vor/LogOutput.h"
#include "Vor/MainLoop.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <memory>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include <modbus/modbus.h>
#include <nlohmann/json.hpp>

namespace {

using Bench::Clock;
using Bench::Fail;
using Bench::Figures;
using Bench::LoopbackSocket;
using Bench::Pairs;
using Bench::PinTo;
using Json = nlohmann::ordered_json;
using std::chrono::milliseconds;

constexpr const char* ServicePath = "/controls/modbus";
constexpr const char* AssemblyPath = "/controls/modbus/registerAssemblies/registerAssembly-0";
constexpr std::size_t Connections = 32;
constexpr std::size_t BlockCount = 60000;
constexpr std::size_t BlocksOfRequest = 7500; ///< less than 1 MiB of text
constexpr std::size_t Streams = 1000;
constexpr double Megabyte = 1024.0 * 1024;

std::filesystem::path OwnFolder() {
    return std::filesystem::canonical("/proc/self/exe").parent_path();
}

/// A process on the servers' core, which ends with this, at the latest.
class Server {
public:
    /// `work` runs in the process, with what it prints going to ReadLine.
    explicit Server(const std::function<void()>& work) {
        int ends[2];
        if (pipe(ends) != 0) {
            Fail("pipe");
        }
        std::fflush(stdout);
        process = fork();
        if (process == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            PinTo(Bench::ServerCore);
            dup2(ends[1], STDOUT_FILENO);
            close(ends[0]);
            close(ends[1]);
            work();
            _exit(1);
        }
        close(ends[1]);
        output = fdopen(ends[0], "r");
    }
    ~Server() {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
        std::fclose(output);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// The port that it prints behind `text`, such as "HTTP: http://127.0.0.1:".
    std::uint16_t ReadPort(const std::string& text) {
        char line[1024];
        while (std::fgets(line, sizeof line, output) != nullptr) {
            if (std::strncmp(line, text.c_str(), text.size()) == 0) {
                return static_cast<std::uint16_t>(std::atoi(line + text.size()));
            }
        }
        throw std::runtime_error("a server doesn't print '" + text + "'");
    }

private:
    pid_t process = -1;
    FILE* output = nullptr;
};

void RunSensor(const std::filesystem::path& dataFolder) {
    dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
    const std::string program = (OwnFolder() / "vorsensor").string();
    execl(program.c_str(), "vorsensor", "--data", dataFolder.c_str(), "--modbus-port", "0", "--set", "ascii.port=0",
          "--http-port", "0", static_cast<char*>(nullptr));
}

[[noreturn]] void RunPlainServer(const std::function<std::string()>& document) {
    const Bench::PlainHttpServer server(document);
    std::printf("%d\n", server.Port());
    std::fflush(stdout);
    for (;;) {
        pause();
    }
}

std::string GetRequest(const std::string& path, const std::string& accept = "*/*") {
    return "GET " + path + " HTTP/1.1\r\nHost: localhost\r\nAccept: " + accept + "\r\n\r\n";
}

void Send(int fd, const std::string& request) {
    if (send(fd, request.data(), request.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(request.size())) {
        Fail("send");
    }
}

/// The size of the response that begins with `received`, head and body; 0 when its head isn't whole.
std::size_t ResponseSize(const std::string& received) {
    const std::size_t end = received.find("\r\n\r\n");
    if (end == std::string::npos) {
        return 0;
    }
    const std::string field = "\r\nContent-Length: ";
    const std::size_t length = received.find(field);
    if (!received.starts_with("HTTP/1.1 200") || length > end) {
        throw std::runtime_error("a response begins with: " + received.substr(0, end));
    }
    return end + 4 + std::strtoul(received.c_str() + length + field.size(), nullptr, 10);
}

/// A client that waits for its answers.
class Client {
public:
    explicit Client(std::uint16_t port)
        : socket(port) {}

    /// Returns the body.
    std::string Ask(const std::string& request) {
        std::string body;
        Receive(request, &body);
        return body;
    }
    /// Asks and drops the answer. Returns how long that took, in seconds.
    double Time(const std::string& request) {
        const double begin = Bench::WallSeconds();
        Receive(request, nullptr);
        return Bench::WallSeconds() - begin;
    }
    std::string Post(const std::string& path, const Json& arguments) { return Ask(PostRequest(path, arguments)); }

    static std::string PostRequest(const std::string& path, const Json& arguments) {
        const std::string body = arguments.dump();
        return "POST " + path + " HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\nContent-Length: " +
               std::to_string(body.size()) + "\r\n\r\n" + body;
    }

private:
    void Receive(const std::string& request, std::string* body) {
        Send(socket.fd, request);
        std::string head;
        std::size_t size = 0;
        std::size_t received = 0;
        while (size == 0 || received < size) {
            const ssize_t count = recv(socket.fd, piece.data(), piece.size(), 0);
            if (count <= 0) {
                Fail("response");
            }
            received += static_cast<std::size_t>(count);
            if (size == 0) {
                head.append(piece.data(), static_cast<std::size_t>(count));
                size = ResponseSize(head);
                if (size > 0 && body != nullptr) {
                    *body = head.substr(head.find("\r\n\r\n") + 4);
                }
            } else if (body != nullptr) {
                body->append(piece.data(), static_cast<std::size_t>(count));
            }
        }
    }

    const LoopbackSocket socket;
    std::vector<char> piece = std::vector<char>(std::size_t{256} * 1024);
};

/// Connections of one thread, each of which asks again as soon as it is answered.
class Load {
public:
    Load(std::uint16_t port, const std::string& path)
        : request(GetRequest(path)) {
        for (std::size_t i = 0; i < Connections; ++i) {
            connections.push_back(std::make_unique<Connection>(port));
            waiting.push_back({connections.back()->socket.fd, POLLIN, 0});
        }
    }

    Figures Run(Clock::duration duration) {
        const Clock::time_point begin = Clock::now();
        std::vector<float> times;
        for (const auto& connection : connections) {
            connection->asked = Clock::now();
            Send(connection->socket.fd, request);
        }
        for (std::size_t open = connections.size(); open > 0;) {
            if (poll(waiting.data(), waiting.size(), 10000) <= 0) {
                Fail("load");
            }
            for (std::size_t i = 0; i < waiting.size(); ++i) {
                if (waiting[i].revents != 0 && Receive(*connections[i], times)) {
                    if (Clock::now() - begin < duration) {
                        connections[i]->asked = Clock::now();
                        Send(waiting[i].fd, request);
                    } else {
                        --open;
                    }
                }
            }
        }
        return Bench::FiguresOf(std::move(times), Clock::now() - begin);
    }

private:
    struct Connection {
        explicit Connection(std::uint16_t port)
            : socket(port) {}

        const LoopbackSocket socket;
        std::string received = {};
        Clock::time_point asked = {};
    };

    /// Returns whether the response is whole.
    static bool Receive(Connection& connection, std::vector<float>& times) {
        char piece[16384];
        const ssize_t count = recv(connection.socket.fd, piece, sizeof piece, 0);
        if (count <= 0) {
            Fail("response");
        }
        connection.received.append(piece, static_cast<std::size_t>(count));
        const std::size_t size = ResponseSize(connection.received);
        if (size == 0 || connection.received.size() < size) {
            return false;
        }
        times.push_back(std::chrono::duration<float>(Clock::now() - connection.asked).count());
        connection.received.clear();
        return true;
    }

    const std::string request;
    std::vector<std::unique_ptr<Connection>> connections;
    std::vector<pollfd> waiting;
};

/// The values of the Modbus service, as code without the parameter classes would have them.
struct PlainService {
    int status;
    std::string address, failure;
    std::uint64_t dropCount, connected, refused, requests, exceptions, bytesIn, bytesOut, received, applied, lost;
    std::uint64_t latencyResults, latencyP50, latencyP99, latencyMax;
    bool enabled;
    std::string id, typeName, displayName;
    std::string listenAddress;
    unsigned port, unitId;
    int byteOrder;
    std::string firstRequest;
    unsigned maxConnections, maxConnectionsPerAddress, idleTimeout;
    std::vector<std::string> readNetworks, writeNetworks;
    unsigned triggerTimeout;

    static PlainService Of(const Json& from) {
        const Json& parameters = from.at("parameters");
        return {from.at("status"),
                from.at("address"),
                from.at("failure"),
                from.at("dropCount"),
                from.at("connected"),
                from.at("refused"),
                from.at("requests"),
                from.at("exceptions"),
                from.at("bytesIn"),
                from.at("bytesOut"),
                from.at("resultsReceived"),
                from.at("resultsApplied"),
                from.at("resultsDropped"),
                from.at("latencyResults"),
                from.at("latencyP50"),
                from.at("latencyP99"),
                from.at("latencyMax"),
                from.at("enabled"),
                from.at("id"),
                from.at("typeName"),
                from.at("displayName"),
                parameters.at("address"),
                parameters.at("port"),
                parameters.at("unitId"),
                parameters.at("byteOrder"),
                parameters.at("firstRequest"),
                parameters.at("maxConnections"),
                parameters.at("maxConnectionsPerAddress"),
                parameters.at("idleTimeout"),
                parameters.at("readNetworks"),
                parameters.at("writeNetworks"),
                parameters.at("triggerTimeout")};
    }

    std::string Text() const {
        const auto link = [](const std::string& href) { return Json{{"href", href}}; };
        const Json document = {
            {"_links",
             {{"self", link(ServicePath)},
              {"up", link("/controls")},
              {"collection", link("/controls")},
              {"vor:metrics", link("/controls/modbus/metrics")},
              {"curies", Json::array({{{"href", "/rels/{rel}"}, {"name", "vor"}, {"templated", true}}})}}},
            {"status", status},
            {"address", address},
            {"failure", failure},
            {"dropCount", dropCount},
            {"connected", connected},
            {"refused", refused},
            {"requests", requests},
            {"exceptions", exceptions},
            {"bytesIn", bytesIn},
            {"bytesOut", bytesOut},
            {"resultsReceived", received},
            {"resultsApplied", applied},
            {"resultsDropped", lost},
            {"latencyResults", latencyResults},
            {"latencyP50", latencyP50},
            {"latencyP99", latencyP99},
            {"latencyMax", latencyMax},
            {"enabled", enabled},
            {"id", id},
            {"typeName", typeName},
            {"displayName", displayName},
            {"parameters",
             {{"address", listenAddress},
              {"port", port},
              {"unitId", unitId},
              {"byteOrder", byteOrder},
              {"firstRequest", firstRequest},
              {"maxConnections", maxConnections},
              {"maxConnectionsPerAddress", maxConnectionsPerAddress},
              {"idleTimeout", idleTimeout},
              {"readNetworks", readNetworks},
              {"writeNetworks", writeNetworks},
              {"triggerTimeout", triggerTimeout}}},
            {"_embedded", {{"vor:registerAssembly", Json::array({{{"_links", {{"self", link(AssemblyPath)}}}}})}}}};
        return document.dump();
    }
};

PlainService ReadPlainService(Client& client) {
    const std::string text = client.Ask(GetRequest(ServicePath));
    const PlainService service = PlainService::Of(Json::parse(text));
    if (service.Text() != text) {
        throw std::runtime_error("the two documents of the service differ:\n" + text + '\n' + service.Text());
    }
    return service;
}

/// The longest times of a Modbus client that reads the measurements every 5 ms.
class ModbusPoller {
public:
    explicit ModbusPoller(std::uint16_t port)
        : context(modbus_new_tcp("127.0.0.1", port)) {
        if (modbus_connect(context) != 0) {
            Fail("Modbus client");
        }
    }
    ~ModbusPoller() {
        modbus_close(context);
        modbus_free(context);
    }
    ModbusPoller(const ModbusPoller&) = delete;
    ModbusPoller& operator=(const ModbusPoller&) = delete;

    Figures Run(Clock::duration duration) {
        std::vector<float> times;
        const Clock::time_point begin = Clock::now();
        for (Clock::time_point next = begin; next < begin + duration; next += milliseconds(5)) {
            std::this_thread::sleep_until(next);
            const Clock::time_point asked = Clock::now();
            std::uint16_t registers[15];
            if (modbus_read_registers(context, 0, 15, registers) != 15) {
                Fail("Modbus request");
            }
            times.push_back(std::chrono::duration<float>(Clock::now() - asked).count());
        }
        return Bench::FiguresOf(std::move(times), Clock::now() - begin);
    }

private:
    modbus_t* context;
};

void ReadService(Bench::Report& report, std::uint16_t port, std::uint16_t plainPort, int pairs, milliseconds duration) {
    Load load(port, ServicePath);
    Load plainLoad(plainPort, ServicePath);
    load.Run(duration / 2);
    plainLoad.Run(duration / 2);
    const Pairs result = Bench::RunInTurns(
        pairs, [&] { return load.Run(duration); }, [&] { return plainLoad.Run(duration); });
    report.AddRate("reads of a service, 32 connections", result.Compare(&Figures::rate), "1/s", 0.5);
    report.Add("99th percentile of these", result.Compare(&Figures::p99), "ms", 2.0, 1e3);
}

void PollModbus(Bench::Report& report, std::uint16_t modbusPort, std::uint16_t port, std::uint16_t plainPort, int pairs,
                milliseconds duration) {
    ModbusPoller poller(modbusPort);
    const auto poll = [&](std::uint16_t loadedPort) {
        Load load(loadedPort, ServicePath);
        std::thread thread([&] { load.Run(duration + milliseconds(100)); });
        const Figures figures = poller.Run(duration);
        thread.join();
        return figures;
    };
    const Pairs result = Bench::RunInTurns(
        pairs, [&] { return poll(port); }, [&] { return poll(plainPort); });
    report.Add("99th percentile of a Modbus client beside these", result.Compare(&Figures::p99), "ms", 1.5, 1e3);
}

/// The values of a block, as code without the parameter classes would have them.
struct PlainBlock {
    std::string version, type, displayName;
    unsigned registerCount, outputId;
    std::string dataSource;
};

/// The document of an assembly, made by hand.
class PlainAssembly {
public:
    explicit PlainAssembly(const std::string& text)
        : rest(Json::parse(text)) {
        Json& list = rest.at("blocks");
        for (const Json& block : list) {
            blocks.push_back({block.at("version"), block.at("type"), block.at("displayName"), block.at("registerCount"),
                              block.at("outputId"), block.at("dataSource")});
        }
        if (list.front().contains("_schema")) {
            schema = list.front().at("_schema");
        }
        list = Json::array();
        if (Text() != text) {
            throw std::runtime_error("the two documents of the assembly differ");
        }
    }

    std::string Text() const {
        Json document = rest;
        Json& list = document.at("blocks");
        for (const PlainBlock& block : blocks) {
            Json element = {{"version", block.version},         {"type", block.type},
                            {"displayName", block.displayName}, {"registerCount", block.registerCount},
                            {"outputId", block.outputId},       {"dataSource", block.dataSource}};
            if (!schema.is_null()) {
                element["_schema"] = schema;
            }
            list.push_back(std::move(element));
        }
        return document.dump();
    }

private:
    Json rest; ///< without blocks
    std::vector<PlainBlock> blocks;
    Json schema; ///< that all blocks have; null for none
};

void FillAssembly(Client& client) {
    const std::string commands = std::string(AssemblyPath) + "/commands/";
    client.Post(commands + "removeAll", Json::object());
    for (std::size_t i = 0; i < BlockCount; i += BlocksOfRequest) {
        Json blocks = Json::array();
        for (std::size_t number = i; number < i + BlocksOfRequest; ++number) {
            blocks.push_back({{"type", "MeasurementDecision"},
                              {"dataSource", "profile/" + std::to_string(number)},
                              {"displayName", "block"},
                              {"outputId", number}});
        }
        client.Post(commands + "add", {{"blocks", blocks}});
    }
}

/// The longest time that the main loop didn't turn while `work` ran, in seconds, as a client of "/healthz" sees it.
double LongestStall(std::uint16_t port, const std::function<void()>& work) {
    Client probe(port);
    const std::string request = GetRequest("/healthz");
    std::atomic<bool> ending = false;
    double longest = 0;
    std::thread thread([&] {
        while (!ending) {
            longest = std::max(longest, probe.Time(request));
            std::this_thread::sleep_for(milliseconds(1));
        }
    });
    work();
    ending = true;
    thread.join();
    return longest;
}

void ReadAssembly(Bench::Report& report, std::uint16_t port, int pairs) {
    Client client(port);
    FillAssembly(client);
    for (const bool withSchema : {false, true}) {
        const std::string label = withSchema ? "60,000 blocks with schema" : "60,000 blocks";
        const std::string request = GetRequest(std::string(AssemblyPath) + (withSchema ? "?schema=1" : ""));
        const std::string text = client.Ask(request);
        report.Note(label + ", text", static_cast<double>(text.size()) / Megabyte, "MiB");
        const PlainAssembly plain(text);
        report.Add(label + ", read",
                   Bench::Compare(
                       pairs, [&] { return client.Time(request); },
                       [&] {
                           const double begin = Bench::WallSeconds();
                           Bench::Keep(plain.Text().size());
                           return Bench::WallSeconds() - begin;
                       }),
                   "ms", 2.0, 1e3);
        const double stall = LongestStall(port, [&] {
            for (int i = 0; i < 3; ++i) {
                client.Time(request);
            }
        });
        report.Note(label + ", longest stall of the main loop", stall * 1e3, "ms");
    }
    std::vector<double> edits;
    for (int i = 0; i < 5; ++i) {
        const Json arguments = {{"outputId", i}, {"newParams", {{"displayName", "edited"}}}};
        edits.push_back(client.Time(Client::PostRequest(std::string(AssemblyPath) + "/commands/update", arguments)));
    }
    report.Note("60,000 blocks, an edit of one", Bench::Median(edits) * 1e3, "ms");
}

/// Clients of streams, in one thread.
class Listeners {
public:
    explicit Listeners(std::uint16_t port) {
        const std::string request = GetRequest("/events?topic=metrics:modbus", "text/event-stream");
        for (std::size_t i = 0; i < Streams; ++i) {
            sockets.push_back(std::make_unique<LoopbackSocket>(port));
            waiting.push_back({sockets.back()->fd, POLLIN, 0});
            Send(sockets.back()->fd, request);
        }
    }

    /// Reads until `end`, and returns how many streams have received figures.
    std::size_t Read(Clock::time_point end) {
        std::vector<bool> hasFigures(sockets.size());
        while (Clock::now() < end) {
            poll(waiting.data(), waiting.size(), 50);
            for (std::size_t i = 0; i < waiting.size(); ++i) {
                if (waiting[i].revents == 0) {
                    continue;
                }
                char piece[4096];
                const ssize_t count = recv(waiting[i].fd, piece, sizeof piece, 0);
                if (count <= 0) {
                    Fail("stream");
                }
                const std::string_view text(piece, static_cast<std::size_t>(count));
                hasFigures[i] = hasFigures[i] || text.find("event: metrics:modbus") != std::string_view::npos;
            }
        }
        return static_cast<std::size_t>(std::ranges::count(hasFigures, true));
    }

private:
    std::vector<std::unique_ptr<LoopbackSocket>> sockets;
    std::vector<pollfd> waiting;
};

double ThreadCpuSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The processor time of the server for all streams, in seconds a second.
double StreamCost(std::uint16_t port, std::chrono::seconds duration) {
    Listeners listeners(port);
    listeners.Read(Clock::now() + std::chrono::seconds(2)); // until each has what it gets at its begin
    const double wall = Bench::WallSeconds();
    const double process = Bench::ProcessCpuSeconds();
    const double own = ThreadCpuSeconds();
    if (listeners.Read(Clock::now() + duration) != Streams) {
        throw std::runtime_error("streams got no figures");
    }
    return (Bench::ProcessCpuSeconds() - process - (ThreadCpuSeconds() - own)) / (Bench::WallSeconds() - wall);
}

/// In this process, where there may be more streams than those of the sensor.
void ListenToFigures(Bench::Report& report, std::chrono::seconds duration) {
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    if (files.rlim_max < 3 * Streams) {
        report.Skip("1,000 streams of figures", "too few files may be open");
        return;
    }
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);

    const Bench::TempFolder folder;
    Vor::MainLoop loop;
    const Sensor::Scan::Recording recording = Sensor::Scan::GeneratePart();
    Sensor::VirtualSensor sensor(recording, {});
    Sensor::ServiceHost host({.dataFolder = folder.Path(), .job = "bench"}, sensor);
    host.LoadPlugins(OwnFolder() / "plugins");
    host.CreateServices();
    const Sensor::Resources::Revisions revisions("bench", host.Services());
    Sensor::Http::EventStreams streams({.boot = revisions.Boot(),
                                        .router = host.Router(),
                                        .requests = host.Requests(),
                                        .revisions = revisions,
                                        .services = host.Services().List(),
                                        .limits = {.streams = Streams}});
    Sensor::Http::ResourceGateway gateway({}, host.Router(), host.Requests(), revisions, streams);
    Net::NetThread thread("HttpNet");
    const Sensor::Http::HttpServer server(thread, {.port = 0, .maxConnections = Streams, .session = {}}, gateway);
    double cost = 0;
    std::thread listener([&] {
        cost = StreamCost(server.Port(), duration);
        loop.Stop();
    });
    loop.Run();
    listener.join();
    report.Note("1,000 streams of figures, processor time a second", cost * 1e3, "ms");
}

} // namespace

int main(int argc, char** argv) {
    Vor::LogOutput::Set([](const Vor::LogRecord&) {});
    Bench::Report report("http", argc, argv);
    const bool quick = report.Has("--quick");
    const int pairs = quick ? 3 : 9;
    if (std::thread::hardware_concurrency() < 2) {
        report.Skip("requests over HTTP", "needs two cores");
        return report.Finish();
    }

    const Bench::TempFolder folder;
    {
        Server sensor([&] { RunSensor(folder.Path()); });
        const std::uint16_t modbusPort = sensor.ReadPort("Service modbus (Modbus TCP): Running at tcp://127.0.0.1:");
        const std::uint16_t port = sensor.ReadPort("HTTP: http://127.0.0.1:");
        Client client(port);
        const PlainService service = ReadPlainService(client);
        Server plain([&] { RunPlainServer([&] { return service.Text(); }); });
        const std::uint16_t plainPort = plain.ReadPort("");
        PinTo(Bench::ClientCore);
        ReadService(report, port, plainPort, pairs, milliseconds(quick ? 500 : 1500));
        PollModbus(report, modbusPort, port, plainPort, pairs, milliseconds(quick ? 1000 : 2500));
        ReadAssembly(report, port, pairs);
    }
    ListenToFigures(report, std::chrono::seconds(quick ? 2 : 5));
    return report.Finish();
}
