#include "Sensor/SensorTools.h"

#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/RecordingParser.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/MemoryStore.h"
#include "Vor/Logging.h"
#include "VorCommon/IPersistRegistrar.h"

#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor {
namespace {

using nlohmann::json;
using VorCommon::PersistDomain;

constexpr const char* Entry = "/sensor/tools.json";
constexpr double Infinity = std::numeric_limits<double>::infinity();

class Registrar : public VorCommon::IPersistRegistrar {
public:
    unsigned long long Register(VorCommon::IPersistHandler&, const std::string&) override { return ++registered; }
    void Deregister(unsigned long long) override { --registered; }
    void Announce(VorCommon::IPersistHandler&, PersistDomain domain, int) override {
        EXPECT_EQ(domain, PersistDomain::Job);
        ++announced;
    }

    unsigned long long registered = 0;
    int announced = 0;
};

class SensorToolsTest : public testing::Test {
protected:
    SensorToolsTest() {
        tools->ChangedEvent().Add([this](const std::string& id) { changed.push_back(id); });
    }

    void Load(const std::string& text) {
        store.files[Entry] = text;
        tools->LoadPersistDomain(PersistDomain::Job, store);
    }
    void Load(const json& limits) { Load(json{{"version", "1"}, {"tools", limits}}.dump()); }
    json Saved() {
        tools->SavePersistDomain(PersistDomain::Job, store);
        return store.Exists(Entry) ? json::parse(store.files.at(Entry)) : json();
    }
    ToolLimits LimitsOf(const std::string& id) const { return tools->Find(id)->limits; }

