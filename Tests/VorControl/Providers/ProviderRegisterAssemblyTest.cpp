#include "ProviderTest.h"
#include "Vor/Exception.h"
#include "yApi/yStatus.h"

#include <stdexcept>

namespace {

/// An assembly whose locking fails with the statuses that a test sets.
class StuckAssembly : public Tests::TestAssembly {
public:
    StuckAssembly()
        : TestAssembly(true, 0, 65534, "stuck") {}

    void BeginLock() const override {
        Vor::ThrowIfFailed(beginStatus);
        TestAssembly::BeginLock();
    }
    void EndLock() const override {
        TestAssembly::EndLock();
        Vor::ThrowIfFailed(endStatus);
    }

    yStatus beginStatus = yOK;
    yStatus endStatus = yOK;
};

/// A service that keeps the assemblies "a" and "b", of version "7", with the job.
class ProviderRegisterAssemblyTest : public Tests::ProviderTest {
protected:
    ProviderRegisterAssemblyTest() { provider.RegisterRegisterAssemblyGroup(Domain::Job); }

    void AddBoth() {
        service.AddAssembly("a");
        service.AddAssembly("b");
    }

    static std::string Block(const std::string& name, int outputId) {
        return R"({"type":"one","displayName":")" + name + R"(","outputId":)" + std::to_string(outputId) + "}";
    }
    static std::string Entry(const std::string& id, const std::string& blocks, const std::string& shown = "") {
        return R"({"properties":{"id":")" + id + R"(","displayName":")" + shown + R"("},"blocks":[)" + blocks + "]}";
    }
    static std::string Version(const std::string& id, const std::string& version = "7") {
        return R"({"id":")" + id + R"(","version":")" + version + "\"}";
    }
    static std::string Section(const std::string& entries, const std::string& versions) {
        return R"({"registerAssemblyList":[)" + entries + R"(],"registerAssemblyVersionList":[)" + versions + "]}";
    }

    std::string Blocks(const char* id) {
        std::string text;
        for (const auto& block : service.AssemblyOf(id).Places()) {
            text += block.name + "@" + std::to_string(block.first) + " ";
        }
        return text;
    }

    const std::string unsupported =
        "%1$s could not load the connection map %2$s configuration because the connection map is no longer supported "
        "by the service.";
    const std::string unsupportedWithoutName =
        "%1$s could not load a connection map configuration because the connection map is no longer supported by the "
        "service.";
    static std::string Loading(const std::string& id) {
        return "Display encountered an error while loading connection map " + id +
               ". Please check if the connection map data sources are correct.";
    }
    static std::string Updating(const std::string& id) {
        return "Display encountered an error while updating connection map " + id +
               ". Please check if the connection map data sources are correct.";
    }
};

} // namespace

// Save

TEST_F(ProviderRegisterAssemblyTest, AssembliesAreSavedInOrderWithTheirVersions) {
    AddBoth();
    service.AssemblyOf("b").AddEntries({{.type = "one", .outputId = 5, .displayName = "five"}});
    const Json section = Save();
    EXPECT_EQ(section.size(), 2U);
    const Json& list = section.at("registerAssemblyList");
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].at("properties").at("id"), "a");
    EXPECT_EQ(list[0].at("blocks"), Json::array());
    EXPECT_EQ(list[1].at("properties").at("id"), "b");
    EXPECT_EQ(list[1].at("attributes").at("outputIdMax"), 65534);
    ASSERT_EQ(list[1].at("blocks").size(), 1U);
    EXPECT_EQ(list[1].at("blocks")[0].at("displayName"), "five");
    EXPECT_EQ(section.at("registerAssemblyVersionList"),
              Json::parse(R"([{"id":"a","version":"7"},{"id":"b","version":"7"}])"));
    EXPECT_TEXTLESS_FAILURE(service.AssemblyOf("b").AddedRegisterBlocks(),
                            yERROR_STATE); // the lock isn't held any more
}

TEST_F(ProviderRegisterAssemblyTest, AnEmptyGroupIsSavedAsTwoEmptyLists) {
    EXPECT_EQ(Save(), Json::parse(R"({"registerAssemblyList":[],"registerAssemblyVersionList":[]})"));
}

