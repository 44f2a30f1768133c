#include "Tests/Platform/VorCommon/PersistManagerFixture.h"
#include "Tests/Support/Failure.h"
#include "Vor/Logging.h"
#include "VorCommon/LiveJob.h"

using namespace Tests;

namespace {

/// The job "part" is loaded, there is a job "demo" that the user has changed, and each handler has been called.
class PersistRestoreTest : public PersistManagerTest {
protected:
    PersistRestoreTest() {
        MakeFiles();
        ArchiveFile(demoPath).Write({{"setting", Bytes("by the user")}, {"extra", Bytes("by the user")}});
        environ.jobLoaded = [this](const std::string& fileName) { notified.push_back(fileName); };
        Start();
        manager->Register(second, "");
        manager->Load();
        calls.clear();
    }

    static void Fill(IPersistStore& store) {
        Put(store, "/setting", "fresh");
        Put(store, "/controls/x/config.json", "{}");
    }

    const std::string demoPath = folder.File("jobs/demo.vrjob");
    Names notified;
};

} // namespace

TEST_F(PersistRestoreTest, BothDomainsAreInitialisedAndThenTheFreshJobIsLoaded) {
    std::string content;
    first.onLoad = [&](PersistDomain, const IPersistStore& store) { content = Get(store, "/setting"); };
    manager->Restore("demo", Fill);
    EXPECT_EQ(calls, (Names{"first init workspace", "second init workspace", "first init job", "second init job",
                            "first load job", "second load job"}));
    EXPECT_EQ(content, "fresh");
    EXPECT_EQ(manager->LoadedJob(), "demo.vrjob");
    EXPECT_EQ(manager->FilePath(PersistDomain::Job), demoPath);
    EXPECT_EQ(notified, Names{"demo.vrjob"});
}

TEST_F(PersistRestoreTest, TheMainLoopIsBlockedFromTheFirstHandlerToTheLast) {
    std::vector<bool> seen;
    first.onInit = [&](PersistDomain, IPersistStore&) { seen.push_back(cache.IsMainLoopBlocked()); };
    first.onLoad = [&](PersistDomain, const IPersistStore&) { seen.push_back(cache.IsMainLoopBlocked()); };
    manager->Restore("demo", Fill);
    EXPECT_EQ(seen, (std::vector<bool>{true, true, true}));
    EXPECT_FALSE(cache.IsMainLoopBlocked());
}

TEST_F(PersistRestoreTest, TheFilesAreReplacedWhenItReturnsAndOtherJobsStay) {
    first.onInit = [](PersistDomain domain, IPersistStore& store) {
        if (domain == PersistDomain::Workspace) {
            EXPECT_FALSE(store.Exists("/setting"));
            Put(store, "/data", "default");
        }
    };
    manager->Restore("demo", Fill);
    EXPECT_EQ(Entry(demoPath, "setting"), "fresh");
    EXPECT_EQ(Entry(demoPath, "extra"), "(none)");
    EXPECT_EQ(Entry(workspacePath, "data"), "default");
    EXPECT_EQ(Entry(workspacePath, "setting"), "(none)");
    EXPECT_EQ(Entry(jobPath, "setting"), "stored");
}

TEST_F(PersistRestoreTest, AWorkspaceWithoutDefaultsHasNoFileAfterwards) {
    manager->Restore("demo", Fill);
    EXPECT_FALSE(std::filesystem::exists(workspacePath));
}

TEST_F(PersistRestoreTest, TheContentOfTheJobReplacesWhatInitialisingWrote) {
    first.onInit = [](PersistDomain domain, IPersistStore& store) {
        if (domain == PersistDomain::Job) {
            EXPECT_FALSE(store.Exists("/setting"));
            Put(store, "/setting", "default");
            Put(store, "/more", "default");
        }
    };
    manager->Restore("demo", Fill);
    EXPECT_EQ(Entry(demoPath, "setting"), "fresh");
    EXPECT_EQ(Entry(demoPath, "more"), "default");
}