    const Scan::Recording recording = Scan::RecordingParser::Parse("frame,x,z\n0,0,5\n", "part.csv");
    Registrar registrar;
    std::vector<Scan::Limits> applied;
    std::vector<std::string> changed;
    Tests::MemoryStore store;
    Vor::LogCapture log;
    std::optional<SensorTools> tools{
        std::in_place, recording, [this](std::vector<Scan::Limits> limits) { applied = std::move(limits); }, registrar};
};

TEST_F(SensorToolsTest, ThereIsOneForEachMeasurement) {
    std::vector<std::string> ids;
    for (const Tool& tool : tools->All()) {
        ids.push_back(tool.id + " " + tool.source + " " + tool.displayName + " " + tool.unit.name);
        EXPECT_EQ(tool.limits, ToolLimits());
    }
    EXPECT_EQ(ids, (std::vector<std::string>{
                       "profile-max profile/max Maximum Height mm", "profile-min profile/min Minimum Height mm",
                       "profile-mean profile/mean Mean Height mm", "profile-width profile/width Width mm",
                       "profile-points profile/points Number of Points "}));
    EXPECT_EQ(tools->Find("profile-text"), nullptr);
    EXPECT_TRUE(applied.empty());
}

TEST_F(SensorToolsTest, ChangedLimitsAreAppliedAndAnnounced) {
    tools->SetLimits("profile-min", {.low = 1, .high = 2});
    ASSERT_EQ(applied.size(), 7U) << "one for each data source";
    EXPECT_EQ(applied[1].least, 1);
    EXPECT_EQ(applied[1].greatest, 2);
    EXPECT_EQ(applied[0].least, -Infinity);
    EXPECT_EQ(applied[0].greatest, Infinity);
    EXPECT_EQ(registrar.announced, 1);
    EXPECT_EQ(changed, std::vector<std::string>{"profile-min"});
    EXPECT_EQ(tools->Find("profile-min")->revision, 2U);
    EXPECT_EQ(tools->Find("profile-max")->revision, 1U);

    tools->SetLimits("profile-min", {.low = 1, .high = 2});
    EXPECT_EQ(registrar.announced, 1) << "nothing has changed";
    EXPECT_EQ(changed.size(), 1U);
    EXPECT_EQ(tools->Find("profile-min")->revision, 2U);
    EXPECT_FAILURE(tools->SetLimits("profile-text", {}), yERROR_NOT_FOUND, "There is no tool 'profile-text'.");
}

TEST_F(SensorToolsTest, AnEndOfTheRangeIsNoLimit) {
    tools->SetLimits("profile-max", {.low = -1e9, .high = 3});
    EXPECT_EQ(applied[0].Decide(-1e300), 1);
    EXPECT_EQ(applied[0].Decide(3.5), 0);
    tools->SetLimits("profile-max", {.low = 3, .high = 1e9});
    EXPECT_EQ(applied[0].Decide(1e300), 1);
    EXPECT_EQ(applied[0].Decide(2.5), 0);
}

TEST_F(SensorToolsTest, AreSavedInTheJobAndLoadedFromIt) {
    EXPECT_EQ(Saved(), json()) << "without limits there is no entry";
    tools->SetLimits("profile-max", {.high = 2.5});
    EXPECT_EQ(Saved(), (json{{"version", "1"}, {"tools", {{"profile-max", {{"high", 2.5}}}}}}));
    tools->SetLimits("profile-max", {});
    changed.clear();
    registrar.announced = 0;
    Load(json{{"profile-max", {{"high", 2.5}}}});
    EXPECT_EQ(LimitsOf("profile-max"), (ToolLimits{.high = 2.5}));
    EXPECT_EQ(applied[0].greatest, 2.5);
    EXPECT_EQ(changed, std::vector<std::string>{""});
    EXPECT_EQ(registrar.announced, 0);
    EXPECT_EQ(tools->Find("profile-max")->revision, 4U);
    Load(json{{"profile-max", {{"high", 2.5}}}});
    EXPECT_EQ(changed.size(), 1U) << "the same limits";
    EXPECT_EQ(tools->Find("profile-max")->revision, 4U);
}

TEST_F(SensorToolsTest, AJobWithoutThemHasTheDefaults) {
    tools->SetLimits("profile-max", {.high = 2.5});
    tools->LoadPersistDomain(PersistDomain::Workspace, store);
    tools->InitPersistDomain(PersistDomain::Workspace, store);
    EXPECT_EQ(LimitsOf("profile-max"), (ToolLimits{.high = 2.5}));
    tools->LoadPersistDomain(PersistDomain::Job, store);
    EXPECT_EQ(LimitsOf("profile-max"), ToolLimits());
    EXPECT_EQ(applied[0].greatest, Infinity);

    tools->SetLimits("profile-max", {.high = 2.5});
    tools->SavePersistDomain(PersistDomain::Workspace, store);
    EXPECT_TRUE(store.files.empty());
    tools->InitPersistDomain(PersistDomain::Job, store);
    EXPECT_EQ(LimitsOf("profile-max"), ToolLimits());
    EXPECT_EQ(applied[0].greatest, Infinity);
}

TEST_F(SensorToolsTest, UnknownToolsAreNamedAndKept) {
    json limits = {{"profile-max", {{"high", 2}}}, {"profile-new", {{"threshold", 3}}}, {"values-gap", 7}};
    Load(limits);
    EXPECT_TRUE(log.Contains(Vor::UserWarning, "The job has limits of tools that the sensor doesn't have, and keeps "
                                               "them: profile-new, values-gap."));
    EXPECT_EQ(registrar.announced, 0);
    EXPECT_EQ(Saved().at("tools"), limits);
    tools->SetLimits("profile-max", {.high = 3});
    limits["profile-max"]["high"] = 3;
    EXPECT_EQ(Saved().at("tools"), limits);
}

TEST_F(SensorToolsTest, OfManyUnknownToolsTheFirstAreNamed) {
    json limits = json::object();
    for (char name = 'a'; name < 'm'; ++name) {
        limits[std::string(1, name)] = json::object();
    }
    Load(limits);
    EXPECT_TRUE(log.Contains(Vor::UserWarning, "The job has limits of tools that the sensor doesn't have, and keeps "
                                               "them: a, b, c, d, e, f, g, h, i, j and 2 more."));
}

TEST_F(SensorToolsTest, WrongLimitsAreRefusedAsAWhole) {
    tools->SetLimits("profile-max", {.high = 2.5});
    registrar.announced = 0;
    Load(json{{"profile-max", {{"high", 3}}}, {"profile-min", {{"low", "x"}}}, {"profile-new", 7}});
    EXPECT_TRUE(log.Contains(Vor::UserError,
                             "The limits of the tools weren't loaded, so every value is accepted. Entry "
                             "'sensor/tools.json': tools/profile-min/low: expected a number from -1000000000 to "
                             "1000000000 but got a string."));
    EXPECT_EQ(LimitsOf("profile-max"), ToolLimits());
    EXPECT_EQ(applied[0].greatest, Infinity);
    EXPECT_EQ(registrar.announced, 1) << "they differ from those of the job";
    EXPECT_EQ(Saved().at("tools"), (json{{"profile-new", 7}}));
}

TEST_F(SensorToolsTest, AnEntryThatCannotBeReadIsRefusedAndReplaced) {
    for (const char* text : {"{", "[]", R"({"version":"2","tools":{"profile-max":{"high":3}}})"}) {
        registrar.announced = 0;
        log.Clear();
        Load(std::string(text));
        EXPECT_EQ(log.CountLevel(Vor::UserError), 1U) << text;
        EXPECT_EQ(LimitsOf("profile-max"), ToolLimits()) << text;
        EXPECT_EQ(registrar.announced, 1) << text;
        EXPECT_EQ(Saved(), (json{{"version", "1"}, {"tools", json::object()}})) << text;
    }
}

TEST_F(SensorToolsTest, AStoreThatCannotBeReadLeavesThemWithoutLimits) {
    tools->SetLimits("profile-max", {.high = 2.5});
    store.files[Entry] = "{}";
    store.readStatus = yERROR_TIMEOUT;
    tools->LoadPersistDomain(PersistDomain::Job, store);
    EXPECT_EQ(LimitsOf("profile-max"), ToolLimits());
    EXPECT_EQ(log.CountLevel(Vor::UserError), 1U);
}

TEST_F(SensorToolsTest, NothingOfThemRemainsWithTheRegistrar) {
    EXPECT_EQ(registrar.registered, 1U);
    tools.reset();
    EXPECT_EQ(registrar.registered, 0U);
}

} // namespace
} // namespace Sensor