TEST_F(ProviderRegisterAssemblyTest, AMissingGroupFailsTheSave) {
    service.domains.clear();
    Json section;
    EXPECT_TEXTLESS_FAILURE(provider.Save(Domain::Job, section), yERROR_NOT_FOUND);
    EXPECT_EQ(log.Count(Vor::LevelError,
                        "Display encountered an error setting up for persisting connection map into domain job"),
              1U);
    EXPECT_TRUE(section.is_null());
}

TEST_F(ProviderRegisterAssemblyTest, AnAssemblyWithoutAVersionFailsTheSave) {
    AddBoth();
    service.assemblyVersion = nullptr;
    Json section;
    EXPECT_TEXTLESS_FAILURE(provider.Save(Domain::Job, section), yERROR_NOT_FOUND);
    EXPECT_EQ(log.Count(Vor::LevelError, "Display does not have a version for register assembly a for domain job"), 1U);
    EXPECT_EQ(
        log.Count(Vor::LevelError, "Display encountered an error while persisting connection map a for domain job"),
        1U);
}

TEST_F(ProviderRegisterAssemblyTest, ALockThatFailsFailsTheSave) {
    const std::string text =
        "Display encountered error locking/unlocking connection map stuck for persisting into domain job";
    const auto assembly = std::make_shared<StuckAssembly>();
    service.group->Add(assembly);
    Json section;
    assembly->beginStatus = yERROR_BUSY;
    EXPECT_TEXTLESS_FAILURE(provider.Save(Domain::Job, section), yERROR_BUSY);
    EXPECT_EQ(log.Count(Vor::LevelError, text), 1U);
    assembly->beginStatus = yOK;
    assembly->endStatus = yERROR_TIMEOUT;
    EXPECT_TEXTLESS_FAILURE(provider.Save(Domain::Job, section), yERROR_TIMEOUT);
    EXPECT_EQ(log.Count(Vor::LevelError, text), 2U);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 2U);
}

TEST_F(ProviderRegisterAssemblyTest, WhatIsSavedIsLoadedAndSavedTheSame) {
    AddBoth();
    service.AssemblyOf("a").AddEntries({{.type = "scan", .outputId = 9, .dataSource = "profile/max"},
                                        {.type = "flexible", .outputId = 20, .registerCount = 11},
                                        {.type = "one", .outputId = 65534}});
    const std::string saved = Save().dump();
    service.RegisterAssemblyGroupReset(Domain::Job);
    EXPECT_EQ(Load(saved), Result::None);
    EXPECT_EQ(Save().dump(), saved);
}

// The service has a group only when it is asked first.
TEST_F(ProviderRegisterAssemblyTest, TheGroupIsTakenOnce) {
    AddBoth();
    int asked = 0;
    service.actions["RegisterAssemblyGroup"] = [&] {
        if (++asked > 1) {
            service.domains.clear();
        }
    };
    EXPECT_EQ(Save().at("registerAssemblyList").size(), 2U);
    EXPECT_EQ(asked, 1);
    asked = 0;
    EXPECT_EQ(Load(Section(Entry("c", ""), Version("c"))), Result::PartMissing);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(log.Count(Vor::LevelWarning,
                        "Display expected information for register assembly b but not found in the configuration for "
                        "domain job."),
              1U);
}

// Load: the lists

TEST_F(ProviderRegisterAssemblyTest, AServiceWithoutAGroupCannotLoadOne) {
    service.domains.clear();
    EXPECT_EQ(Load("{}"), Result::Failed);
    EXPECT_EQ(log.Count(Vor::LevelError,
                        "Display has no register assemblies to which to apply the configurations for domain job."),
              1U);
}