TEST_F(PersistRestoreTest, TheLoadedJobMayBeTheRestoredOne) {
    manager->LoadJob("demo");
    manager->Restore("demo", Fill);
    EXPECT_EQ(Entry(demoPath, "extra"), "(none)");
    EXPECT_EQ(notified, (Names{"demo.vrjob", "demo.vrjob"}));
}

TEST_F(PersistRestoreTest, NothingIsModifiedAfterwardsUnlessAChangeIsAnnouncedMeanwhile) {
    manager->Announce(first, PersistDomain::Job, 0);
    manager->Announce(first, PersistDomain::Workspace, 0);
    manager->Restore("demo", Fill);
    EXPECT_FALSE(manager->IsModified(PersistDomain::Job));
    EXPECT_FALSE(manager->IsModified(PersistDomain::Workspace));
    first.onLoad = [&](PersistDomain domain, const IPersistStore&) { manager->Announce(first, domain, 0); };
    manager->Restore("demo", Fill);
    EXPECT_TRUE(manager->IsModified(PersistDomain::Job));
}

TEST_F(PersistRestoreTest, BothDomainsAreSavedToTheirNewFiles) {
    manager->Restore("demo", Fill);
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/saved", "1"); };
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    manager->Save(PersistDomain::Workspace).get().ThrowIfFailed();
    EXPECT_EQ(Entry(demoPath, "saved"), "1");
    EXPECT_EQ(Entry(demoPath, "setting"), "fresh");
    EXPECT_EQ(Entry(workspacePath, "saved"), "1");
    EXPECT_EQ(Entry(workspacePath, "setting"), "(none)");
}

TEST_F(PersistRestoreTest, WhatCannotBeFilledLeavesAllAsItWas) {
    const auto expectNothing = [&] {
        EXPECT_TRUE(calls.empty());
        EXPECT_TRUE(notified.empty());
        EXPECT_EQ(manager->LoadedJob(), "part.vrjob");
        EXPECT_EQ(Entry(demoPath, "setting"), "by the user");
        EXPECT_EQ(Entry(workspacePath, "setting"), "stored");
        EXPECT_FALSE(cache.IsMainLoopBlocked());
    };
    const Vor::LogCapture log;
    EXPECT_FAILURE(manager->Restore("../demo", Fill), yERROR_PARAMETER,
                   "'../demo' is not a job name: it must be one file name that doesn't begin with a dot.");
    expectNothing();
    EXPECT_FAILURE(manager->Restore("demo", [](IPersistStore&) { Vor::Throw(yERROR_STATE, "no template"); }),
                   yERROR_STATE, "no template");
    expectNothing();
    EXPECT_TRUE(log.Contains(Vor::UserError, "The restore failed: no template"));
    EXPECT_EQ(StatusOf([&] {
                  manager->Restore("demo", [](IPersistStore& store) { Put(store, "/controls/x/config.json", "{"); });
              }),
              yERROR_FORMAT);
    expectNothing();
    yFault_Set("ArchiveFile_Remove", yERROR);
    EXPECT_FAILURE(manager->Restore("demo", Fill), yERROR, "Archive '" + workspacePath + "': the disk failed.");
    expectNothing();
}

TEST_F(PersistRestoreTest, AFileThatCannotBeWrittenIsAFailureThoughTheJobIsLoaded) {
    first.onInit = [](PersistDomain domain, IPersistStore& store) {
        if (domain == PersistDomain::Workspace) {
            Put(store, "/data", "default");
        }
    };
    yFault_Set("ArchiveFile_Commit", yERROR_FULL);
    const Vor::LogCapture log;
    const std::string text = "Archive '" + workspacePath + "': the disk failed.";
    EXPECT_FAILURE(manager->Restore("demo", Fill), yERROR_FULL, text);
    EXPECT_TRUE(log.Contains(Vor::UserError, "The restore failed: " + text));
    EXPECT_EQ(notified, Names{"demo.vrjob"});
    EXPECT_EQ(manager->LoadedJob(), "demo.vrjob");
    EXPECT_TRUE(manager->IsModified(PersistDomain::Workspace));
    EXPECT_FALSE(manager->IsModified(PersistDomain::Job));
    EXPECT_FALSE(std::filesystem::exists(workspacePath));
    EXPECT_EQ(Entry(demoPath, "setting"), "fresh");
}
