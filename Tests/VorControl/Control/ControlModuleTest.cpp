#include "VorControl/Control/ControlModule.h"

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/TestService.h"
#include "VorApi/ResourceBase.h"
#include "VorControl/Control/ControlCreateException.h"
#include "VorControl/Control/IControlInstance.h"

#include <gtest/gtest.h>

using Tests::TestPlugin;
using Tests::TestService;
using VorControl::ControlModule;

namespace {

class ControlModuleTest : public testing::Test {
protected:
    VorPlugin::PluginManager plugins;
    Tests::ControlEnviron environ;
    std::weak_ptr<TestService> service;
};

TEST_F(ControlModuleTest, HasAllServicesOnReturnAndNoneStarted) {
    TestPlugin().Add("a", service).Publish(plugins);
    ControlModule module(plugins, environ.router, environ.Record());
    EXPECT_EQ(module.Manager().List(), std::vector<std::string>{"a"});
    EXPECT_TRUE(service.lock()->calls.empty());
    EXPECT_EQ(environ.hub.ResultHandlerCount(), 1U);
    EXPECT_TRUE(environ.router.Find("/controls/a").has_value());
}

TEST_F(ControlModuleTest, ARouteThatIsTakenLeavesNothingBehind) {
    TestPlugin().Add("a", service).Publish(plugins);
    VorApi::ResourceBase other;
    environ.router.Register("/controls/:protocol", other);
    EXPECT_EQ(Tests::StatusOf([&] { ControlModule(plugins, environ.router, environ.Record()); }),
              yERROR_ALREADY_EXISTS);
    EXPECT_TRUE(service.expired());
    EXPECT_EQ(environ.router.Routes(), std::vector<std::string>{"/controls/:protocol"});
    EXPECT_EQ(environ.hub.ResultHandlerCount(), 0U);
    EXPECT_EQ(environ.registrar.handler, nullptr);
}

TEST_F(ControlModuleTest, ItsEndLeavesNoServiceAndNoHandler) {
    TestPlugin().Add("a", service).Publish(plugins);
    {
        ControlModule module(plugins, environ.router, environ.Record());
        module.Manager().GetInstance("a").Enable(true);
    }
    EXPECT_TRUE(service.expired());
    EXPECT_TRUE(environ.router.Routes().empty());
    EXPECT_EQ(environ.hub.ResultHandlerCount(), 0U);
    EXPECT_EQ(plugins.LoadEvent().Count(), 0U);
    EXPECT_EQ(environ.registrar.handler, nullptr);
    EXPECT_EQ(environ.preStart.Count(), 0U);
}

TEST_F(ControlModuleTest, AServiceThatCantBeCreatedLeavesNothingBehindAndAnotherAttemptWorks) {
    TestPlugin().Add("a", service).Publish(plugins);
    const auto& bad = TestPlugin().Add(TestPlugin::Info("bad"), [](const auto&) { return nullptr; }).Publish(plugins);
    EXPECT_THROW(ControlModule(plugins, environ.router, environ.Record()), VorControl::ControlCreateException);
    EXPECT_TRUE(service.expired());
    EXPECT_EQ(environ.hub.ResultHandlerCount(), 0U);
    EXPECT_EQ(plugins.LoadEvent().Count(), 0U);
    EXPECT_EQ(environ.registrar.registerCount, 0);

    plugins.Unload(bad);
    ControlModule module(plugins, environ.router, environ.Record());
    EXPECT_EQ(module.Manager().List(), std::vector<std::string>{"a"});
}

TEST_F(ControlModuleTest, ComesUpWithoutHubRegistrarAndEvents) {
    VorControl::ControlModuleEnviron record = environ.Record();
    record.resultHub = nullptr;
    record.persistRegistrar = nullptr;
    record.livePreStartScanEvent = nullptr;
    record.livePostStopScanEvent = nullptr;
    record.factoryRestoreEvent = nullptr;
    TestPlugin().Add("a", service).Publish(plugins);
    ControlModule module(plugins, environ.router, record);
    module.Manager().GetInstance("a").Enable(true);
    EXPECT_TRUE(module.Manager().GetInstance("a").IsEnabled());
}

} // namespace