TEST_F(ProviderRegisterAssemblyTest, AMissingListIsToldToAServiceThatHasAssemblies) {
    AddBoth();
    service.AssemblyOf("a").AddEntries({{.type = "one", .displayName = "kept"}});
    for (const char* section :
         {"{}", "null", "[]", "7", R"(["registerAssemblyList"])", R"({"registerAssemblyList":null})",
          R"({"registerAssemblyList":{}})", R"({"registerAssemblyList":"a"})", R"({"registerAssemblyList":[]})"}) {
        log.Clear();
        EXPECT_EQ(Load(section), Result::None) << section;
        ExpectForUser(Vor::UserWarning,
                      "Display expected information for connection maps but none are found in the configuration. "
                      "Please check if the connection map data sources are correct.",
                      "%1$s expected information for connection maps but none are found in the configuration. Please "
                      "check if the connection map data sources are correct.");
        EXPECT_EQ(log.Count(Vor::LevelWarning,
                            "Display expected information for register assemblies but none are found in the "
                            "configuration for domain job."),
                  1U);
    }
    EXPECT_EQ(Blocks("a"), "kept@0 ");
}

TEST_F(ProviderRegisterAssemblyTest, AMissingListIsNoMatterWithoutAssemblies) {
    EXPECT_EQ(Load("{}"), Result::None);
    EXPECT_EQ(log.Count(Vor::LevelInfo, "Display register assembly configuration has no data to load for domain job"),
              1U);
    EXPECT_EQ(UserEntries(), 0U);
}

TEST_F(ProviderRegisterAssemblyTest, AnEntryWithoutBlocksKeepsAllFromLoading) {
    AddBoth();
    for (const char* entry : {"7", "null", "[]", "{}", R"({"properties":{"id":"b"}})", R"({"blocks":{}})"}) {
        log.Clear();
        EXPECT_EQ(Load(Section(Entry("a", Block("x", 0)) + "," + entry, Version("a") + "," + Version("b"))),
                  Result::Failed)
            << entry;
        EXPECT_EQ(log.Count(Vor::LevelError,
                            "Display register assembly configuration has incorrectly formatted register assembly block "
                            "list for domain job. Register assembly list will not be loaded."),
                  1U);
    }
    EXPECT_TRUE(service.Changes().empty());
    EXPECT_EQ(Blocks("a"), "");
}

TEST_F(ProviderRegisterAssemblyTest, AVersionListThatIsNoneKeepsAllFromLoading) {
    AddBoth();
    for (const char* versions : {"null", "7", "{}", "[]", "\"7\""}) {
        log.Clear();
        EXPECT_EQ(Load(R"({"registerAssemblyList":[)" + Entry("a", "") + R"(],"registerAssemblyVersionList":)" +
                       versions + "}"),
                  Result::Failed);
        EXPECT_EQ(log.Count(Vor::LevelError,
                            "Display register assembly configuration has incorrectly formatted register assembly "
                            "version list for domain job. Register assembly list will not be loaded."),
                  1U);
    }
    EXPECT_TRUE(service.Changes().empty());
}

TEST_F(ProviderRegisterAssemblyTest, ListsOfDifferentLengthsAreNotLoaded) {
    AddBoth();
    service.AddAssembly("c");
    EXPECT_EQ(Load(Section(Entry("a", Block("x", 0)) + "," + Entry("b", "") + "," + Entry("c", ""),
                           Version("a") + "," + Version("b"))),
              Result::Failed);
    EXPECT_EQ(log.Count(Vor::LevelError,
                        "Display register assembly configuration size (3) and the version list size (2) are not the "
                        "same. Register assembly list will not be loaded."),
              1U);
    EXPECT_TRUE(service.Changes().empty());
    EXPECT_EQ(Blocks("a"), "");
}

TEST_F(ProviderRegisterAssemblyTest, AVersionRecordThatLacksAFieldKeepsAllFromLoading) {
    AddBoth();
    for (const char* record : {"7", "{}", R"({"id":"b"})", R"({"version":"7"})", "[\"id\",\"version\"]"}) {
        log.Clear();
        EXPECT_EQ(Load(Section(Entry("a", "") + "," + Entry("b", ""), Version("a") + "," + record)), Result::Failed);
        EXPECT_EQ(log.Count(Vor::LevelError,
                            "Display register assembly version list is missing the id or version fields for domain "
                            "job."),
                  1U);
    }
    EXPECT_TRUE(service.Changes().empty());
}

