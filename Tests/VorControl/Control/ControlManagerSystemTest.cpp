#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/RecordingScanResults.h"
#include "Tests/Support/Signal.h"
#include "Tests/Support/TestService.h"
#include "Tests/Support/Threads.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorControl/Control/ControlCreateException.h"
#include "VorControl/Control/ControlManager.h"
#include "VorControl/Control/ControlRegistry.h"
#include "VorCore/SystemCore.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using Tests::TestPlugin;
using Tests::TestService;
using namespace VorControl;
using Texts = std::vector<std::string>;

namespace {

constexpr const char* DispatcherName = "CtlProtoOp.Disp";

/// A manager with the service "a", on a core that records its calls. The test's thread is the main loop's.
class ControlManagerSystemTest : public testing::Test {
protected:
    void Build(VorCore::Core* withCore) {
        TestPlugin().Add("a", a).Publish(plugins);
        registry = std::make_unique<ControlRegistry>(plugins);
        ControlModuleEnviron record = environ.Record();
        record.core = withCore;
        manager = std::make_unique<ControlManager>(*registry, scanResults, record);
    }

    ControlHost& Host() { return dynamic_cast<ControlHost&>(a.lock()->GetControlHost()); }

    VorCore::SystemCore::Environ CoreEnviron() {
        VorCore::SystemCore::Environ made;
        made.startScan = [this] { calls.push_back("start"); };
        made.stopScan = [this] { calls.push_back("stop"); };
        made.factoryRestore = [this] { calls.push_back("restore"); };
        made.restart = [this] { calls.push_back("restart"); };
        made.blinkLed = [this] { calls.push_back("blink"); };
        return made;
    }

    Vor::LogCapture log;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    Texts calls;
    VorCore::SystemCore core{CoreEnviron()};
    VorPlugin::PluginManager plugins;
    Tests::ControlEnviron environ;
    Tests::RecordingScanResults scanResults;
    std::weak_ptr<TestService> a;
    std::unique_ptr<ControlRegistry> registry;
    std::unique_ptr<ControlManager> manager;
};

TEST_F(ControlManagerSystemTest, AServiceActsOnTheCoreAndReadsFromIt) {
    Build(&core);
    Tests::Signal ended;
    int end = 0;
    Host().AddOpEndEventHandler("a", [&](int status) {
        end = status;
        ended.Set();
    });
    Host().StartScan("a");
    EXPECT_TRUE(calls.empty());
    loop.RunReady();
    ASSERT_TRUE(ended.Wait());
    EXPECT_EQ(end, yOK);
    EXPECT_EQ(calls, Texts{"start"});
    EXPECT_EQ(core.GetRunState(), 1);
    core.SetLocalNodeNtpHost("time.host", true);
    EXPECT_EQ(Host().LocalNodeNtpHost(0), "time.host");
}

TEST_F(ControlManagerSystemTest, WithoutACoreAnOperationFailsAndFreesTheSlot) {
    Build(nullptr);
    for (int i = 0; i < 2; ++i) {
        Tests::Signal ended;
        int end = 1;
        auto callback = Host().AddOpEndEventHandler("a", [&](int status) {
            end = status;
            ended.Set();
        });
        Host().StartScan("a");
        loop.RunReady();
        ASSERT_TRUE(ended.Wait());
        EXPECT_EQ(end, 0);
        Host().RemoveOpEndEventHandler("a", callback);
    }
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception processing action id 0"), 2U);
}

TEST_F(ControlManagerSystemTest, WithoutScanEnginesTheScanEngineInterfaceSaysSo) {
    Build(&core);
    EXPECT_FALSE(Host().ScanEngineInterface().IsScanEngineManagerValid());
}

TEST_F(ControlManagerSystemTest, AServiceIsDestroyedWhileItCanStillReachTheSystem) {
    Build(&core);
    core.SetLocalNodeNtpHost("time.host", true);
    std::string ntpHost;
    std::optional<Tests::Failure> rejected;
    a.lock()->onDestroy = [&, &host = Host()] {
        ntpHost = host.LocalNodeNtpHost(0);
        host.StartScan("a");
        rejected = Tests::FailureOf([&] { host.StopScan("a"); });
    };
    manager.reset();
    EXPECT_EQ(ntpHost, "time.host");
    ASSERT_TRUE(rejected.has_value());
    EXPECT_EQ(rejected->status, yERROR_BUSY);
    EXPECT_EQ(Tests::CountThreads(DispatcherName), 0U);
    loop.RunReady();
    EXPECT_TRUE(calls.empty());
}

TEST_F(ControlManagerSystemTest, AManagerThatCannotBeBuiltLeavesNoThread) {
    TestPlugin().Add(TestPlugin::Info("bad"), [](const auto&) { return nullptr; }).Publish(plugins);
    EXPECT_THROW(Build(&core), ControlCreateException);
    EXPECT_EQ(Tests::CountThreads(DispatcherName), 0U);
}

} // namespace
