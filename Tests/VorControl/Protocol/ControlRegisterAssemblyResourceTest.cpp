#include "VorControl/Protocol/ControlRegisterAssemblyResource.h"

#include "Tests/Support/MemoryStore.h"
#include "Tests/VorControl/Protocol/ResourceFixture.h"
#include "VorControl/Protocol/ControlRegisterAssemblyCommandResource.h"

namespace {

using Json = nlohmann::json;
using VorApi::RequestInfoEx;
using VorApi::VorDataTree;
using VorControl::Protocol::ControlRegisterAssemblyCommandResource;

constexpr const char* Assembly = "/controls/full/registerAssemblies/a1";
constexpr const char* BlockCommands = "/controls/full/registerAssemblies/a1/commands";
constexpr const char* AddBlock = "/controls/full/registerAssemblies/a1/commands/add";

class ControlRegisterAssemblyResourceTest : public Tests::ResourceFixture {
protected:
    ControlRegisterAssemblyResourceTest() { Listen(Assembly); }

    static Json Block(const char* type, int outputId) {
        return {{"blocks", {{{"type", type}, {"outputId", outputId}}}}};
    }

    /// The calls that change something, without those that the filter of the scan results makes.
    Texts NewChanges() {
        Texts changes = service->Changes();
        service->calls.clear();
        return changes;
    }
};

TEST_F(ControlRegisterAssemblyResourceTest, TheCollectionEmbedsEachAssembly) {
    service->AddAssembly("a2");
    EXPECT_EQ(RelationsOf("/controls/full/registerAssemblies"),
              (Texts{"embed item[] /controls/full/registerAssemblies/a1",
                     "embed item[] /controls/full/registerAssemblies/a2"}));
}

TEST_F(ControlRegisterAssemblyResourceTest, AnAssemblyWithoutBlocksHasAnEmptyListAndAllItsTypes) {
    const VorDataTree document = Read(Assembly);
    EXPECT_EQ(document.Names(), (Texts{"version", "displayName", "id", "attributes", "supportedBlockTypes", "blocks"}));
    EXPECT_EQ(document["id"].AsText(), "a1");
    EXPECT_EQ(document["attributes"]["outputIdMax"].AsUInt64(), 65534U);
    EXPECT_EQ(document["blocks"].Dump(false), "[]");
    ASSERT_EQ(document["supportedBlockTypes"].Count(), 4U);
    EXPECT_EQ(document["supportedBlockTypes"].At(0)["type"].AsText(), "one");
    EXPECT_FALSE(document["supportedBlockTypes"].At(0).Contains("_schema"));
}

TEST_F(ControlRegisterAssemblyResourceTest, EachElementHasASchemaIfTheClientWantsIt) {
    service->AssemblyOf("a1").AddEntries({{.type = "four", .outputId = 3}});
    const VorDataTree document = ReadWithSchema(Assembly);
    for (const VorDataTree& part :
         {document, document["attributes"], document["supportedBlockTypes"].At(0), document["blocks"].At(0)}) {
        EXPECT_TRUE(part["_schema"]["properties"].IsObject());
    }
    EXPECT_EQ(document["blocks"].At(0)["outputId"].AsUInt64(), 3U);
}

TEST_F(ControlRegisterAssemblyResourceTest, CommandsAreLinkedListedAndDescribed) {
    Texts links;
    Texts items;
    for (const char* const command : {"add", "remove", "removeAll", "compact", "update"}) {
        links.push_back(std::string("link vor:command[] ") + BlockCommands + "/" + command);
        items.push_back(std::string("embed item[] ") + BlockCommands + "/" + command);
    }
    EXPECT_EQ(RelationsOf(Assembly), links);
    EXPECT_EQ(RelationsOf(BlockCommands), items);
    EXPECT_EQ(Read(AddBlock)["id"].AsText(), "add");
    EXPECT_TRUE(Read(AddBlock)["parameters"].Contains("blocks"));
    EXPECT_EQ(Tests::StatusOf([&] { Read(BlockCommands + std::string("/x")); }), yERROR_NOT_FOUND);
}

TEST_F(ControlRegisterAssemblyResourceTest, WhatThereIsNotIsUnimplemented) {
    EXPECT_TEXTLESS_FAILURE(Read("/controls/bare/registerAssemblies"), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(Read("/controls/bare/registerAssemblies/a1"), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(Read("/controls/full/registerAssemblies/x"), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(Update(Assembly, Json::object()), yERROR_READ_ONLY);
    EXPECT_TEXTLESS_FAILURE(Update(AddBlock, Json::object()), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(Read("/controls/bare/registerAssemblies/a1/commands"), yERROR_NOT_FOUND);
}

TEST_F(ControlRegisterAssemblyResourceTest, ACommandChangesTheAssemblyInTheBracketAndNotifies) {
    service->actions["RegisterAssemblyUpdate a1"] = [this] { EXPECT_EQ(environ.gate.Depth(), 1); };
    EXPECT_EQ(Invoke(AddBlock, Block("four", 3)).Dump(false), "{}");
    EXPECT_EQ(NewChanges(), (Texts{"BeginUpdateRegisterAssembly job a1 7", "RegisterAssemblyUpdate a1",
                                   "EndUpdateRegisterAssembly job a1 7"}));
    EXPECT_EQ(environ.gate.Depth(), 0);
    EXPECT_EQ(NewNotifications(), Texts{std::string("2 ") + Assembly});
    EXPECT_EQ(Read(Assembly)["blocks"].Count(), 1U);
    Invoke(AddBlock, {{"parameters", Block("one", 9)}});
    EXPECT_EQ(Read(Assembly)["blocks"].Count(), 2U);
}

TEST_F(ControlRegisterAssemblyResourceTest, AFailedCommandLeavesTheBracketClosedAndIsWrapped) {
    const auto failure = Tests::FailureOf([&] { Invoke(AddBlock, Block("unknown", 3)); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR);
    EXPECT_EQ(NewChanges(), (Texts{"BeginUpdateRegisterAssembly job a1 7", "EndUpdateRegisterAssembly job a1 7"}));
    EXPECT_EQ(environ.gate.Depth(), 0);
    EXPECT_FAILURE(Invoke(BlockCommands + std::string("/x")), yERROR_NOT_FOUND, "");
    EXPECT_FAILURE(Invoke("/controls/bare/registerAssemblies/a1/commands/add"), yERROR_NOT_FOUND, "");
    EXPECT_EQ(environ.gate.Depth(), 0);
}

TEST_F(ControlRegisterAssemblyResourceTest, TheCauseOfAFailureIsNestedWithItsText) {
    service->actions["RegisterAssemblyUpdate a1"] = [] { throw std::runtime_error("100% broken"); };
    EXPECT_FAILURE(Invoke(AddBlock, Block("four", 3)), yERROR, "100% broken");
    service->actions["RegisterAssemblyUpdate a1"] = [] { throw 7; };
    EXPECT_FAILURE(Invoke(AddBlock, Block("four", 9)), yERROR, "unknown exception");
    service->actions.clear();
    service->actions["EndUpdateRegisterAssembly job a1 7"] = [] { Vor::Throw(yERROR_FULL, "no room"); };
    EXPECT_FAILURE(Invoke(AddBlock, Block("four", 20)), yERROR_FULL, "no room");
    EXPECT_EQ(environ.gate.Depth(), 0);
}

TEST_F(ControlRegisterAssemblyResourceTest, ARequestNeedsServiceAssemblyAndCommand) {
    EXPECT_FAILURE(Invoke(BlockCommands), yERROR_PARAMETER, "Request is missing command");
    auto& commands = As<ControlRegisterAssemblyCommandResource>(ResourceAt(BlockCommands));
    EXPECT_FAILURE(commands.Invoke(RequestInfoEx({}, false), VorDataTree()), yERROR_PARAMETER,
                   "Request is missing service name");
    EXPECT_FAILURE(commands.Invoke(RequestInfoEx({{"protocol", "full"}}, false), VorDataTree()), yERROR_PARAMETER,
                   "Request is missing assembly id");
    auto& assemblies = As<VorControl::Protocol::ControlRegisterAssemblyResource>(ResourceAt(Assembly));
    VorApi::ResponseInfoEx response;
    VorDataTree data;
    EXPECT_TEXTLESS_FAILURE(assemblies.Document(RequestInfoEx({}, false), response, data), yERROR_PARAMETER);
}

TEST_F(ControlRegisterAssemblyResourceTest, ChangesDuringALoadAreNotNotified) {
    const auto change = [this] {
        Instance().BeginUpdateRegisterAssembly("a1");
        Instance().EndUpdateRegisterAssembly("a1");
    };
    manager->AddPersistenceLoadEventHandler([&](VorControl::IControlManager::PersistenceLoadOpState state) {
        if (state == VorControl::IControlManager::PersistenceLoadOpState::Begin) {
            change();
        }
    });
    Tests::MemoryStore store;
    manager->LoadPersistDomain(VorCommon::PersistDomain::Job, store);
    EXPECT_EQ(NewNotifications(), Texts{});
    change();
    EXPECT_EQ(NewNotifications(), Texts{std::string("2 ") + Assembly});
}

} // namespace