// Load: the entries

TEST_F(ProviderRegisterAssemblyTest, EachAssemblyIsFilledInsideAnUpdateOfItsOwn) {
    AddBoth();
    service.AssemblyOf("a").AddEntries({{.type = "four", .displayName = "before"}});
    EXPECT_EQ(Load(Section(Entry("b", Block("x", 3)) + "," + Entry("a", Block("y", 9) + "," + Block("z", 4)),
                           Version("b") + "," + Version("a"))),
              Result::None);
    EXPECT_EQ(service.Changes(), (Calls{"BeginUpdateRegisterAssembly job b 7", "EndUpdateRegisterAssembly job b 7",
                                        "BeginUpdateRegisterAssembly job a 7", "EndUpdateRegisterAssembly job a 7"}));
    EXPECT_EQ(Blocks("a"), "z@4 y@9 ");
    EXPECT_EQ(Blocks("b"), "x@3 ");
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ProviderRegisterAssemblyTest, TheIdMayStandAmongTheAttributes) {
    service.AddAssembly("a");
    for (const char* entry :
         {R"({"attributes":{"id":"a"},"blocks":[]})", R"({"attributes":{"id":"a"},"properties":{},"blocks":[]})",
          R"({"attributes":{"id":"a"},"properties":7,"blocks":[]})",
          R"({"attributes":{"id":"b"},"properties":{"id":"a"},"blocks":[]})"}) {
        EXPECT_EQ(Load(Section(entry, Version("a"))), Result::None) << entry;
    }
}

TEST_F(ProviderRegisterAssemblyTest, AnEntryWithoutAnIdIsSkipped) {
    service.AddAssembly("a");
    for (const char* entry : {R"({"blocks":[]})", R"({"properties":{"id":""},"blocks":[]})",
                              R"({"properties":{"id":7},"attributes":[],"blocks":[]})"}) {
        log.Clear();
        EXPECT_EQ(
            Load(Section(std::string(entry) + "," + Entry("a", Block("x", 3)), Version("q") + "," + Version("a"))),
            Result::PartMissing);
        EXPECT_EQ(log.Count(Vor::LevelInfo,
                            "Display skipped loading a register assembly because it does not have an identifier for "
                            "domain job."),
                  1U);
        EXPECT_EQ(Blocks("a"), "x@3 ");
    }
}

TEST_F(ProviderRegisterAssemblyTest, AVersionOfAnotherIdIsAConflictAndTheOthersAreLoaded) {
    AddBoth();
    EXPECT_EQ(
        Load(Section(Entry("a", Block("x", 0)) + "," + Entry("b", Block("y", 1)), Version("q") + "," + Version("b"))),
        Result::Failed);
    ExpectThrown(Loading("a"),
                 "Display connection map a configuration conflicts with the version list id q information for domain "
                 "job.");
    ExpectThrown(Loading("a"), "-984");
    EXPECT_EQ(Blocks("a"), "");
    EXPECT_EQ(Blocks("b"), "y@1 ");
}

TEST_F(ProviderRegisterAssemblyTest, AnUnknownAssemblyIsToldAndTheOthersAreLoaded) {
    service.AddAssembly("a");
    EXPECT_EQ(
        Load(Section(Entry("q", "", "Old Map") + "," + Entry("a", Block("x", 3)), Version("q") + "," + Version("a"))),
        Result::PartMissing);
    ExpectForUser(Vor::UserWarning,
                  "Display could not load the connection map Old Map configuration because the connection map is no "
                  "longer supported by the service.",
                  unsupported);
    EXPECT_EQ(log.Count(Vor::LevelWarning,
                        "Display could not load part of the configuration because register assembly q is not found "
                        "for domain job"),
              1U);
    EXPECT_EQ(Blocks("a"), "x@3 ");
}

