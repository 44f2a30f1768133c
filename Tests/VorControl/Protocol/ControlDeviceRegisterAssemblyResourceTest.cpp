#include "VorControl/Protocol/ControlDeviceRegisterAssemblyResource.h"

#include "Tests/VorControl/Protocol/DeviceResourceFixture.h"
#include "VorControl/Protocol/ControlDeviceRegisterAssemblyCommandResource.h"

namespace {

using Json = nlohmann::json;
using VorApi::VorDataTree;
using VorControl::Protocol::ControlDeviceRegisterAssemblyCommandResource;
using VorControl::Protocol::ControlDeviceRegisterAssemblyResource;

class ControlDeviceRegisterAssemblyResourceTest : public Tests::DeviceResourceFixture {
protected:
    static constexpr const char* PortAssemblies = "/controls/io/devices/device-0/ports/port-1/registerAssemblies";
    static constexpr const char* PortAssembly =
        "/controls/io/devices/device-0/ports/port-1/registerAssemblies/registerAssembly-0";
    const std::string portCommands = std::string(PortAssembly) + "/commands";
    const std::string addBlock = portCommands + "/add";

    ControlDeviceRegisterAssemblyResourceTest() {
        Select();
        Listen(PortAssembly);
    }

    static Json Block(const char* source, const char* type = "Measurement") {
        return {{"blocks", {{{"type", type}, {"dataSource", source}}}}};
    }
};

TEST_F(ControlDeviceRegisterAssemblyResourceTest, TheCollectionEmbedsTheAssembly) {
    EXPECT_EQ(RelationsOf(PortAssemblies), Texts{std::string("embed item[] ") + PortAssembly});
}

TEST_F(ControlDeviceRegisterAssemblyResourceTest, TheDocumentIsThatOfAnAssemblyWithoutLinks) {
    const VorDataTree document = Read(PortAssembly);
    EXPECT_EQ(document.Names(), (Texts{"version", "displayName", "id", "attributes", "supportedBlockTypes", "blocks"}));
    EXPECT_EQ(document["id"].AsText(), "registerAssembly-0");
    EXPECT_EQ(document["displayName"].AsText(), "Register Assembly 0");
    EXPECT_FALSE(document["attributes"]["isGlobalAddressSpaceUsed"].AsBool());
    ASSERT_EQ(document["supportedBlockTypes"].Count(), 1U);
    EXPECT_EQ(document["supportedBlockTypes"].At(0)["type"].AsText(), "Measurement");
    EXPECT_EQ(document["blocks"].Dump(false), "[]");
    EXPECT_EQ(RelationsOf(PortAssembly), Texts{});
    EXPECT_TRUE(ReadWithSchema(PortAssembly)["attributes"]["_schema"]["properties"].IsObject());
    ExpectClosed();
}

TEST_F(ControlDeviceRegisterAssemblyResourceTest, AReadNeedsServicePortAndTheAssembly) {
    const auto read = [&](const VorApi::RequestInfo::Keys& keys) {
        DocumentOf<ControlDeviceRegisterAssemblyResource>(PortAssembly, keys);
    };
    EXPECT_FAILURE(read({}), yERROR_PARAMETER, "Request is missing service name");
    EXPECT_FAILURE(read({{"protocol", "io"}}), yERROR_PARAMETER, "Request is missing port id");
    EXPECT_TEXTLESS_FAILURE(read({{"protocol", "io"}, {"port", "port-1"}}), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(Read(std::string(PortAssemblies) + "/registerAssembly-1"), yERROR_PARAMETER);
    for (const std::string place : {"device-1/ports/port-1", "device-0/ports/port-7"}) {
        const std::string path = "/controls/io/devices/" + place + "/registerAssemblies";
        EXPECT_TEXTLESS_FAILURE(Read(path), yERROR_NOT_FOUND);
        EXPECT_TEXTLESS_FAILURE(Read(path + "/registerAssembly-0"), yERROR_NOT_FOUND);
        EXPECT_TEXTLESS_FAILURE(Read(path + "/registerAssembly-0/commands"), yERROR_NOT_FOUND);
        EXPECT_TEXTLESS_FAILURE(Invoke(path + "/registerAssembly-0/commands/add", Block("a")), yERROR_NOT_FOUND);
    }
    const std::string bare = "/controls/bare/devices/device-0/ports/port-1/registerAssemblies";
    EXPECT_TEXTLESS_FAILURE(Read(bare), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(Read(bare + "/registerAssembly-0"), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Read(bare + "/registerAssembly-0/commands"), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(Invoke(bare + "/registerAssembly-0/commands/add", Block("a")), yERROR_NOT_FOUND);
    ExpectClosed();
}

TEST_F(ControlDeviceRegisterAssemblyResourceTest, CantBeUpdated) {
    EXPECT_TEXTLESS_FAILURE(Update(PortAssembly, Json::object()), yERROR_READ_ONLY);
    EXPECT_TEXTLESS_FAILURE(Update(addBlock, Json::object()), yERROR_UNIMPLEMENTED);
}

TEST_F(ControlDeviceRegisterAssemblyResourceTest, CommandsAreListedAndDescribed) {
    Texts items;
    for (const char* const command : {"add", "remove", "removeAll", "compact", "update"}) {
        items.push_back("embed item[] " + portCommands + "/" + command);
    }
    EXPECT_EQ(RelationsOf(portCommands), items);
    EXPECT_EQ(Read(addBlock)["id"].AsText(), "add");
    EXPECT_TRUE(Read(addBlock)["parameters"].Contains("blocks"));
    EXPECT_EQ(Tests::StatusOf([&] { Read(portCommands + "/x"); }), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(Read(std::string(PortAssemblies) + "/registerAssembly-1/commands"), yERROR_NOT_FOUND);
}

TEST_F(ControlDeviceRegisterAssemblyResourceTest, ACommandChangesTheAssemblyInTheBracketAndTellsServiceAndClients) {
    io->onAssemblyUpdate = [this] { EXPECT_EQ(environ.gate.Depth(), 1); };
    EXPECT_EQ(Invoke(addBlock, Block("profile/max")).Dump(false), "{}");
    EXPECT_EQ(io->calls, Texts{"RegisterAssemblyUpdate registerAssembly-0"});
    EXPECT_EQ(scanResults.calls->back(), "map io profile/max");
    EXPECT_EQ(NewNotifications(), Texts{std::string("2 ") + PortAssembly});
    EXPECT_EQ(environ.registrar.announcements.size(), 1U);
    EXPECT_EQ(Read(PortAssembly)["blocks"].At(0)["dataSource"].AsText(), "profile/max");
    Json twice = Block("a");
    twice["parameters"] = Block("b");
    Invoke(addBlock, twice);
    EXPECT_EQ(Read(PortAssembly)["blocks"].At(1)["dataSource"].AsText(), "b");
    ExpectClosed();
}

TEST_F(ControlDeviceRegisterAssemblyResourceTest, AServiceThatIsNotInterestedIsNoFailure) {
    io->onAssemblyUpdate = [] { Vor::Throw(yERROR_UNIMPLEMENTED); };
    Invoke(addBlock, Block("profile/max"));
    EXPECT_EQ(NewNotifications(), Texts{std::string("2 ") + PortAssembly});
    ExpectClosed();
}

TEST_F(ControlDeviceRegisterAssemblyResourceTest, AFailureIsWrappedWithTheCommandAndLeavesTheBracket) {
    EXPECT_FAILURE(Invoke(addBlock, Block("a", "unknown")), yERROR, "add");
    EXPECT_FAILURE(Invoke(portCommands + "/x"), yERROR_NOT_FOUND, "x");
    EXPECT_EQ(io->calls, Texts{});
    io->onAssemblyUpdate = [] { Vor::Throw(yERROR_FULL, "no room"); };
    EXPECT_FAILURE(Invoke(addBlock, Block("a")), yERROR_FULL, "add");
    io->onAssemblyUpdate = [] { throw 7; };
    EXPECT_FAILURE(Invoke(addBlock, Block("b")), yERROR, "add");
    ExpectClosed();
}

TEST_F(ControlDeviceRegisterAssemblyResourceTest, ACommandNeedsServicePortAssemblyAndCommand) {
    auto& resource = As<ControlDeviceRegisterAssemblyCommandResource>(ResourceAt(portCommands));
    const auto invoke = [&](const VorApi::RequestInfo::Keys& keys) { resource.Invoke(Request(keys), VorDataTree()); };
    EXPECT_FAILURE(invoke({}), yERROR_PARAMETER, "Request is missing service name");
    EXPECT_FAILURE(invoke({{"protocol", "io"}}), yERROR_PARAMETER, "Request is missing port id");
    EXPECT_FAILURE(invoke({{"protocol", "io"}, {"port", "port-1"}}), yERROR_PARAMETER,
                   "Request is missing assembly id");
    EXPECT_FAILURE(invoke({{"protocol", "io"}, {"port", "port-1"}, {"registerAssembly", "registerAssembly-0"}}),
                   yERROR_PARAMETER, "Request is missing command");
}

TEST_F(ControlDeviceRegisterAssemblyResourceTest, ChangesDuringALoadAreNotNotified) {
    Load([this] {
        Io().BeginUpdateDeviceRegisterAssembly();
        Io().EndUpdateDeviceRegisterAssembly("device-0", "port-1", "registerAssembly-0");
    });
    EXPECT_EQ(NewNotifications(), Texts{});
}

} // namespace
