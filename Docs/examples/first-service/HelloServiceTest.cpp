#include "Tests/Support/BuiltFile.h"
#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/MemoryStore.h"
#include "Vor/Logging.h"
#include "VorControl/Control/ControlModule.h"
#include "VorPlugin/PluginManager.h"

#include <gtest/gtest.h>

TEST(HelloService, GreetsAsTheJobSays) {
    const Vor::LogCapture log;
    VorPlugin::PluginManager plugins;
    plugins.Load(Tests::BuiltPlugin("hello.so"));
    Tests::ControlEnviron environ;
    VorControl::ControlModule module(plugins, environ.router, environ.Record());

    Tests::MemoryStore job;
    job.files["/controls/hello/config.json"] =
        R"({"version":"1","vor:control":{"enabled":true,"parametersVersion":"1","parameters":{"greeting":"Moin"}}})";
    module.Manager().LoadPersistDomain(VorCommon::PersistDomain::Job, job);
    EXPECT_TRUE(log.Contains(Vor::UserInfo, "Moin"));
}
