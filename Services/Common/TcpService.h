#pragma once

#include "Net/NetThread.h"
#include "Net/TcpServer.h"
#include "Services/Common/JobProtocol.h"
#include "Services/Common/ServiceCounters.h"
#include "Services/Common/TcpServerParams.h"
#include "Services/Common/TcpServerProperties.h"
#include "VorMsg/ResultSet.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace Services::Common {

/// The base class of a service that serves TCP clients with results of the scan: it starts and stops the server,
/// follows changed parameters, and keeps properties and metrics. The destructor of the derived class calls CloseServer
/// first, since sessions and hooks are its own.
class TcpService : public JobProtocol {
public:
    static constexpr std::chrono::milliseconds PollPeriod{100};

    void Start() final;
    void Stop() final;

    void ParamsReset() final;
    using JobProtocol::ParamsReset;

    /// Counts the result sets and their latency, and passes them on to ApplyResultSet and ResultSetsApplied.
    void ProcessResultSets(void* resultSets) final;

    /// Updates the figures among the properties.
    void NonPersistentPropertiesBeginLock() override;
    void UpdateMetrics() override;

protected:
    /// What the server needs. The service owns properties and wakeup.
    struct Parts {
        const char* threadName; ///< of the network thread, at most 15 characters
        std::shared_ptr<TcpServerParams> params;
        TcpServerProperties& properties;
        Net::Wakeup* wakeup = nullptr;
        /// Called on the network thread at once and then after each PollPeriod, unless it is empty. It must not wait
        /// for anything.
        std::function<void()> poll = {};
    };

    explicit TcpService(const VorControl::ControlProtocol::ControlProtocolEnviron& environ);
    ~TcpService() override;

    /// Call it once, in the constructor of the service. `contents` needs no parameters.
    void Init(JobContents contents, const Parts& parts);
    /// Closes all connections and ends the network thread.
    void CloseServer();

    /// For the network thread and the sessions.
    ServiceCounters& Counters() { return counters; }

    /// Called on the network thread for each client that connects.
    virtual std::unique_ptr<Net::ITcpSession> MakeSession(bool mayWrite) = 0;
    /// Gives the parameters to the sessions that there are and to those to come. Called before the network thread runs,
    /// then on that thread while the thread that changes the parameters waits for it. It may read the parameters, and
    /// must not enter a lock under which anybody waits for the network thread.
    virtual void UpdateSessions() {}
    /// Gives the parameters to the rest of the service: before it listens, when MapChanged is called next, and when the
    /// server of a running service has accepted new ones. The map is the same then.
    virtual void ParamsApplied() {}
    /// Forgets the values of the scan. The service listens no more.
    virtual void Stopped() {}
    /// Brings the results of a frame to the clients, which can read them when it returns; called on the thread of the
    /// results. Returns false when they can't be, which is counted as dropped.
    virtual bool ApplyResultSet(ResultSet /*set*/) { return true; }
    /// Called with the list of ProcessResultSets when each of its sets was applied or dropped.
    virtual void ResultSetsApplied(void* /*resultSets*/) {}

    /// If the service can't listen at a new address or port, it continues at the former one. In all cases the property
    /// `failure` has the reason.
    void ApplyParams() final;

private:
    void Open();
    void Close();
    void SetProperties(const std::string& address, const std::string& failure);

    const char* threadName = nullptr;
    std::shared_ptr<TcpServerParams> params;
    TcpServerProperties* properties = nullptr;
    Net::Wakeup* wakeup = nullptr;
    std::function<void()> poll;
    ServiceCounters counters;
    std::unique_ptr<Net::NetThread> thread; ///< while the service is started, as the server
    std::unique_ptr<Net::TcpServer> server;
};

} // namespace Services::Common
