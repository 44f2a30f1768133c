#include "VorControl/Protocol/ControlDir.h"

#include "Tests/VorControl/Protocol/ResourceFixture.h"
#include "VorApi/ResourceBase.h"

namespace {

class ControlDirTest : public Tests::ResourceFixture {};

TEST_F(ControlDirTest, RegistersItsRoutesInOrder) {
    EXPECT_EQ(router.Routes(), (Texts{"/controlTypes", "/controls/:protocol", "/controls/:protocol/commands/:command",
                                      "/controls/:protocol/metrics", "/controls/:protocol/outputs",
                                      "/controls/:protocol/outputs/commands/:command",
                                      "/controls/:protocol/registerAssemblies/:registerAssembly",
                                      "/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command"}));
}

TEST_F(ControlDirTest, ItsEndLeavesNoRouteAndNoHandler) {
    Listen("/controls");
    directory.reset();
    EXPECT_TRUE(router.Routes().empty());
    service->NotifyParamsInternalUpdateEventHandler(false);
    EXPECT_EQ(NewNotifications(), Texts{});
}

TEST_F(ControlDirTest, ARouteThatIsTakenLeavesNothing) {
    directory.reset();
    VorApi::ResourceBase other;
    router.Register("/controls/:protocol/outputs", other);
    EXPECT_FAILURE(VorControl::ControlDir(router, *manager, reporter), yERROR_ALREADY_EXISTS,
                   "The route /controls/:protocol/outputs is registered already.");
    EXPECT_EQ(router.Routes(), Texts{"/controls/:protocol/outputs"});
    router.Deregister("/controls/:protocol/outputs", true);
    directory = std::make_unique<VorControl::ControlDir>(router, *manager, reporter);
    EXPECT_EQ(router.Routes().size(), 8U);
}

TEST_F(ControlDirTest, FiguresAreADocument) {
    reporter.source.figures.dropCount = 7;
    EXPECT_EQ(Read("/controls/full/metrics").Dump(false), R"({"dropCount":7})");
    EXPECT_EQ(Tests::StatusOf([&] { Read("/controls/bare/metrics"); }), yERROR_NOT_FOUND);
}

} // namespace
