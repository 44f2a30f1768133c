#include "Sensor/Resources/Revisions.h"

#include "Tests/Support/MemoryStore.h"
#include "Tests/VorControl/Protocol/ResourceFixture.h"

namespace {

using Json = nlohmann::json;
using VorCommon::PersistDomain;

constexpr const char* Service = "/controls/full";
constexpr const char* AddBlock = "/controls/full/registerAssemblies/a1/commands/add";
constexpr const char* AddOutput = "/controls/full/outputs/commands/add";

class RevisionsTest : public Tests::ResourceFixture {
protected:
    RevisionsTest() {
        revisions->StartedOrStoppedEvent().Add([this](const std::string& path) { started.push_back(path); });
    }

    std::string Tag(const std::string& path = Service) const { return revisions->TagOf(path).value_or("none"); }
    /// By how much the revision has risen since the last call.
    int Risen() {
        const std::string tag = Tag();
        const int now = std::stoi(tag.substr(tag.find('-') + 1));
        return now - std::exchange(revision, now);
    }
    static Json Block(int outputId) { return {{"blocks", {{{"type", "one"}, {"outputId", outputId}}}}}; }

    std::unique_ptr<Sensor::Resources::Revisions> revisions =
        std::make_unique<Sensor::Resources::Revisions>("b0", *manager);
    int revision = 1;
    Texts started;
};

TEST_F(RevisionsTest, EachPathBelowAServiceHasItsTagButItsFigures) {
    EXPECT_EQ(Tag(), "\"b0-1\"");
    for (const char* path :
         {"/controls/full/", "/controls/full/outputs", "/controls/full/outputs/", "/%63ontrols/%66ull",
          "/controls/full/registerAssemblies/a1/commands/add", "/controls/bare", "/controls/full/metrics/x"}) {
        EXPECT_EQ(Tag(path), Tag()) << path;
    }
    for (const char* path : {"/controls", "/controls/", "/controls/nobody", "/controls/full/metrics",
                             "/controls/full/metrics/", "/controls/full/m%65trics", "/controlTypes", "/", "", "full",
                             "/controls/%", "/controls/%00", "/controls//full"}) {
        EXPECT_EQ(Tag(path), "none") << path;
    }
}

TEST_F(RevisionsTest, ParametersThatChangeRaiseTheRevision) {
    Update(Service, {{"parameters", {{"port", 503}}}});
    EXPECT_EQ(Risen(), 1);
    EXPECT_EQ(Tag("/controls/bare"), "\"b0-1\"");
    Update(Service, {{"parameters", {{"port", 503}}}});
    Update(Service, {{"parameters", Json::object()}});
    Update(Service, Json::object());
    EXPECT_EQ(Risen(), 0) << "nothing has changed";
    EXPECT_NE(Tests::StatusOf([&] { Update(Service, {{"parameters", {{"port", "x"}}}}); }), yOK);
    EXPECT_EQ(Risen(), 0) << "refused";
    Update(Service, {{"parameters", {{"port", 502}}}});
    EXPECT_EQ(Risen(), 1) << "another state, although it was there before";
}

TEST_F(RevisionsTest, BlocksThatChangeRaiseTheRevision) {
    Invoke(AddBlock, Block(3));
    EXPECT_EQ(Risen(), 1);
    EXPECT_NE(Tests::StatusOf([&] { Invoke(AddBlock, Block(3)); }), yOK);
    EXPECT_EQ(Risen(), 0) << "refused";
    Invoke("/controls/full/registerAssemblies/a1/commands/update",
           {{"outputId", 3}, {"newParams", {{"displayName", "other"}}}});
    EXPECT_EQ(Risen(), 1);
    Invoke("/controls/full/registerAssemblies/a1/commands/compact", {{"startingOutputId", 3}});
    EXPECT_EQ(Risen(), 0) << "nothing has moved";
    Invoke("/controls/full/registerAssemblies/a1/commands/compact", {{"startingOutputId", 4}});
    EXPECT_EQ(Risen(), 1);
}

TEST_F(RevisionsTest, AnOutputMapThatChangesRaisesTheRevision) {
    Invoke(AddOutput, {{"outputId", 4}, {"source", "s"}});
    EXPECT_EQ(Risen(), 1);
    EXPECT_NE(Tests::StatusOf([&] { Invoke(AddOutput, {{"outputId", 5}, {"source", "s"}}); }), yOK);
    EXPECT_EQ(Risen(), 0) << "refused";
    Invoke("/controls/full/outputs/commands/removeAll");
    EXPECT_EQ(Risen(), 1);
    Invoke("/controls/full/outputs/commands/removeAll");
    EXPECT_EQ(Risen(), 0) << "it was empty";
}

TEST_F(RevisionsTest, EachStartAndStopRaisesTheRevision) {
    Update(Service, {{"enabled", true}});
    EXPECT_EQ(Risen(), 1);
    EXPECT_EQ(std::exchange(started, {}), Texts{Service});
    Update(Service, {{"enabled", true}});
    EXPECT_EQ(Risen(), 1) << "it is started anew";
    started.clear();
    Instance().Enable(false);
    EXPECT_EQ(Risen(), 1);
    EXPECT_EQ(std::exchange(started, {}), Texts{Service});
    Update(Service, {{"enabled", false}});
    EXPECT_EQ(Risen(), 0) << "it is stopped";
    EXPECT_TRUE(started.empty());
}

TEST_F(RevisionsTest, ItNoticesAStopOfAServiceThatWasStartedBefore) {
    Instance().Enable(true);
    revisions = std::make_unique<Sensor::Resources::Revisions>("b0", *manager);
    Instance().Enable(false);
    EXPECT_EQ(Risen(), 1);
}

TEST_F(RevisionsTest, AStopThatFailsRaisesTheRevision) {
    Instance().Enable(true);
    EXPECT_EQ(Risen(), 1);
    service->actions["Stop"] = [] { Vor::Throw(yERROR_TIMEOUT, "it hangs"); };
    Instance().Enable(false);
    EXPECT_EQ(Risen(), 1);
    service->actions.clear();
    Instance().Enable(false);
    EXPECT_EQ(Risen(), 1) << "its failure is over";
}

TEST_F(RevisionsTest, AStartThatFailsAgainAsBeforeRaisesItOnce) {
    service->actions["Start"] = [] { Vor::Throw(yERROR_CONFLICT, "port 502 is taken"); };
    Instance().Enable(true);
    EXPECT_EQ(Risen(), 1);
    Instance().Enable(true);
    EXPECT_EQ(Risen(), 0);
    EXPECT_EQ(started.size(), 1U);
    service->actions["Start"] = [] { Vor::Throw(yERROR_CONFLICT, "port 503 is taken"); };
    Instance().Enable(true);
    EXPECT_EQ(Risen(), 1);
    service->actions.clear();
    Instance().Enable(true);
    EXPECT_EQ(Risen(), 1);
}

TEST_F(RevisionsTest, ALoadRaisesEachRevisionOnceAtItsEnd) {
    manager->AddPersistenceLoadEventHandler([this](VorControl::IControlManager::PersistenceLoadOpState state) {
        if (state == VorControl::IControlManager::PersistenceLoadOpState::Begin) {
            Update(Service, {{"enabled", true}, {"parameters", {{"port", 503}}}});
            Invoke(AddBlock, Block(3));
            Invoke(AddOutput, {{"outputId", 4}, {"source", "s"}});
            EXPECT_EQ(Risen(), 0);
        }
    });
    Tests::MemoryStore store;
    manager->LoadPersistDomain(PersistDomain::Job, store);
    EXPECT_EQ(Risen(), 1);
    EXPECT_EQ(Tag("/controls/bare"), "\"b0-2\"");
    EXPECT_TRUE(started.empty());
    Update(Service, {{"parameters", {{"port", 503}}}});
    EXPECT_EQ(Risen(), 0) << "compared with what the load has left";
}

TEST_F(RevisionsTest, NothingRemainsOfItAtItsEnd) {
    revisions.reset();
    Tests::MemoryStore store;
    manager->LoadPersistDomain(PersistDomain::Job, store);
    Update(Service, {{"enabled", true}, {"parameters", {{"port", 503}}}});
    Invoke(AddBlock, Block(3));
    Invoke(AddOutput, {{"outputId", 4}, {"source", "s"}});
    EXPECT_TRUE(started.empty());
}

} // namespace