TEST_F(ProviderRegisterAssemblyTest, AnUnknownAssemblyWithoutANameIsToldWithoutOne) {
    service.AddAssembly("a");
    EXPECT_EQ(Load(Section(Entry("q", "") + "," + Entry("a", ""), Version("q") + "," + Version("a"))),
              Result::PartMissing);
    ExpectForUser(Vor::UserWarning,
                  "Display could not load a connection map configuration because the connection map is no longer "
                  "supported by the service.",
                  unsupportedWithoutName);
}

TEST_F(ProviderRegisterAssemblyTest, AMissingAssemblyIsToldAndKeepsItsContent) {
    AddBoth();
    service.AssemblyOf("b").AddEntries({{.type = "one", .displayName = "kept"}});
    EXPECT_EQ(Load(Section(Entry("a", Block("x", 3)), Version("a"))), Result::PartMissing);
    ExpectForUser(Vor::UserWarning,
                  "Display expected information for connection map shown but not found in the configuration. Please "
                  "review the connection map details.",
                  "%1$s expected information for connection map %2$s but not found in the configuration. Please "
                  "review the connection map details.");
    EXPECT_EQ(log.Count(Vor::LevelWarning,
                        "Display expected information for register assembly b but not found in the configuration for "
                        "domain job."),
              1U);
    EXPECT_EQ(Blocks("b"), "kept@0 ");
}

TEST_F(ProviderRegisterAssemblyTest, EachLoadLooksForMissingAssembliesAnew) {
    AddBoth();
    EXPECT_EQ(Load(Section(Entry("b", ""), Version("b"))), Result::PartMissing);
    EXPECT_EQ(Load(Section(Entry("a", ""), Version("a"))), Result::PartMissing);
    EXPECT_EQ(Load(Section(Entry("a", "") + "," + Entry("b", ""), Version("a") + "," + Version("b"))), Result::None);
}

TEST_F(ProviderRegisterAssemblyTest, OfTwoEntriesWithOneIdTheLastStays) {
    service.AddAssembly("a");
    EXPECT_EQ(
        Load(Section(Entry("a", Block("x", 3)) + "," + Entry("a", Block("y", 4)), Version("a") + "," + Version("a"))),
        Result::None);
    EXPECT_EQ(Blocks("a"), "y@4 ");
}

TEST_F(ProviderRegisterAssemblyTest, AnIdEndsAtAZeroCharacter) {
    service.AddAssembly("a");
    EXPECT_EQ(Load(Section(Entry("a\\u0000b", Block("x", 3)), Version("a"))), Result::None);
    EXPECT_EQ(Blocks("a"), "x@3 ");
}

// Load: the blocks

TEST_F(ProviderRegisterAssemblyTest, AnAssemblyThatTheServiceDoesNotGiveIsTold) {
    service.AddAssembly("a");
    service.refusesUpdates = true;
    EXPECT_EQ(Load(Section(Entry("a", "", "Map A"), Version("a", "6"))), Result::PartMissing);
    EXPECT_EQ(service.Changes(), Calls{"BeginUpdateRegisterAssembly job a 6"});
    ExpectForUser(Vor::UserWarning,
                  "Display could not load the connection map Map A configuration because the connection map is no "
                  "longer supported by the service.",
                  unsupported);
    EXPECT_EQ(log.Count(Vor::LevelWarning,
                        "Display could not load part of the configuration because version 6 register assembly a is "
                        "missing for domain job"),
              1U);
    log.Clear();
    EXPECT_EQ(Load(Section(Entry("a", ""), Version("a", "6"))), Result::PartMissing);
    ExpectForUser(Vor::UserWarning,
                  "Display could not load a connection map configuration because the connection map is no longer "
                  "supported by the service.",
                  unsupportedWithoutName);
}

TEST_F(ProviderRegisterAssemblyTest, BlocksThatAreAddedOtherwiseThanToldAreReported) {
    service.AddAssembly("a");
    service.supported = {"6"};
    EXPECT_EQ(Load(Section(Entry("a", R"({"type":"one","registerCount":3,"outputId":2})"), Version("a", "6"))),
              Result::AssemblyInPart);
    EXPECT_EQ(service.AssemblyOf("a").Places().size(), 1U);
    EXPECT_EQ(log.Count(Vor::LevelInfo, "Display register assembly a was upgraded from version \"6\" to \"7\"."), 0U)
        << "the version isn't checked then";
}

