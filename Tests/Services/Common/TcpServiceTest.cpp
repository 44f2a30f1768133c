#include "Services/Common/TcpService.h"

#include "Net/BufferedSession.h"
#include "Tests/Services/Common/ServiceModule.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/Results.h"
#include "Tests/Support/ServiceProperties.h"
#include "Tests/Support/TcpClient.h"
#include "Tests/Support/Threads.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/Handle.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "yApi/yArrayList.h"
#include "yApi/yTime.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Services::Common {
namespace {

using nlohmann::json;
using VorControl::ControlProtocol::ControlProtocolEnviron;
using VorControl::ControlProtocol::ProtocolStatus;
using Calls = std::vector<std::string>;

/// Answers each byte with another one.
class CipherSession : public Net::BufferedSession {
public:
    CipherSession(ServiceCounters& counters, const unsigned char& shift)
        : BufferedSession(16, 16)
        , counters(counters)
        , shift(shift) {}

    void SetMayWrite(bool) override {}
    std::size_t Process() override {
        const std::size_t count = std::min(Input().size(), OutputSpace().size());
        for (const unsigned char byte : Input().first(count)) {
            const auto answer = static_cast<unsigned char>(byte + shift);
            Append({&answer, 1});
        }
        Consume(count);
        counters.requests += count;
        return count;
    }
    bool Broken() const override { return false; }

private:
    ServiceCounters& counters;
    const unsigned char& shift;
};

class CipherParams : public TcpServerParams {
public:
    CipherParams() {
        RegisterPlace();
        Register("shift", shift);
        RegisterLimits("idle", "write");
        shift.EnableMaximum(true);
        shift.SetMaximum(100);
        CipherParams::Reset();
    }

    void Reset() override {
        ResetPlace(0);
        shift = 1;
        ResetLimits(60);
    }

    Vor::Params::Value<unsigned> shift;
};

class CipherService : public TcpService {
public:
    explicit CipherService(const ControlProtocolEnviron& environ)
        : TcpService(environ) {
        auto assembly = std::make_shared<VorControl::ControlProtocol::ProtocolRegisterAssemblyBase>(
            true, 0, 255, "registerAssembly-0", "Registers");
        Init({.assemblies = {assembly}},
             {.threadName = "CipherNet", .params = params, .properties = properties, .poll = [this] { ++polls; }});
    }
    ~CipherService() override { CloseServer(); }

    const std::shared_ptr<CipherParams> params = std::make_shared<CipherParams>();
    Calls calls;
    std::thread::id updater; ///< of the last UpdateSessions
    std::atomic<unsigned> polls = 0;
    unsigned failing = 0;

protected:
    std::unique_ptr<Net::ITcpSession> MakeSession(bool) override {
        return std::make_unique<CipherSession>(Counters(), shift);
    }
    void UpdateSessions() override {
        shift = static_cast<unsigned char>(params->shift.Get());
        updater = std::this_thread::get_id();
        calls.emplace_back("UpdateSessions");
    }
    void ParamsApplied() override { calls.emplace_back("ParamsApplied"); }
    void MapChanged() override { calls.emplace_back("MapChanged"); }
    void Stopped() override { calls.emplace_back("Stopped"); }
    /// Drops each third set, and fails with the one of the number `failing`.
    bool ApplyResultSet(ResultSet) override {
        ++sets;
        if (sets == failing) {
            Vor::Throw(yERROR_STATE, "no room");
        }
        return sets % 3 != 0;
    }
    void ResultSetsApplied(void* resultSets) override {
        calls.push_back("ResultSetsApplied " + std::to_string(yArrayList_Count(static_cast<yArrayList>(resultSets))));
    }

private:
    TcpServerProperties properties{"wrong", "Wrong", "lost"};
    unsigned char shift = 0;
    unsigned sets = 0;
};

class Client : public Tests::TcpClient {
public:
    using TcpClient::TcpClient;

    /// The reply to a byte, or -1 at the end of the connection.
    int Ask(unsigned char byte) {
        SendSomeOf(&byte, 1);
        return WaitForBytes() && recv(fd, &byte, 1, 0) == 1 ? byte : -1;
    }
    bool WaitForClose() {
        char byte = 0;
        return WaitForBytes() && recv(fd, &byte, 1, 0) <= 0;
    }
};

class TcpServiceTest : public testing::Test {
protected:
    static json Section(const json& params, bool enabled = true) {
        return {{"enabled", enabled}, {"parametersVersion", "1"}, {"parameters", params}};
    }

