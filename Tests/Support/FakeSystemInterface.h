#pragma once

#include "Tests/Support/CallLog.h"
#include "Vor/Exception.h"
#include "VorApi/Event.h"
#include "VorApi/Object.h"
#include "VorControl/Control/IControlSystemInterface.h"
#include "yApi/yStatus.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace Tests {

/// Records its calls on any thread, and returns the values that a test sets.
class FakeSystemInterface : public VorControl::IControlSystemInterface, public CallLog {
public:
    void Start() override { Note("Start"); }
    void Stop() override { Note("Stop"); }
    void FactoryRestore() override { Note("FactoryRestore"); }
    void Restart() override { Note("Restart"); }
    void LoadJob(const std::string& name) override { Note("LoadJob " + name); }
    void Stats(SystemStats& out) override {
        Note("Stats");
        out = stats;
    }
    void SetNextIpConfig(const yIpConfig& config, bool flag) override {
        ipConfig = config;
        Note(std::string("SetNextIpConfig ") + Text(flag));
    }
    void BlinkLed() override { Note("BlinkLed"); }
    void AddDataSourceEventHandler(const DataSourceEventHandlerContainer& handlers,
                                   DataSourceEventCallbackIdContainer& ids) override {
        Note("AddDataSourceEventHandler");
        ids.created = created.Add(handlers.created);
        ids.deleted = deleted.Add(handlers.deleted);
        ids.updated = updated.Add(handlers.updated);
    }
    void RemoveDataSourceEventHandler(DataSourceEventCallbackIdContainer& ids) override {
        Note("RemoveDataSourceEventHandler");
        created.Remove(ids.created);
        deleted.Remove(ids.deleted);
        updated.Remove(ids.updated);
    }
    void DataSourceProperties(const std::string& name, ControlDataSourceProperties& out) override {
        Note("DataSourceProperties " + name);
        const auto found = dataSources.find(name);
        if (found == dataSources.end()) {
            Vor::Throw(yERROR_NOT_FOUND, "no data source %s", name);
        }
        out = found->second;
    }
    void* LiveJob() override {
        Note("LiveJob");
        return yObject_Share(liveJob.Get());
    }
    long long LocalNodeDateTime() override {
        Note("LocalNodeDateTime");
        return dateTime;
    }
    void SetLocalNodeDateTime(long long value) override { Note("SetLocalNodeDateTime " + std::to_string(value)); }
    std::string LocalNodeNtpHost() override {
        Note("LocalNodeNtpHost");
        return ntpHost;
    }
    void SetLocalNodeNtpHost(const std::string& host, bool flag) override {
        Note("SetLocalNodeNtpHost " + host + " " + Text(flag));
    }
    bool LocalNodeSyncTime(const std::string& host) override {
        Note("LocalNodeSyncTime " + host);
        return syncTime;
    }

    /// Returned by the calls.
    SystemStats stats;
    std::map<std::string, ControlDataSourceProperties> dataSources;
    Vor::Object liveJob;
    long long dateTime = 0;
    std::string ntpHost;
    bool syncTime = false;
    yIpConfig ipConfig; ///< the latest that was set
    Vor::Event<std::string> created;
    Vor::Event<std::string> deleted;
    Vor::Event<std::string> updated;
};

} // namespace Tests