TEST_F(ProviderRegisterAssemblyTest, BlocksThatCannotBeAddedLeaveTheDefaultOnes) {
    const std::vector<std::string> refused = {R"({"type":"unknown"})",
                                              R"({"outputId":3})",
                                              Block("x", 3) + "," + Block("y", 3),
                                              R"({"type":7})",
                                              "7",
                                              R"({"type":"one","outputId":65536})"};
    auto required = Tests::TypeParams("required", 1);
    required.minInstanceCount = 1;
    service.AddAssembly("a").AddType(std::move(required));
    service.AddAssembly("b");
    for (const std::string& blocks : refused) {
        log.Clear();
        service.calls.clear();
        EXPECT_EQ(
            Load(Section(Entry("a", blocks) + "," + Entry("b", Block("z", 1)), Version("a") + "," + Version("b"))),
            Result::Failed)
            << blocks;
        EXPECT_EQ(service.AssemblyOf("a").Places().size(), 1U);
        EXPECT_EQ(service.AssemblyOf("a").Block(0)->Type(), std::string("required"));
        EXPECT_EQ(Blocks("b"), "z@1 ");
        ExpectThrown(Updating("a"), "");
        EXPECT_EQ(service.Changes().at(1), "EndUpdateRegisterAssembly job a 7");
    }
}

TEST_F(ProviderRegisterAssemblyTest, AnUpdateThatCannotBeginOrEndIsTold) {
    for (const char* call : {"BeginUpdateRegisterAssembly job a 7", "EndUpdateRegisterAssembly job a 7"}) {
        service.group = std::make_shared<VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup>();
        AddBoth();
        log.Clear();
        service.actions.clear();
        service.actions[call] = [] { Vor::Throw(yERROR_CONFLICT, "not now"); };
        EXPECT_EQ(Load(Section(Entry("a", "") + "," + Entry("b", Block("z", 1)), Version("a") + "," + Version("b"))),
                  Result::Failed);
        ExpectThrown(Loading("a"), "not now");
        EXPECT_EQ(Blocks("b"), "z@1 ");
    }
}

TEST_F(ProviderRegisterAssemblyTest, AnUpdateEndsAlsoAfterAForeignException) {
    class ThrowingAssembly : public Tests::TestAssembly {
    public:
        ThrowingAssembly()
            : TestAssembly(true, 0, 65534, "a") {}
        void ResetRegisterAssembly() override { throw 7; }
    };
    service.group->Add(std::make_shared<ThrowingAssembly>());
    EXPECT_EQ(Load(Section(Entry("a", ""), Version("a"))), Result::Failed);
    const Calls changes = service.Changes();
    EXPECT_EQ(std::count(changes.begin(), changes.end(), "EndUpdateRegisterAssembly job a 7"), 1);
    ExpectThrown("EXCEPTION THROWN: ", "unknown exception");
}

TEST_F(ProviderRegisterAssemblyTest, AFullSetOfBlocksIsLoaded) {
    auto many = Tests::TypeParams("many", 1);
    many.maxInstanceCount = 65535;
    service.AddAssembly("a").AddType(std::move(many));
    Json section = Json::parse(Section(Entry("a", ""), Version("a")));
    Json& blocks = section["registerAssemblyList"][0]["blocks"];
    for (int id = 0; id < 65535; ++id) {
        blocks.push_back({{"type", "many"}, {"outputId", id}});
    }
    EXPECT_EQ(provider.Load(Domain::Job, section), Result::None);
    EXPECT_EQ(service.AssemblyOf("a").AddedRegisterBlocksCount(), 65535U);
    blocks.push_back({{"type", "many"}});
    blocks.push_back({{"type", "many"}});
    EXPECT_EQ(provider.Load(Domain::Job, section), Result::Failed);
    EXPECT_EQ(service.AssemblyOf("a").AddedRegisterBlocksCount(), 0U);
    ExpectThrown(Updating("a"), "");
}