    CipherService& Own() { return module.Own(); }
    std::uint16_t Port() { return Tests::PortOf(module.Properties()["address"]); }
    ProtocolStatus Status() { return module.Instance().GetProtocolStatus(); }
    Calls NewCalls() { return std::exchange(Own().calls, {}); }

    /// Hands over sets that were published at a time, a yTime_Monotonic; 0 for sets that weren't published.
    void ProcessSets(int count, std::uint64_t published = 0) {
        Vor::Handle<yArrayList, yArrayList_Destroy> sets;
        Vor::ThrowIfFailed(yArrayList_Construct(sets.Out(), yType_ResultSet, 4, nullptr));
        for (int i = 0; i < count; ++i) {
            Vor::ThrowIfFailed(
                yArrayList_Add(sets.Get(), yObject_Share(Tests::Results(published).Measurement("source", i).Get())));
        }
        Own().ProcessResultSets(sets.Get());
    }

    ServiceModule<CipherService> module;
};

/// A port of 127.0.0.1 that another server has.
class TakenPort {
public:
    std::uint16_t Port() const { return server.Port(); }
    std::string Failure() const { return "port " + std::to_string(Port()) + " on 127.0.0.1 is in use"; }

private:
    Net::NetThread thread{"Taken"};
    Net::TcpCounters counters;
    Net::TcpServer server{thread, counters, {}, [](bool) { return nullptr; }};
};

TEST_F(TcpServiceTest, ServesWhileItIsStarted) {
    EXPECT_EQ(module.Properties(), json({{"status", 1},
                                         {"address", ""},
                                         {"failure", ""},
                                         {"lost", 0},
                                         {"connected", 0},
                                         {"refused", 0},
                                         {"requests", 0},
                                         {"wrong", 0},
                                         {"bytesIn", 0},
                                         {"bytesOut", 0},
                                         {"resultsReceived", 0},
                                         {"resultsApplied", 0},
                                         {"resultsDropped", 0},
                                         {"latencyResults", 0},
                                         {"latencyP50", 0},
                                         {"latencyP99", 0},
                                         {"latencyMax", 0}}));
    module.Load(Section({{"port", 0}, {"shift", 2}}));
    EXPECT_EQ(Status(), ProtocolStatus::Running);
    EXPECT_EQ(module.Properties()["address"], "tcp://127.0.0.1:" + std::to_string(Port()));
    Client client(Port());
    EXPECT_EQ(client.Ask(40), 42);
    EXPECT_EQ(module.Properties()["requests"], 1);
    EXPECT_EQ(module.Properties()["connected"], 1);
    module.Instance().Enable(false);
    EXPECT_EQ(Status(), ProtocolStatus::Stopped);
    EXPECT_EQ(module.Properties()["address"], "");
    EXPECT_TRUE(client.WaitForClose());
    module.Instance().Enable(true);
    EXPECT_EQ(module.Properties()["requests"], 0) << "counters begin anew";
    EXPECT_EQ(Client(Port()).Ask(40), 42);
}

TEST_F(TcpServiceTest, HasEachFigureAmongItsPropertiesAndItsMetrics) {
    module.Load(Section({{"port", 0}, {"maxConnections", 2}}));
    Client client(Port());
    Client other(Port());
    Client refused(Port());
    EXPECT_TRUE(refused.WaitForClose());
    for (unsigned char byte = 0; byte < 5; ++byte) {
        EXPECT_EQ(client.Ask(byte), byte + 1);
    }
    NewCalls();
    ProcessSets(4);
    EXPECT_EQ(NewCalls(), Calls{"ResultSetsApplied 4"});

    const json expected = {{"dropCount", 1},      {"connected", 2},     {"refused", 1},  {"requests", 5},
                           {"wrong", 0},          {"bytesIn", 5},       {"bytesOut", 5}, {"resultsReceived", 4},
                           {"resultsApplied", 3}, {"resultsDropped", 1}};
    EXPECT_TRUE(Tests::WaitUntil([&] { return Tests::CountsOf(Own()) == expected; })) << Tests::CountsOf(Own());
    const json properties = module.Properties();
    for (const auto& [name, value] : expected.items()) {
        EXPECT_EQ(properties.at(name == "dropCount" ? "lost" : name), value) << name;
    }
    module.Instance().Enable(false);
    EXPECT_EQ(module.Properties()["bytesIn"], 5) << "they stay until the next start";
    module.Instance().Enable(true);
    EXPECT_EQ(module.Properties()["bytesIn"], 0);
    EXPECT_EQ(Tests::MetricsOf(Own())["dropCount"], 0);
}

TEST_F(TcpServiceTest, CountsTheSetsThatAFailureLeavesOutAsDropped) {
    module.Load(Section({{"port", 0}}));
    Own().failing = 5;
    EXPECT_EQ(Tests::StatusOf([&] { ProcessSets(8); }), yERROR_STATE);
    const json metrics = Tests::MetricsOf(Own());
    EXPECT_EQ(metrics["resultsReceived"], 8);
    EXPECT_EQ(metrics["resultsApplied"], 3);
    EXPECT_EQ(metrics["resultsDropped"], 5);
}

TEST_F(TcpServiceTest, MeasuresTheLatencyOfWhatItHasApplied) {
    module.Load(Section({{"port", 0}}));
    ProcessSets(1, 0);
    EXPECT_EQ(Tests::MetricsOf(Own())["latencyResults"], 0) << "it wasn't published";
    constexpr std::uint64_t Second = 1'000'000'000;
    ProcessSets(2, yTime_Monotonic() - 15 * Second);
    const json metrics = Tests::MetricsOf(Own());
    EXPECT_EQ(metrics["latencyResults"], 1) << "the other one was dropped";
    EXPECT_GE(metrics["latencyMax"], 15'000'000);
    EXPECT_EQ(metrics["latencyP50"], metrics["latencyMax"]);
    EXPECT_EQ(metrics["latencyP99"], metrics["latencyMax"]);
    EXPECT_EQ(metrics["latency"]["10000000"], 0);
    EXPECT_EQ(metrics["latency"]["more"], 1);
    EXPECT_EQ(metrics["latency"]["sum"], metrics["latencyMax"]);
    EXPECT_EQ(module.Properties()["latencyMax"], metrics["latencyMax"]);
    module.Instance().Enable(false);
    module.Instance().Enable(true);
    EXPECT_EQ(Tests::MetricsOf(Own())["latency"]["more"], 0);
    EXPECT_EQ(module.Properties()["latencyResults"], 0);
}

TEST_F(TcpServiceTest, GivesItsPartsTheParametersBeforeItListens) {
    Own().Start();
    EXPECT_EQ(NewCalls(), (Calls{"UpdateSessions", "ParamsApplied", "MapChanged"}));
    EXPECT_EQ(Own().updater, std::this_thread::get_id());
    Own().Start();
    EXPECT_EQ(NewCalls(), (Calls{"Stopped", "UpdateSessions", "ParamsApplied", "MapChanged"}));
    Own().Stop();
    EXPECT_EQ(NewCalls(), (Calls{"Stopped"}));
    Own().Stop();
    EXPECT_EQ(NewCalls(), Calls()) << "it is stopped";
}

TEST_F(TcpServiceTest, GivesChangedParametersToTheSessionsOnTheNetworkThread) {
    module.Load(Section({{"port", 0}}));
    Client client(Port());
    EXPECT_EQ(client.Ask(40), 41);
    NewCalls();
    module.Change({{"shift", 5}});
    EXPECT_EQ(NewCalls(), (Calls{"UpdateSessions", "ParamsApplied"}));
    EXPECT_NE(Own().updater, std::this_thread::get_id());
    EXPECT_EQ(client.Ask(40), 45) << "the client stays connected";
}

TEST_F(TcpServiceTest, ReportsWhyItCannotStart) {
    auto taken = std::make_unique<TakenPort>();
    const std::string failure = taken->Failure();
    const json section = Section({{"port", taken->Port()}});
    const Vor::LogCapture log;
    module.Load(section);
    EXPECT_EQ(Status(), ProtocolStatus::FailedToStart);
    EXPECT_EQ(module.Properties()["failure"], failure);
    EXPECT_EQ(log.Count(Vor::UserError, UnusableParams("test service", failure)), 0u) << "they may be right";
    EXPECT_EQ(module.Properties()["address"], "");
    taken.reset();
    module.Load(section);
    EXPECT_EQ(Status(), ProtocolStatus::Running);
    EXPECT_EQ(module.Properties()["failure"], "");
}

TEST_F(TcpServiceTest, NoLongerReportsWhyItCouldNotStartOnceItIsStopped) {
    const TakenPort taken;
    module.Load(Section({{"port", taken.Port()}}));
    EXPECT_EQ(module.Properties()["failure"], taken.Failure());
    module.Own().Stop();
    EXPECT_EQ(Status(), ProtocolStatus::Stopped);
    EXPECT_EQ(module.Properties()["failure"], "");
}

TEST_F(TcpServiceTest, StaysWhereItIsAndReportsWhyItCannotMove) {
    module.Load(Section({{"port", 0}}));
    const std::uint16_t former = Port();
    Client client(former);
    EXPECT_EQ(client.Ask(1), 2) << "the server has accepted it";
    TakenPort taken;
    EXPECT_THROW(module.Change({{"port", taken.Port()}}), Vor::Exception);
    EXPECT_EQ(Status(), ProtocolStatus::Running);
    EXPECT_EQ(Port(), former);
    EXPECT_EQ(module.Properties()["failure"], taken.Failure());
    EXPECT_EQ(client.Ask(1), 2);
    module.Change({{"port", former}});
    EXPECT_EQ(module.Properties()["failure"], "");
    module.Change({{"port", 0}, {"address", "127.0.0.2"}});
    EXPECT_EQ(module.Properties()["address"], "tcp://127.0.0.2:" + std::to_string(Port()));
    EXPECT_TRUE(client.WaitForClose());
}

TEST_F(TcpServiceTest, ReportsTheParametersOfAJobThatItCannotUse) {
    module.Load(Section({{"port", 0}}));
    const std::uint16_t former = Port();
    const TakenPort taken;
    const std::vector<json> unusable = {
        {{"port", taken.Port()}}, {{"port", 0}, {"shift", 101}}, {{"port", 0}, {"readNetworks", {"nowhere"}}}};
    for (const json& params : unusable) {
        NewCalls();
        const Vor::LogCapture log;
        module.Load(Section(params));
        EXPECT_EQ(Status(), ProtocolStatus::Running) << params;
        EXPECT_EQ(Port(), former);
        EXPECT_EQ(NewCalls(), Calls()) << "nothing of them is used";
        const std::string failure = module.Properties()["failure"];
        EXPECT_NE(failure, "") << params;
        EXPECT_EQ(log.Count(Vor::UserError, UnusableParams("test service", failure)), 1u);
        EXPECT_EQ(Client(former).Ask(1), 2);
    }
    module.Load(Section({{"port", former}}));
    EXPECT_EQ(module.Properties()["failure"], "");
}

TEST_F(TcpServiceTest, ReadsParametersAtItsStartWhenItDoesNotRun) {
    const Vor::LogCapture log;
    module.Load(Section({{"port", 0}, {"shift", 101}}, false));
    EXPECT_EQ(module.Properties()["failure"], "");
    EXPECT_EQ(log.CountLevel(Vor::UserError), 0u);
    const std::vector<json> unusable = {{{"port", 0}, {"shift", 101}}, {{"port", 0}, {"address", "somewhere"}}};
    for (const json& params : unusable) {
        module.Load(Section(params));
        EXPECT_EQ(Status(), ProtocolStatus::FailedToStart);
        const std::string failure = module.Properties()["failure"];
        EXPECT_NE(failure, "");
        EXPECT_EQ(log.Count(Vor::UserError, UnusableParams("test service", failure)), 1u);
    }
}

TEST_F(TcpServiceTest, ResetsItsParametersWithTheJob) {
    module.Load(Section({{"port", 0}, {"shift", 9}}));
    module.Reset();
    EXPECT_EQ(Own().params->shift.Get(), 1u);
}

TEST_F(TcpServiceTest, PollsWhileItIsStarted) {
    EXPECT_EQ(Own().polls, 0u);
    Own().Start();
    EXPECT_TRUE(Tests::WaitUntil([&] { return Own().polls > 1; }));
    Own().Stop();
    const unsigned last = Own().polls;
    std::this_thread::yield();
    EXPECT_EQ(Own().polls, last);
}

} // namespace
} // namespace Services::Common
