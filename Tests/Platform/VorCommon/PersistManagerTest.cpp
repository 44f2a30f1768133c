#include "Tests/Platform/VorCommon/PersistManagerFixture.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorCommon/ArchiveFile.h"
#include "VorCommon/IPersistHandler.h"
#include "yApi/yFault.h"
#include "yApi/yStatus.h"

#include <atomic>
#include <functional>
#include <future>
#include <pthread.h>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

using namespace Tests;

TEST(PersistJobNameTest, AJobNameIsOneFileNameCompletedWithItsExtension) {
    EXPECT_EQ(PersistManager::JobFileName("part"), "part.vrjob");
    EXPECT_EQ(PersistManager::JobFileName("part.vrjob"), "part.vrjob");
    EXPECT_EQ(PersistManager::JobFileName("part.old"), "part.old.vrjob");
    EXPECT_EQ(PersistManager::JobFileName("two words"), "two words.vrjob");
    EXPECT_EQ(PersistManager::JobFileName(std::string(249, 'n')).size(), 255U);
}

TEST(PersistJobNameTest, AnythingElseIsRefused) {
    for (const std::string& name :
         {std::string(), std::string("."), std::string(".."), std::string(".hidden"), std::string(".vrjob"),
          std::string("a/b"), std::string("/etc/passwd"), std::string("../part"), std::string("part/"),
          std::string("a\0b", 3), std::string(250, 'n'), std::string("part\xFF")}) {
        try {
            PersistManager::JobFileName(name);
            ADD_FAILURE() << name;
        } catch (const Vor::Exception& e) {
            EXPECT_EQ(e.Status(), yERROR_PARAMETER) << name;
        }
    }
}

TEST_F(PersistManagerTest, ABadJobNameIsRefusedAtConstruction) {
    environ.job = "../part";
    EXPECT_EQ(StatusOf([&] { PersistManager refused(environ); }), yERROR_PARAMETER);
}

TEST_F(PersistManagerTest, AThreadThatCannotBeMadeIsAFailure) {
    yFault_Set("yThread_Start", yERROR_FULL);
    EXPECT_EQ(StatusOf([&] { PersistManager refused(environ); }), yERROR_FULL);
}

