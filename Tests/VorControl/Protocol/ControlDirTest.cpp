#include "VorControl/Protocol/ControlDir.h"

#include "Tests/VorControl/Protocol/DeviceResourceFixture.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorApi/ICallableResource.h"
#include "VorApi/IParentResource.h"
#include "VorApi/ResourceBase.h"

#include <optional>

namespace {

constexpr const char* PortRoute = "/controls/:protocol/devices/:device/ports/:port";
constexpr const char* PortAssemblyRoute =
    "/controls/:protocol/devices/:device/ports/:port/registerAssemblies/:registerAssembly";

/// What a resource does with each verb: the status of its failure, yOK when it succeeds, nothing for a verb that it
/// doesn't have.
struct Operations {
    std::string route;
    std::string path; ///< of something that there is
    std::optional<yStatus> read;
    std::optional<yStatus> update;
    std::optional<yStatus> create;
    std::optional<yStatus> remove;
    std::optional<yStatus> invoke;
};

class ControlDirTest : public Tests::DeviceResourceFixture {};

TEST_F(ControlDirTest, RegistersItsRoutesInOrder) {
    const std::string port = PortRoute;
    const std::string portAssembly = PortAssemblyRoute;
    EXPECT_EQ(router.Routes(), (Texts{"/controlTypes", "/controls/:protocol", "/controls/:protocol/commands/:command",
                                      "/controls/:protocol/availableDevices", "/controls/:protocol/metrics",
                                      "/controls/:protocol/outputs", "/controls/:protocol/outputs/commands/:command",
                                      "/controls/:protocol/registerAssemblies/:registerAssembly",
                                      "/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command",
                                      "/controls/:protocol/devices/:device", port, port + "/commands/:command",
                                      port + "/metrics", portAssembly, portAssembly + "/commands/:command"}));
}

TEST_F(ControlDirTest, EachResourceHasItsOperations) {
    Select();
    const std::string device = "/controls/io/devices/device-0";
    const std::string port = device + "/ports/port-0";
    const std::string assembly = "/registerAssemblies/registerAssembly-0";
    reporter.keys.emplace("io", "device-0", "port-0");
    const std::optional<yStatus> none;
    const std::vector<Operations> all{
        {"/controlTypes", "/controlTypes", yOK, yERROR_UNIMPLEMENTED, none, none, none},
        {"/controls/:protocol", "/controls/full", yOK, yOK, none, none, none},
        {"/controls/:protocol/commands/:command", "/controls/full/commands/quiet", yOK, yERROR_READ_ONLY, none, none,
         yOK},
        {"/controls/:protocol/availableDevices", "/controls/io/availableDevices", yOK, yERROR_READ_ONLY, none, none,
         none},
        {"/controls/:protocol/metrics", "/controls/full/metrics", yOK, yERROR_UNIMPLEMENTED, none, none, none},
        {"/controls/:protocol/outputs", "/controls/full/outputs", yOK, yERROR_READ_ONLY, none, none, none},
        {"/controls/:protocol/outputs/commands/:command", "/controls/full/outputs/commands/removeAll", yOK,
         yERROR_UNIMPLEMENTED, none, none, yOK},
        {"/controls/:protocol/registerAssemblies/:registerAssembly", "/controls/full/registerAssemblies/a1", yOK,
         yERROR_READ_ONLY, none, none, none},
        {"/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command",
         "/controls/full/registerAssemblies/a1/commands/removeAll", yOK, yERROR_UNIMPLEMENTED, none, none, yOK},
        {PortRoute, port, yOK, yOK, yERROR_UNIMPLEMENTED, yERROR_UNIMPLEMENTED, none},
        {PortRoute + std::string("/commands/:command"), port + "/commands/trigger", yERROR_UNIMPLEMENTED,
         yERROR_UNIMPLEMENTED, none, none, yOK},
        {PortRoute + std::string("/metrics"), port + "/metrics", yOK, yERROR_UNIMPLEMENTED, none, none, none},
        {PortAssemblyRoute, port + assembly, yOK, yERROR_READ_ONLY, none, none, none},
        {PortAssemblyRoute + std::string("/commands/:command"), port + assembly + "/commands/removeAll", yOK,
         yERROR_UNIMPLEMENTED, none, none, yOK},
        {"/controls/:protocol/devices/:device", device, yOK, yERROR_UNIMPLEMENTED, yOK, yOK, none},
    };
    EXPECT_EQ(all.size(), router.Routes().size());
    const Json body = {{"parameters", Json::object()}};
    for (const Operations& operations : all) {
        const auto match = router.Find(operations.path);
        ASSERT_TRUE(match.has_value()) << operations.path;
        EXPECT_EQ(match->route, operations.route);
        const auto status = [&](VorRest::Verb verb, const std::string& path, const Json& given) {
            return Tests::StatusOf([&] { Rethrow(Ask(verb, path, given)); });
        };
        EXPECT_EQ(status(VorRest::Verb::Read, operations.path, nullptr), operations.read) << operations.path;
        EXPECT_EQ(status(VorRest::Verb::Update, operations.path, body), operations.update) << operations.path;
        EXPECT_EQ(dynamic_cast<VorApi::IParentResource*>(&match->resource) != nullptr, operations.create.has_value());
        EXPECT_EQ(dynamic_cast<VorApi::ICallableResource*>(&match->resource) != nullptr, operations.invoke.has_value());
        if (operations.remove) {
            EXPECT_EQ(status(VorRest::Verb::Delete, operations.path, nullptr), operations.remove) << operations.path;
        }
        if (operations.create) {
            const std::string list = operations.path.substr(0, operations.path.rfind('/'));
            EXPECT_EQ(status(VorRest::Verb::Create, list, {{"engineId", "engine"}, {"serialNumber", "1001"}}),
                      operations.create)
                << list;
        }
        if (operations.invoke) {
            EXPECT_EQ(status(VorRest::Verb::Invoke, operations.path, body), operations.invoke) << operations.path;
        }
    }
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
    EXPECT_EQ(router.Routes().size(), 15U);
}

TEST_F(ControlDirTest, FiguresAreADocument) {
    reporter.source.figures.dropCount = 7;
    EXPECT_EQ(Read("/controls/full/metrics").Dump(false), R"({"dropCount":7})");
    EXPECT_EQ(Tests::StatusOf([&] { Read("/controls/bare/metrics"); }), yERROR_NOT_FOUND);
}

TEST_F(ControlDirTest, ThereIsADocumentExactlyWhereAReadSucceeds) {
    std::size_t documents = 0;
    std::size_t others = 0;
    Select();
    reporter.keys.emplace("io", "device-0", "port-0");
    const std::string assembly = "/devices/device-0/ports/port-0/registerAssemblies/registerAssembly-0";
    for (const std::string service : {"", "/full", "/bare", "/io", "/nobody"}) {
        for (const std::string& part : Texts{"",
                                             "/availableDevices",
                                             "/devices",
                                             "/devices/device-0",
                                             "/devices/device-1",
                                             "/devices/device-0/ports",
                                             "/devices/device-0/ports/port-0",
                                             "/devices/device-0/ports/port-7",
                                             "/devices/device-0/ports/port-0/commands/trigger",
                                             "/devices/device-0/ports/port-0/metrics",
                                             "/devices/device-0/ports/port-7/metrics",
                                             "/devices/device-0/ports/port-0/registerAssemblies",
                                             assembly,
                                             assembly + "1",
                                             assembly + "/commands",
                                             assembly + "/commands/add",
                                             assembly + "/commands/x",
                                             "/commands",
                                             "/commands/greet",
                                             "/commands/nothing",
                                             "/metrics",
                                             "/outputs",
                                             "/outputs/commands",
                                             "/outputs/commands/add",
                                             "/registerAssemblies",
                                             "/registerAssemblies/a1",
                                             "/registerAssemblies/a2",
                                             "/registerAssemblies/a1/commands",
                                             "/registerAssemblies/a1/commands/add"}) {
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

TEST_F(ControlDirTest, OnlyServicesAndPortsTakeUpdates) {
    for (const std::string& route : router.Routes()) {
        EXPECT_EQ(As<VorApi::DocumentResourceBase>(ResourceAt(route)).IsUpdatable(),
                  route == "/controls/:protocol" || route == PortRoute)
            << route;
    }
}

} // namespace