// Load: the versions

TEST_F(ProviderRegisterAssemblyTest, AFileWithoutAVersionListIsLoadedAndTold) {
    AddBoth();
    EXPECT_EQ(Load(R"({"registerAssemblyList":[)" + Entry("a", Block("x", 3)) + "," + Entry("b", Block("y", 4)) + "]}"),
              Result::Failed);
    EXPECT_EQ(service.Changes().front(), "BeginUpdateRegisterAssembly job a ");
    EXPECT_EQ(Blocks("a"), "x@3 ");
    EXPECT_EQ(Blocks("b"), "y@4 ");
    ExpectThrown(Loading("a"),
                 "Display connection map a configuration does not have version information in domain job");
    ExpectThrown(Loading("b"),
                 "Display connection map b configuration does not have version information in domain job");
}

TEST_F(ProviderRegisterAssemblyTest, AVersionThatIsNoTextIsNone) {
    service.AddAssembly("a");
    for (const char* version : {"null", "7", "{}"}) {
        log.Clear();
        EXPECT_EQ(Load(Section(Entry("a", Block("x", 3)), std::string(R"({"id":"a","version":)") + version + "}")),
                  Result::Failed);
        ExpectThrown(Loading("a"),
                     "Display connection map a configuration does not have version information in domain job");
    }
}

TEST_F(ProviderRegisterAssemblyTest, AServiceWithoutAVersionOfItsOwnIsTold) {
    service.AddAssembly("a");
    service.assemblyVersion = nullptr;
    EXPECT_EQ(Load(Section(Entry("a", Block("x", 3)), Version("a"))), Result::Failed);
    ExpectThrown(Loading("a"),
                 "Display does not have the service's connection map a version information in domain job");
    EXPECT_EQ(Blocks("a"), "x@3 ");
}

TEST_F(ProviderRegisterAssemblyTest, ASupportedVersionIsUpgraded) {
    service.AddAssembly("a");
    service.supported = {"6"};
    EXPECT_EQ(Load(Section(Entry("a", Block("x", 3), "Map A"), Version("a", "6"))), Result::Upgraded);
    EXPECT_EQ(Blocks("a"), "x@3 ");
    ExpectForUser(Vor::UserInfo,
                  "Display connection map Map A was upgraded from version \"6\" to \"7\". Please review the connection "
                  "map details.",
                  "%1$s connection map %2$s was upgraded from version \"%3$s\" to \"%4$s\". Please review the "
                  "connection map details.");
    EXPECT_EQ(log.Count(Vor::LevelInfo, "Display register assembly a was upgraded from version \"6\" to \"7\"."), 1U);
}

TEST_F(ProviderRegisterAssemblyTest, AnUnsupportedVersionIsAppliedAndTold) {
    service.AddAssembly("a");
    EXPECT_EQ(Load(Section(Entry("a", Block("x", 3)), Version("a", "6"))), Result::UnsupportedUpgrade);
    EXPECT_EQ(Blocks("a"), "x@3 ");
    ExpectForUser(Vor::UserWarning,
                  "Display connection map a was upgraded from version \"6\" to \"7\". This upgrade path is not "
                  "supported. Please review the connection map details.",
                  "%1$s connection map %2$s was upgraded from version \"%3$s\" to \"%4$s\". This upgrade path is not "
                  "supported. Please review the connection map details.");
    EXPECT_EQ(log.Count(Vor::LevelWarning,
                        "Display register assembly a was upgraded from version \"6\" to \"7\". This upgrade path is "
                        "not supported."),
              1U);
}

TEST_F(ProviderRegisterAssemblyTest, TheReportOfTheParametersComesFirst) {
    provider.RegisterParams(Domain::Job);
    service.AddAssembly("a");
    service.supported = {"1"};
    Json section = Json::parse(Section(Entry("q", ""), Version("q")));
    section["parameters"] = {{"port", 7}};
    section["parametersVersion"] = "1";
    EXPECT_EQ(provider.Load(Domain::Job, section), Result::Upgraded);
    EXPECT_EQ(UserEntries(), 3U);
}
