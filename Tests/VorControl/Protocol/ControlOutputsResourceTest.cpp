#include "VorControl/Protocol/ControlOutputsResource.h"

#include "Tests/Support/MemoryStore.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/Protocol/ResourceFixture.h"
#include "VorControl/Protocol/ControlOutputsCommandResource.h"

namespace {

using Json = nlohmann::json;
using VorApi::RequestInfoEx;
using VorApi::VorDataTree;
using VorControl::Protocol::ControlOutputsCommandResource;

constexpr const char* MapCommands = "/controls/full/outputs/commands";
constexpr const char* AddEntry = "/controls/full/outputs/commands/add";

/// What is nested in the exception that the call throws, as "status text".
template <class Call>
std::string CauseOf(const Call& call) {
    try {
        call();
    } catch (const std::exception& e) {
        const auto* const nested = dynamic_cast<const std::nested_exception*>(&e);
        if (nested != nullptr) {
            const auto cause = Tests::FailureOf([&] { nested->rethrow_nested(); });
            return std::to_string(cause->status) + " " + cause->text;
        }
    }
    return "no cause";
}

class ControlOutputsResourceTest : public Tests::ResourceFixture {
protected:
    ControlOutputsResourceTest() {
        service->AddOutput(4, "s4");
        service->calls.clear();
        Listen(MapCommands);
    }