TEST_F(PersistManagerTest, DomainsLieInTheirPlaces) {
    Start();
    EXPECT_EQ(manager->FilePath(PersistDomain::Job), jobPath);
    EXPECT_EQ(manager->FilePath(PersistDomain::Workspace), workspacePath);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST_F(PersistManagerTest, DomainsWithoutFilesAreInitialisedTheWorkspaceFirst) {
    Start();
    manager->Register(second, "");
    manager->Load();
    EXPECT_EQ(calls, (Names{"first init workspace", "second init workspace", "first init job", "second init job"}));
}

TEST_F(PersistManagerTest, ADomainWithAFileIsLoaded) {
    ArchiveFile(jobPath).Write({{"setting", Bytes("stored")}});
    Start();
    std::string content;
    first.onLoad = [&](PersistDomain, const IPersistStore& store) { content = Get(store, "/setting"); };
    manager->Load();
    EXPECT_EQ(calls, (Names{"first init workspace", "first load job"}));
    EXPECT_EQ(content, "stored");
}

TEST_F(PersistManagerTest, HandlersRunOnThePersistenceThreadWhileTheMainLoopIsBlocked) {
    Start();
    std::vector<bool> seen;
    char threadName[16] = "";
    first.onInit = [&](PersistDomain, IPersistStore&) {
        seen.push_back(cache.IsMainLoopBlocked());
        pthread_getname_np(pthread_self(), threadName, sizeof threadName);
    };
    first.onSave = [&](PersistDomain, IPersistStore&) { seen.push_back(cache.IsMainLoopBlocked()); };
    EXPECT_FALSE(cache.IsMainLoopBlocked());
    manager->Load();
    EXPECT_FALSE(cache.IsMainLoopBlocked());
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    EXPECT_FALSE(cache.IsMainLoopBlocked());
    EXPECT_EQ(seen, (std::vector<bool>{true, true, true}));
    EXPECT_STREQ(threadName, "Persistence");
}

TEST_F(PersistManagerTest, TheMainLoopIsReleasedWhenALoadFails) {
    std::filesystem::create_directories(folder.File("jobs"));
    Tests::WriteWholeFile(jobPath, std::string(600, 'x'));
    Start();
    EXPECT_THROW(manager->Load(), Vor::Exception);
    EXPECT_FALSE(cache.IsMainLoopBlocked());
}

TEST_F(PersistManagerTest, TheMainLoopIsReleasedBeforeTheFileIsWritten) {
    MakeFiles();
    Start();
    manager->Load();
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/setting", "new"); };
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(jobPath.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    const std::shared_future<PersistManager::SaveResult> saved = manager->Save(PersistDomain::Job);
    EXPECT_FALSE(cache.IsMainLoopBlocked());
    EXPECT_EQ(Entry(jobPath, "setting"), "stored");
    EXPECT_EQ(saved.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    ASSERT_EQ(sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
    saved.get().ThrowIfFailed();
    sqlite3_close(other);
    EXPECT_EQ(Entry(jobPath, "setting"), "new");
}

TEST_F(PersistManagerTest, ASaveCallsEachHandlerForItsDomainOnly) {
    Start();
    manager->Register(second, "");
    manager->Load();
    calls.clear();
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/first", "1"); };
    second.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/second", "2"); };
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    EXPECT_EQ(calls, (Names{"first save job", "second save job"}));
    EXPECT_EQ(Entry(jobPath, "first"), "1");
    EXPECT_EQ(Entry(jobPath, "second"), "2");
    EXPECT_FALSE(std::filesystem::exists(workspacePath));
}

TEST_F(PersistManagerTest, WhatAHandlerDoesNotWriteStays) {
    ArchiveFile(jobPath).Write({{"setting", Bytes("stored")}, {"other", Bytes("kept")}});
    Start();
    manager->Load();
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/setting", "new"); };
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    EXPECT_EQ(Entry(jobPath, "setting"), "new");
    EXPECT_EQ(Entry(jobPath, "other"), "kept");
}

TEST_F(PersistManagerTest, WhatIsWrittenAtInitialisationMakesTheFile) {
    Start();
    first.onInit = [](PersistDomain domain, IPersistStore& store) {
        if (domain == PersistDomain::Workspace) {
            Put(store, "/data", "default");
        }
    };
    manager->Load();
    manager.reset();
    EXPECT_EQ(Entry(workspacePath, "data"), "default");
    EXPECT_FALSE(std::filesystem::exists(jobPath));
}

TEST_F(PersistManagerTest, TheDestructorFinishesASave) {
    Start();
    manager->Load();
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/setting", "new"); };
    const std::shared_future<PersistManager::SaveResult> saved = manager->Save(PersistDomain::Job);
    manager.reset();
    EXPECT_EQ(saved.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    saved.get().ThrowIfFailed();
    EXPECT_EQ(Entry(jobPath, "setting"), "new");
}

TEST_F(PersistManagerTest, TheLoadedJobIsNamedWithItsExtension) {
    Start();
    EXPECT_EQ(manager->LoadedJob(), "");
    std::string during;
    first.onInit = [&](PersistDomain, IPersistStore&) { during = manager->LoadedJob(); };
    manager->Load();
    EXPECT_EQ(during, "part.vrjob");
    EXPECT_EQ(manager->LoadedJob(), "part.vrjob");
}

TEST_F(PersistManagerTest, AnAnnouncedChangeMarksItsDomain) {
    Start();
    manager->Load();
    EXPECT_FALSE(manager->IsModified(PersistDomain::Job));
    calls.clear();
    manager->Announce(first, PersistDomain::Job, 0);
    EXPECT_TRUE(manager->IsModified(PersistDomain::Job));
    EXPECT_FALSE(manager->IsModified(PersistDomain::Workspace));
    manager->Announce(first, PersistDomain::Workspace, 0);
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    EXPECT_FALSE(manager->IsModified(PersistDomain::Job));
    EXPECT_TRUE(manager->IsModified(PersistDomain::Workspace));
    EXPECT_EQ(calls, Names{"first save job"});
}

TEST_F(PersistManagerTest, AChangeAnnouncedWhileLoadingOrSavingCounts) {
    Start();
    first.onInit = [&](PersistDomain domain, IPersistStore&) { manager->Announce(first, domain, 0); };
    manager->Announce(first, PersistDomain::Job, 0);
    manager->Load();
    EXPECT_TRUE(manager->IsModified(PersistDomain::Job));
    first.onSave = first.onInit;
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    EXPECT_TRUE(manager->IsModified(PersistDomain::Job));
}

TEST_F(PersistManagerTest, ADomainIsNoLongerModifiedAfterALoad) {
    Start();
    manager->Announce(first, PersistDomain::Job, 0);
    manager->Load();
    EXPECT_FALSE(manager->IsModified(PersistDomain::Job));
}

TEST_F(PersistManagerTest, AFailingFileLeavesTheOldContentAndTheModification) {
    MakeFiles();
    Start();
    manager->Load();
    manager->Announce(first, PersistDomain::Job, 0);
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/setting", "new"); };
    yFault_Set("ArchiveFile_Commit", yERROR_FULL);
    const Vor::LogCapture log;
    const std::shared_future<PersistManager::SaveResult> saved = manager->Save(PersistDomain::Job);
    const std::string failure = "Archive '" + jobPath + "': the disk failed.";
    EXPECT_EQ(saved.get().text, failure);
    EXPECT_EQ(saved.get().status, yERROR_FULL);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "The job domain wasn't saved (" + failure + ")."));
    EXPECT_TRUE(manager->IsModified(PersistDomain::Job));
    EXPECT_EQ(Entry(jobPath, "setting"), "stored");
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    EXPECT_EQ(Entry(jobPath, "setting"), "new");
    EXPECT_FALSE(manager->IsModified(PersistDomain::Job));
}

TEST_F(PersistManagerTest, AHandlerThatFailsToSaveLeavesTheFileAsItWas) {
    MakeFiles();
    Start();
    manager->Register(second, "");
    manager->Load();
    manager->Announce(first, PersistDomain::Job, 0);
    const auto write = [](PersistDomain, IPersistStore& store) { Put(store, "/setting", "new"); };
    first.onSave = write;
    second.onSave = [](PersistDomain, IPersistStore&) { Vor::Throw(yERROR_BUSY, "not now"); };
    std::shared_future<PersistManager::SaveResult> saved = manager->Save(PersistDomain::Job);
    EXPECT_EQ(saved.get().text, "Persist handler \"second\" failed to save the job domain (not now).");
    EXPECT_EQ(saved.get().status, yERROR_BUSY);
    EXPECT_EQ(Entry(jobPath, "setting"), "stored");
    EXPECT_TRUE(manager->IsModified(PersistDomain::Job));
    second.onSave = [](PersistDomain, IPersistStore&) { throw 7; };
    saved = manager->Save(PersistDomain::Job);
    EXPECT_EQ(saved.get().text, "Persist handler \"second\" failed to save the job domain (unknown exception).");
    EXPECT_EQ(Entry(jobPath, "setting"), "stored");
    first.onSave = nullptr;
    second.onSave = nullptr;
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    EXPECT_EQ(Entry(jobPath, "setting"), "stored");
}

TEST_F(PersistManagerTest, ASaveBeforeTheLoadFails) {
    Start();
    const std::shared_future<PersistManager::SaveResult> saved = manager->Save(PersistDomain::Job);
    EXPECT_EQ(saved.get().status, yERROR_STATE);
    EXPECT_EQ(saved.get().text, "The job domain can't be saved before it is loaded.");
    EXPECT_TRUE(calls.empty());
}

TEST_F(PersistManagerTest, AnUnknownDomainIsRefused) {
    Start();
    const auto unknown = static_cast<PersistDomain>(7);
    EXPECT_EQ(StatusOf([&] { manager->Save(unknown); }), yERROR_PARAMETER);
    EXPECT_EQ(StatusOf([&] { manager->Announce(first, unknown, 0); }), yERROR_PARAMETER);
    EXPECT_EQ(StatusOf([&] { manager->IsModified(unknown); }), yERROR_PARAMETER);
}

TEST_F(PersistManagerTest, AFailingHandlerDoesNotKeepTheOthersFromLoading) {
    MakeFiles();
    Start();
    manager->Register(second, "");
    first.onLoad = [](PersistDomain, const IPersistStore&) { Vor::Throw(yERROR_FORMAT, "bad document"); };
    const Vor::LogCapture log;
    manager->Load();
    EXPECT_EQ(calls, (Names{"first load workspace", "second load workspace", "first load job", "second load job"}));
    for (const char* domain : {"workspace", "job"}) {
        EXPECT_TRUE(log.Contains(Vor::LevelError, std::string("Persist handler \"first\" failed to load the ") +
                                                      domain + " domain (bad document)."));
    }
}

TEST_F(PersistManagerTest, AForeignExceptionEndsTheDomainAndTheThreadLivesOn) {
    Start();
    manager->Register(second, "");
    first.onInit = [](PersistDomain domain, IPersistStore& store) {
        if (domain == PersistDomain::Workspace) {
            Put(store, "/data", "half");
            throw 7;
        }
    };
    const Vor::LogCapture log;
    manager->Load();
    EXPECT_EQ(calls, (Names{"first init workspace", "first init job", "second init job"}));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Persist handler \"first\" failed to initialise the workspace domain "
                                              "(unknown exception). No further handler takes part."));
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    manager->Save(PersistDomain::Workspace).get().ThrowIfFailed();
    EXPECT_FALSE(std::filesystem::exists(workspacePath));
}

TEST_F(PersistManagerTest, ADamagedFileIsNamedAndNothingIsLoaded) {
    MakeFiles();
    for (const std::string& damaged : {jobPath, workspacePath}) {
        const std::string whole = Tests::ReadWholeFile(damaged);
        const std::string content(600, 'x');
        Tests::WriteWholeFile(damaged, content);
        Start();
        try {
            manager->Load();
            ADD_FAILURE() << damaged;
        } catch (const Vor::Exception& e) {
            EXPECT_EQ(e.Status(), yERROR_FORMAT);
            EXPECT_EQ(std::string(e.what()), "Archive '" + damaged + "': file is not a database.");
        }
        EXPECT_TRUE(calls.empty());
        EXPECT_EQ(manager->LoadedJob(), "");
        manager.reset();
        EXPECT_EQ(Tests::ReadWholeFile(damaged), content);
        Tests::WriteWholeFile(damaged, whole);
    }
}

TEST_F(PersistManagerTest, RegisteringAndAnnouncingCallNoHandler) {
    Start();
    EXPECT_NE(jobId, 0U);
    EXPECT_NE(manager->Register(second, "text"), jobId);
    manager->Announce(first, PersistDomain::Job, 0);
    manager.reset();
    EXPECT_TRUE(calls.empty());
}

TEST_F(PersistManagerTest, ADeregisteredHandlerIsNotCalled) {
    Start();
    const unsigned long long id = manager->Register(second, "");
    manager->Deregister(jobId);
    manager->Deregister(jobId);
    manager->Deregister(0);
    manager->Deregister(id + 100);
    manager->Load();
    EXPECT_EQ(calls, (Names{"second init workspace", "second init job"}));
}

TEST_F(PersistManagerTest, DeregisteringWaitsForTheRunningCall) {
    Start();
    std::atomic<bool> gone{false};
    std::thread other;
    first.onInit = [&](PersistDomain domain, IPersistStore&) {
        if (domain != PersistDomain::Workspace) {
            return;
        }
        std::promise<void> running;
        other = std::thread([&] {
            running.set_value();
            manager->Deregister(jobId);
            gone = true;
        });
        running.get_future().get();
        EXPECT_FALSE(gone);
    };
    manager->Load();
    other.join();
    EXPECT_TRUE(gone);
}

TEST_F(PersistManagerTest, AHandlerMayDeregisterItselfInItsCall) {
    Start();
    manager->Register(second, "");
    first.onInit = [&](PersistDomain, IPersistStore&) { manager->Deregister(jobId); };
    manager->Load();
    EXPECT_EQ(calls, (Names{"first init workspace", "second init workspace", "second init job"}));
}

TEST_F(PersistManagerTest, AHandlerThatIsRemovedByAnotherIsNotCalledAnyMore) {
    Start();
    const unsigned long long id = manager->Register(second, "");
    first.onInit = [&](PersistDomain, IPersistStore&) { manager->Deregister(id); };
    manager->Load();
    EXPECT_EQ(calls, (Names{"first init workspace", "first init job"}));
}

namespace {

/// Returns another content for one path, and marks what is written.
class Overlay : public IPersistStore {
public:
    explicit Overlay(IPersistStore& store)
        : store(store) {}

    VorCommon::PersistBuffer Read(const std::string& path) const override {
        return store.Read(path == "/setting" ? "/other" : path);
    }
    void Write(const std::string& path, const void* bytes, std::size_t size) override {
        store.Write(path + ".marked", bytes, size);
    }
    bool Exists(const std::string& path) const override { return store.Exists(path); }

private:
    IPersistStore& store;
};

} // namespace

TEST_F(PersistManagerTest, HandlersGetTheStoreOfTheApplication) {
    ArchiveFile(jobPath).Write({{"setting", Bytes("stored")}, {"other", Bytes("instead")}});
    std::vector<PersistDomain> decorated;
    environ.decorateStore = [&](IPersistStore& store, PersistDomain domain) -> std::unique_ptr<IPersistStore> {
        decorated.push_back(domain);
        return domain == PersistDomain::Job ? std::make_unique<Overlay>(store) : nullptr;
    };
    Start();
    std::string content;
    first.onLoad = [&](PersistDomain, const IPersistStore& store) { content = Get(store, "/setting"); };
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/new", "1"); };
    manager->Load();
    EXPECT_EQ(content, "instead");
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    EXPECT_EQ(Entry(jobPath, "new.marked"), "1");
    EXPECT_EQ(Entry(jobPath, "setting"), "stored");
    EXPECT_EQ(decorated,
              (std::vector<PersistDomain>{PersistDomain::Workspace, PersistDomain::Job, PersistDomain::Job}));
}

TEST_F(PersistManagerTest, AStoreThatCannotBeGivenFailsTheLoadBeforeAnyHandler) {
    environ.decorateStore = [](IPersistStore&, PersistDomain domain) -> std::unique_ptr<IPersistStore> {
        if (domain == PersistDomain::Job) {
            Vor::Throw(yERROR_PARAMETER, "bad overlay");
        }
        return nullptr;
    };
    Start();
    EXPECT_EQ(StatusOf([&] { manager->Load(); }), yERROR_PARAMETER);
    EXPECT_TRUE(calls.empty());
}

TEST_F(PersistManagerTest, ATaskRunsOnThePersistenceThreadBetweenSaves) {
    MakeFiles();
    Start();
    manager->Load();
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/setting", "new"); };
    std::promise<std::string> seen;
    const auto saved = manager->Save(PersistDomain::Job);
    manager->Post([&] {
        char threadName[16] = "";
        pthread_getname_np(pthread_self(), threadName, sizeof threadName);
        seen.set_value(Entry(jobPath, "setting") + " " + threadName);
        Vor::Throw(yERROR, "It is logged.");
    });
    EXPECT_EQ(seen.get_future().get(), "new Persistence");
    EXPECT_NO_THROW(manager->LoadJob("part")) << "the thread goes on";
}

TEST_F(PersistManagerTest, TasksThatWereGivenRunBeforeItsEnd) {
    Start();
    int count = 0;
    for (int i = 0; i < 3; ++i) {
        manager->Post([&] { ++count; });
    }
    manager.reset();
    EXPECT_EQ(count, 3);
}

TEST_F(PersistManagerTest, TheContentToSaveIsNotSaved) {
    MakeFiles();
    Start();
    manager->Load();
    manager->Announce(first, PersistDomain::Job, 0);
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/added", "new"); };
    const ArchiveFile::Entries content = manager->ContentToSave(PersistDomain::Job);
    ASSERT_EQ(content.size(), 2U);
    EXPECT_EQ(*content.at("added"), *Bytes("new"));
    EXPECT_EQ(*content.at("setting"), *Bytes("stored"));
    EXPECT_TRUE(manager->IsModified(PersistDomain::Job));
    EXPECT_EQ(Entry(jobPath, "added"), "(none)");
    first.onSave = nullptr;
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    EXPECT_EQ(Entry(jobPath, "added"), "(none)") << "nothing of it was kept";
}

TEST_F(PersistManagerTest, AJobThatIsSavedUnderAnotherNameIsTheLoadedOne) {
    MakeFiles();
    std::vector<std::string> loaded;
    environ.jobLoaded = [&](const std::string& fileName) { loaded.push_back(fileName); };
    Start();
    manager->Load();
    manager->Announce(first, PersistDomain::Job, 0);
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/added", "new"); };
    const std::string other = folder.File("jobs/other.vrjob");
    manager->SaveJobAs("other", ArchiveFile::Existing::Refuse);
    EXPECT_EQ(Entry(other, "added"), "new");
    EXPECT_EQ(Entry(other, "setting"), "stored");
    EXPECT_EQ(Entry(jobPath, "added"), "(none)");
    EXPECT_EQ(manager->LoadedJob(), "other.vrjob");
    EXPECT_FALSE(manager->IsModified(PersistDomain::Job));
    EXPECT_EQ(loaded, std::vector<std::string>{"other.vrjob"});

    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/added", "newer"); };
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    EXPECT_EQ(Entry(other, "added"), "newer");
    EXPECT_EQ(Entry(jobPath, "added"), "(none)");
}

TEST_F(PersistManagerTest, AJobThatCannotBeSavedUnderAnotherNameStays) {
    MakeFiles();
    const std::string other = folder.File("jobs/other.vrjob");
    ArchiveFile(other).Write({{"setting", Bytes("theirs")}});
    Start();
    manager->Load();
    manager->Announce(first, PersistDomain::Job, 0);
    EXPECT_EQ(StatusOf([&] { manager->SaveJobAs("other", ArchiveFile::Existing::Refuse); }), yERROR_ALREADY_EXISTS);
    EXPECT_EQ(StatusOf([&] { manager->SaveJobAs("a/b", ArchiveFile::Existing::Refuse); }), yERROR_PARAMETER);
    first.onSave = [](PersistDomain, IPersistStore&) { Vor::Throw(yERROR_FULL, "no room"); };
    EXPECT_EQ(StatusOf([&] { manager->SaveJobAs("third", ArchiveFile::Existing::Refuse); }), yERROR_FULL);
    EXPECT_EQ(StatusOf([&] { manager->ContentToSave(PersistDomain::Job); }), yERROR_FULL);
    EXPECT_EQ(Entry(other, "setting"), "theirs");
    EXPECT_FALSE(ArchiveFile(folder.File("jobs/third.vrjob")).Exists());
    EXPECT_EQ(manager->LoadedJob(), "part.vrjob");
    EXPECT_TRUE(manager->IsModified(PersistDomain::Job));
    first.onSave = nullptr;
    manager->SaveJobAs("other", ArchiveFile::Existing::Replace);
    EXPECT_EQ(Entry(other, "setting"), "stored");
}
