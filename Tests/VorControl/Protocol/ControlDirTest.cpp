#include "VorControl/Protocol/ControlDir.h"

#include "Tests/VorControl/Protocol/ResourceFixture.h"
#include "VorApi/DocumentResourceBase.h"
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

TEST_F(ControlDirTest, ThereIsADocumentExactlyWhereAReadSucceeds) {
    std::size_t documents = 0;
    std::size_t others = 0;
    for (const std::string service : {"", "/full", "/bare", "/nobody"}) {
        for (const std::string part :
             {"", "/commands", "/commands/greet", "/commands/nothing", "/metrics", "/outputs", "/outputs/commands",
              "/outputs/commands/add", "/registerAssemblies", "/registerAssemblies/a1", "/registerAssemblies/a2",
              "/registerAssemblies/a1/commands", "/registerAssemblies/a1/commands/add"}) {
            const std::string path = "/controls" + service + part;
            const auto match = router.Find(path);
            if (!match) {
                continue;
            }
            const bool hasDocument = As<VorApi::DocumentResourceBase>(match->resource)
                                         .HasDocument(VorApi::RequestInfoEx(match->keys, false));
            EXPECT_EQ(hasDocument, Ask(VorRest::Verb::Read, path).failure == nullptr) << path;
            ++(hasDocument ? documents : others);
        }
    }
    EXPECT_GT(documents, 10U);
    EXPECT_GT(others, 10U);
    EXPECT_TRUE(
        As<VorApi::DocumentResourceBase>(ResourceAt("/controlTypes")).HasDocument(VorApi::RequestInfoEx({}, false)));
}

TEST_F(ControlDirTest, OnlyServicesTakeUpdates) {
    for (const std::string& route : router.Routes()) {
        EXPECT_EQ(As<VorApi::DocumentResourceBase>(ResourceAt(route)).IsUpdatable(), route == "/controls/:protocol")
            << route;
    }
}

} // namespace
