#include "Services/Common/TcpService.h"

#include "Vor/Exception.h"
#include "VorApi/AtScopeEnd.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorMsg/ResultItem.h"
#include "yApi/yArrayList.h"
#include "yApi/yMsgInfo.h"
#include "yApi/yStatus.h"
#include "yApi/yTime.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace Services::Common {

using namespace VorControl::ControlProtocol;

TcpService::TcpService(const ControlProtocolEnviron& environ)
    : JobProtocol(environ) {}

TcpService::~TcpService() = default;

void TcpService::Init(JobContents contents, const Parts& parts) {
    threadName = parts.threadName;
    params = parts.params;
    properties = &parts.properties;
    wakeup = parts.wakeup;
    poll = parts.poll;
    contents.params = params;
    JobProtocol::Init(contents, properties, &properties->Metrics());
}

void TcpService::Start() {
    UpdateProtocolStatus(ProtocolStatus::Starting);
    try {
        Close();
        Open();
    } catch (const std::exception& e) {
        CloseServer();
        SetProperties("", e.what());
        if (Vor::Exception::StatusOf(e) == yERROR_PARAMETER) {
            ReportUnusableParams(e);
        }
        UpdateStatusAndRethrow(e, ProtocolStatus::FailedToStart);
    }
    UpdateProtocolStatus(ProtocolStatus::Running);
}

void TcpService::Stop() {
    UpdateProtocolStatus(ProtocolStatus::Stopping);
    try {
        Close();
        SetProperties("", "");
    } catch (const std::exception& e) {
        UpdateStatusAndRethrow(e, ProtocolStatus::FailedToStop);
    }
    UpdateProtocolStatus(ProtocolStatus::Stopped);
}

void TcpService::Open() {
    const Net::TcpServerSettings settings = params->Settings();
    UpdateSessions();
    ParamsApplied();
    MapChanged();
    counters.Reset();
    thread = std::make_unique<Net::NetThread>(threadName);
    server = std::make_unique<Net::TcpServer>(
        *thread, counters, settings, [this](bool mayWrite) { return MakeSession(mayWrite); }, wakeup);
    if (poll) {
        thread->Repeat(PollPeriod, poll);
    }
    GetControlHost().UpdateScanResultsOutputMap(Id(), DataSourceList());
    GetControlHost().SetScanResultsFiltering(Id(), true);
    SetForwardScanResultsToProtocol(true);
    SetProperties(server->Url(), "");
    SetIsRunning(true);
}

void TcpService::Close() {
    if (!IsRunning()) {
        return;
    }
    SetIsRunning(false);
    CloseServer();
    Stopped();
    SetForwardScanResultsToProtocol(false);
}

void TcpService::CloseServer() {
    server.reset();
    thread.reset();
}

void TcpService::SetProperties(const std::string& address, const std::string& failure) {
    const PropertiesLock lock(*this);
    properties->address = address;
    properties->failure = failure;
}

void TcpService::ParamsReset() {
    params->Reset();
}

void TcpService::ApplyParams() {
    if (!IsRunning()) {
        return;
    }
    try {
        server->Update(params->Settings(), [this] { UpdateSessions(); });
    } catch (const std::exception& e) {
        if (server->IsListening()) {
            SetProperties(server->Url(), e.what());
            throw;
        }
        Close();
        SetProperties("", e.what());
        UpdateStatusAndRethrow(e, ProtocolStatus::FailedToStart);
    }
    SetProperties(server->Url(), "");
    ParamsApplied();
}

void TcpService::ProcessResultSets(void* resultSets) {
    const auto sets = static_cast<yArrayList>(resultSets);
    const std::size_t count = yArrayList_Count(sets);
    std::size_t done = 0;
    const Vor::AtScopeEnd dropRest([&] { counters.resultsDropped.fetch_add(count - done, std::memory_order_relaxed); });
    for (; done < count; ++done) {
        const ResultSet set = yArrayList_At(sets, done);
        const bool isApplied = ApplyResultSet(set);
        const std::uint64_t published = yMsgInfo_Published(ResultItem_MsgInfo(ResultSet_At(set, 0)));
        if (isApplied && published != 0) {
            counters.latency.Add(published, yTime_Monotonic());
        }
        (isApplied ? counters.resultsApplied : counters.resultsDropped).fetch_add(1, std::memory_order_relaxed);
    }
    ResultSetsApplied(resultSets);
}

void TcpService::NonPersistentPropertiesBeginLock() {
    JobProtocol::NonPersistentPropertiesBeginLock();
    properties->RefreshProperties(counters.Figures());
}

void TcpService::UpdateMetrics() {
    properties->RefreshMetrics(counters.Figures());
}

} // namespace Services::Common
