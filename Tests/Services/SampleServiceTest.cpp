#include "Tests/Support/BuiltFile.h"
#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/MemoryStore.h"
#include "Tests/Support/Results.h"
#include "Vor/ByteVector.h"
#include "Vor/Logging.h"
#include "VorApi/Params/PropertyValue.h"
#include "VorControl/Control/ControlModule.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/InstanceLocks.h"
#include "VorPlugin/PluginManager.h"

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>

#include <gtest/gtest.h>

using VorCommon::PersistDomain;
using VorControl::ControlProtocol::ProtocolStatus;
using Bytes = std::vector<unsigned char>;

namespace {

/// The sample service in a module, loaded from its library as a sensor does.
class SampleServiceTest : public testing::Test {
protected:
    SampleServiceTest() {
        plugins.Load(Tests::BuiltPlugin("sample.so"));
        module = std::make_unique<VorControl::ControlModule>(plugins, environ.router, environ.Record());
    }

    VorControl::IControlInstance& Sample() { return module->Manager().GetInstance("sample"); }

    /// Loads a job in which the service is enabled, with a block for "profile/max" at 0 and one for "profile/min" at 4.
    void LoadJob(const std::string& parameters = "{}") {
        store.files["/controls/sample/config.json"] =
            R"({"version":"1","vor:control":{"enabled":true,"parametersVersion":"1","parameters":)" + parameters +
            R"(,"registerAssemblyList":[{"properties":{"id":"registerAssembly-0"},"blocks":[)"
            R"({"type":"MeasurementValue","dataSource":"profile/max","displayName":"Max","outputId":0,"registerCount":4},)"
            R"({"type":"MeasurementValue","dataSource":"profile/min","displayName":"Min","outputId":4,"registerCount":4})"
            R"(]}]}})";
        module->Manager().LoadPersistDomain(PersistDomain::Job, store);
        WatchResults();
    }

    /// Publishes a result set with one measurement, and waits until the service has processed it.
    void Publish(const std::string& source, double value) {
        const int before = Processed();
        environ.hub.Publish(Tests::Results().Measurement(source, value).Get());
        std::unique_lock lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, std::chrono::seconds(10), [&] { return processed > before; }));
    }

    template <class T>
    T Property(const char* name) {
        const VorControl::InstancePropertiesLock lock(Sample());
        return dynamic_cast<Vor::Properties::Value<T>&>(Sample().Properties().At(name)).Get();
    }

    Bytes Registers() { return Property<Vor::Properties::ByteVector>("registers").Bytes(); }

    std::mutex mutex; ///< guards `processed`
    std::condition_variable changed;
    int processed = 0;
    VorPlugin::PluginManager plugins;
    Tests::ControlEnviron environ;
    Tests::MemoryStore store;
    std::unique_ptr<VorControl::ControlModule> module;

private:
    /// The handler runs under the properties lock, before the count is stored.
    void WatchResults() {
        const VorControl::InstancePropertiesLock lock(Sample());
        Sample().Properties().At("resultCount").AddChangeHandler([this](Vor::Properties::Node&) {
            const std::lock_guard lock(mutex);
            ++processed;
            changed.notify_all();
        });
    }

    int Processed() {
        const std::lock_guard lock(mutex);
        return processed;
    }
};

TEST_F(SampleServiceTest, IsOfferedButNotStarted) {
    EXPECT_EQ(module->Manager().List(), std::vector<std::string>{"sample"});
    EXPECT_FALSE(Sample().IsEnabled());
    EXPECT_EQ(Sample().GetProtocolStatus(), ProtocolStatus::Stopped);
}

TEST_F(SampleServiceTest, KeepsTheLastValueOfEachMeasurementOfItsMap) {
    LoadJob();
    EXPECT_EQ(Sample().GetProtocolStatus(), ProtocolStatus::Running);
    EXPECT_EQ(Registers(), (Bytes{0x80, 0, 0, 0, 0x80, 0, 0, 0}));
    Publish("profile/max", 12.345);
    EXPECT_EQ(Registers(), (Bytes{0, 0, 0x30, 0x39, 0x80, 0, 0, 0}));
    Publish("profile/min", -0.001);
    EXPECT_EQ(Registers(), (Bytes{0, 0, 0x30, 0x39, 0xFF, 0xFF, 0xFF, 0xFF}));
    Publish("profile/max", 1.0);
    EXPECT_EQ(Registers(), (Bytes{0, 0, 0x03, 0xE8, 0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(Property<unsigned long long>("resultCount"), 3U);
}

TEST_F(SampleServiceTest, TakesItsParametersFromTheJob) {
    LoadJob(R"({"isBigEndian":false})");
    Publish("profile/max", 12.345);
    EXPECT_EQ(Registers(), (Bytes{0x39, 0x30, 0, 0, 0, 0, 0, 0x80}));
}

TEST_F(SampleServiceTest, ChangedParametersTakeEffectWhileItRuns) {
    LoadJob();
    const auto params = Sample().BeginUpdateParameters();
    dynamic_cast<Vor::Properties::Value<bool>&>(params->At("isBigEndian")) = false;
    Sample().ParamsUpdate();
    Sample().EndUpdateParameters();
    Publish("profile/max", 12.345);
    EXPECT_EQ(Registers(), (Bytes{0x39, 0x30, 0, 0, 0, 0, 0, 0x80}));
}

TEST_F(SampleServiceTest, ForgetsItsValuesWhenStoppedUnlessToldOtherwise) {
    LoadJob();
    Publish("profile/max", 12.345);
    Sample().Enable(false);
    EXPECT_EQ(Sample().GetProtocolStatus(), ProtocolStatus::Stopped);
    EXPECT_EQ(Registers(), (Bytes{0x80, 0, 0, 0, 0x80, 0, 0, 0}));
}

TEST_F(SampleServiceTest, KeepsItsValuesWhenStoppedIfTold) {
    LoadJob(R"({"keepAtStop":true})");
    Publish("profile/max", 12.345);
    Sample().Enable(false);
    EXPECT_EQ(Registers(), (Bytes{0, 0, 0x30, 0x39, 0x80, 0, 0, 0}));
}

TEST_F(SampleServiceTest, IsStoppedWithoutAnErrorWhenItDoesNotRun) {
    const Vor::LogCapture log;
    Sample().Enable(false);
    EXPECT_EQ(Sample().GetProtocolStatus(), ProtocolStatus::Stopped);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(SampleServiceTest, FindsItsConfigurationAgain) {
    LoadJob(R"({"isBigEndian":false})");
    Tests::MemoryStore saved;
    module->Manager().SavePersistDomain(PersistDomain::Job, saved);
    module.reset();
    module = std::make_unique<VorControl::ControlModule>(plugins, environ.router, environ.Record());
    module->Manager().LoadPersistDomain(PersistDomain::Job, saved);
    EXPECT_EQ(Sample().GetProtocolStatus(), ProtocolStatus::Running);
    EXPECT_EQ(Registers(), (Bytes{0, 0, 0, 0x80, 0, 0, 0, 0x80}));
}

} // namespace