    std::size_t Entries() { return Read("/controls/full/outputs")["map"].Count(); }
};

TEST_F(ControlOutputsResourceTest, TheDocumentIsTheMapWithLinksToItsCommands) {
    const VorDataTree document = Read("/controls/full/outputs");
    EXPECT_EQ(document["map"].Dump(false), R"([{"outputId":4,"source":"s4"}])");
    EXPECT_FALSE(document.Contains("_schema"));
    EXPECT_EQ(ReadWithSchema("/controls/full/outputs")["_schema"]["properties"].Names(), document.Names());
    Texts links;
    for (const char* const command : {"add", "addAll", "remove", "removeAll", "compactId", "updateId"}) {
        links.push_back(std::string("link vor:command[] /controls/full/outputs/commands/") + command);
    }
    EXPECT_EQ(RelationsOf("/controls/full/outputs"), links);
}

TEST_F(ControlOutputsResourceTest, AServiceWithoutMapFailsWithTheCauseNested) {
    EXPECT_FAILURE(Read("/controls/bare/outputs"), yERROR_UNIMPLEMENTED, "Failed to convert bare output map");
    EXPECT_FAILURE(Read("/controls/x/outputs"), yERROR_NOT_FOUND, "Failed to convert x output map");
    EXPECT_EQ(CauseOf([&] { Read("/controls/x/outputs"); }), "-999 Control protocol type not recognized: 'x'.");
}

TEST_F(ControlOutputsResourceTest, AFailureThatIsNoSystemFailureHasStatus0AndUnlocksTheMap) {
    struct Broken : Vor::Params::Value<std::string> {
        void WriteValue(Vor::Properties::IValueWriter&) const override { throw std::runtime_error("broken"); }
    } broken;
    Instance().OutputsMapBeginLock();
    Instance().OutputsMap().Register("broken", broken);
    Instance().OutputsMapEndLock();
    EXPECT_FAILURE(Read("/controls/full/outputs"), yERROR, "Failed to convert full output map");
    EXPECT_NE(Tests::StatusOf([&] { Instance().OutputsMap(); }), yOK) << "still locked";
    Instance().OutputsMapBeginLock();
    Instance().OutputsMap().Deregister("broken");
    Instance().OutputsMapEndLock();
    EXPECT_EQ(Entries(), 1U);
}

TEST_F(ControlOutputsResourceTest, TheTextsAreTranslated) {
    const Tests::Translation text("beApp.ctrl", "Failed to convert %s output map", "Keine Karte: %s");
    EXPECT_FAILURE(Read("/controls/bare/outputs"), yERROR_UNIMPLEMENTED, "Keine Karte: bare");
}

TEST_F(ControlOutputsResourceTest, IsReadOnly) {
    EXPECT_TEXTLESS_FAILURE(Update("/controls/full/outputs", Json::object()), yERROR_READ_ONLY);
    EXPECT_TEXTLESS_FAILURE(Update(AddEntry, Json::object()), yERROR_UNIMPLEMENTED);
}

TEST_F(ControlOutputsResourceTest, CommandsAreListedAndDescribed) {
    const Texts items = RelationsOf(MapCommands);
    ASSERT_EQ(items.size(), 6U);
    EXPECT_EQ(items[0], "embed item[] /controls/full/outputs/commands/add");
    const VorDataTree document = Read(AddEntry);
    EXPECT_EQ(document["id"].AsText(), "add");
    EXPECT_TRUE(document["parameters"].Contains("outputId"));
    EXPECT_EQ(Tests::StatusOf([&] { Read(MapCommands + std::string("/x")); }), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(Read("/controls/bare/outputs/commands"), yERROR_UNIMPLEMENTED);
}

TEST_F(ControlOutputsResourceTest, ACommandChangesTheMapInTheBracketAndNotifies) {
    service->actions["BeginUpdateOutputsMap job "] = [this] { EXPECT_EQ(environ.gate.Depth(), 1); };
    EXPECT_EQ(Invoke(AddEntry, {{"outputId", 8}, {"parameters", {{"source", "s8"}}}}).Dump(false), "{}");
    EXPECT_EQ(service->Changes().front(), "BeginUpdateOutputsMap job ");
    EXPECT_EQ(service->Changes().back(), "EndUpdateOutputsMap job ");
    EXPECT_EQ(environ.gate.Depth(), 0);
    EXPECT_EQ(NewNotifications(), Texts{"2 /controls/full/outputs"});
    EXPECT_EQ(Read("/controls/full/outputs")["map"].Dump(false),
              R"([{"outputId":4,"source":"s4"},{"outputId":8,"source":"s8"}])");
}

TEST_F(ControlOutputsResourceTest, AFailedCommandLeavesTheBracketClosed) {
    EXPECT_FAILURE(Invoke(MapCommands + std::string("/x")), yERROR_NOT_FOUND, "Output connection map command error");
    EXPECT_FAILURE(Invoke(AddEntry, {{"outputId", "x"}}), yERROR_PARAMETER, "Output connection map command error");
    EXPECT_EQ(CauseOf([&] { Invoke(MapCommands + std::string("/x")); }),
              "-999 The command 'x' does not exist. No parameters available");
    EXPECT_EQ(environ.gate.Depth(), 0);
    EXPECT_EQ(service->Changes().back(), "EndUpdateOutputsMap job ");
    EXPECT_EQ(Entries(), 1U);
}

TEST_F(ControlOutputsResourceTest, AFailureOfTheEndIsReported) {
    service->actions["EndUpdateOutputsMap job "] = [] { Vor::Throw(yERROR_FULL, "no room"); };
    EXPECT_FAILURE(Invoke(AddEntry, {{"outputId", 8}, {"source", "s8"}}), yERROR_FULL,
                   "Failed to send output map update notification");
    EXPECT_EQ(environ.gate.Depth(), 0);
    EXPECT_FAILURE(Invoke(MapCommands + std::string("/x")), yERROR_NOT_FOUND, "Output connection map command error");
    EXPECT_EQ(environ.gate.Depth(), 0);
}

TEST_F(ControlOutputsResourceTest, ACommandOnAServiceWithoutOutputLogsAndReturnsNothing) {
    EXPECT_TRUE(Invoke("/controls/bare/outputs/commands/add").IsNull());
    EXPECT_EQ(log.Count(Vor::LevelInfo, "Protocol bare does not have an outputs map"), 1U);
    EXPECT_EQ(environ.gate.Depth(), 0);
}

TEST_F(ControlOutputsResourceTest, AnInvocationNeedsServiceAndCommand) {
    EXPECT_FAILURE(Invoke(MapCommands), yERROR_PARAMETER, "Request is missing command");
    auto& resource = As<ControlOutputsCommandResource>(ResourceAt(MapCommands));
    EXPECT_FAILURE(resource.Invoke(RequestInfoEx({}, false), VorDataTree()), yERROR_PARAMETER,
                   "Request is missing service name");
    VorApi::ResponseInfoEx response;
    VorDataTree data;
    EXPECT_TEXTLESS_FAILURE(resource.Document(RequestInfoEx({}, false), response, data), yERROR_PARAMETER);
}

TEST_F(ControlOutputsResourceTest, ChangesDuringALoadAreNotNotified) {
    manager->AddPersistenceLoadEventHandler([this](VorControl::IControlManager::PersistenceLoadOpState state) {
        if (state == VorControl::IControlManager::PersistenceLoadOpState::Begin) {
            service->NotifyOutputsInternalUpdateEventHandler(false);
        }
    });
    Tests::MemoryStore store;
    manager->LoadPersistDomain(VorCommon::PersistDomain::Job, store);
    EXPECT_EQ(NewNotifications(), Texts{});
    service->NotifyOutputsInternalUpdateEventHandler(false);
    EXPECT_EQ(NewNotifications(), Texts{"2 /controls/full/outputs"});
}

} // namespace
