#include "Tests/Platform/VorCommon/PersistManagerFixture.h"
#include "Tests/Support/Failure.h"
#include "Vor/Logging.h"
#include "VorCommon/LiveJob.h"

#include <future>
#include <thread>

#include <sqlite3.h>

using namespace Tests;

namespace {

/// The job "part" is loaded, and each handler has been called.
class PersistLoadJobTest : public PersistManagerTest {
protected:
    PersistLoadJobTest() {
        MakeFiles();
        environ.jobLoaded = [this](const std::string& fileName) {
            notified.push_back(fileName + (cache.IsMainLoopBlocked() ? " blocked" : ""));
        };
        Start();
        manager->Register(second, "");
        manager->Load();
        calls.clear();
    }

    std::string OtherPath() const { return folder.File("jobs/other.vrjob"); }

    void MakeOther(const std::string& name, const std::string& content) {
        ArchiveFile(OtherPath()).Write({{"setting", Bytes("other")}, {name, Bytes(content)}});
    }

    /// LoadJob fails this way and changes nothing.
    void ExpectRefusal(const std::string& name, yStatus status, const std::string& text) {
        const Vor::LogCapture log;
        EXPECT_FAILURE(manager->LoadJob(name), status, text);
        EXPECT_TRUE(log.Contains(Vor::UserError, "The job wasn't loaded: " + text)) << text;
        EXPECT_TRUE(calls.empty());
        EXPECT_TRUE(notified.empty());
        EXPECT_FALSE(cache.IsMainLoopBlocked());
        EXPECT_EQ(manager->LoadedJob(), "part.vrjob");
        EXPECT_EQ(manager->FilePath(PersistDomain::Job), jobPath);
    }

    Names notified;
};

std::string FileNameOf(void* liveJob) {
    const Vor::Object owned = Vor::Object::Adopt(liveJob);
    return owned ? LiveJob_FileName(owned.Get()) : "(none)";
}

} // namespace

TEST_F(PersistLoadJobTest, AnotherJobIsLoadedByEveryHandlerAndTheWorkspaceIsLeftAlone) {
    MakeOther("controls/x/config.json", "{}");
    std::string content;
    first.onLoad = [&](PersistDomain, const IPersistStore& store) { content = Get(store, "/setting"); };
    manager->LoadJob("other");
    EXPECT_EQ(calls, (Names{"first load job", "second load job"}));
    EXPECT_EQ(content, "other");
    EXPECT_EQ(manager->LoadedJob(), "other.vrjob");
    EXPECT_EQ(manager->FilePath(PersistDomain::Job), OtherPath());
    EXPECT_EQ(manager->FilePath(PersistDomain::Workspace), workspacePath);
}

TEST_F(PersistLoadJobTest, ANameMayBearTheExtension) {
    MakeOther("note", "");
    manager->LoadJob("other.vrjob");
    EXPECT_EQ(manager->LoadedJob(), "other.vrjob");
}

TEST_F(PersistLoadJobTest, TheLoadedJobMayBeLoadedAnew) {
    ArchiveFile(jobPath).Write({{"setting", Bytes("changed by another program")}});
    std::string content;
    first.onLoad = [&](PersistDomain, const IPersistStore& store) { content = Get(store, "/setting"); };
    manager->LoadJob("part");
    EXPECT_EQ(content, "changed by another program");
}

TEST_F(PersistLoadJobTest, TheApplicationIsNotifiedOnceTheMainLoopIsFreeAgain) {
    MakeOther("note", "");
    manager->LoadJob("other");
    EXPECT_EQ(notified, Names{"other.vrjob"});
}

TEST_F(PersistLoadJobTest, AFailureToNotifyTheApplicationIsLogged) {
    MakeOther("note", "");
    manager.reset();
    environ.jobLoaded = [](const std::string&) { throw std::runtime_error("no paper"); };
    Start();
    const Vor::LogCapture log;
    manager->LoadJob("other");
    EXPECT_TRUE(log.Contains(Vor::LevelError, "A failure when the program was notified of the loaded job."));
    EXPECT_EQ(manager->LoadedJob(), "other.vrjob");
}

TEST_F(PersistLoadJobTest, HandlersRunOnThePersistenceThreadWhileTheMainLoopIsBlocked) {
    MakeOther("note", "");
    bool seen = false;
    std::thread::id thread;
    std::string name;
    first.onLoad = [&](PersistDomain, const IPersistStore&) {
        seen = cache.IsMainLoopBlocked();
        thread = std::this_thread::get_id();
        name = manager->LoadedJob();
    };
    manager->LoadJob("other");
    EXPECT_TRUE(seen);
    EXPECT_FALSE(cache.IsMainLoopBlocked());
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_EQ(name, "other.vrjob");
}

TEST_F(PersistLoadJobTest, AMissingJobIsRefused) {
    ExpectRefusal("gone", yERROR_NOT_FOUND, "Archive '" + folder.File("jobs/gone.vrjob") + "': there is no such file.");
    EXPECT_FALSE(std::filesystem::exists(folder.File("jobs/gone.vrjob")));
}

TEST_F(PersistLoadJobTest, ABadNameIsRefused) {
    for (const std::string name : {"", ".hidden", "../part", "a/b"}) {
        ExpectRefusal(name, yERROR_PARAMETER,
                      "'" + name + "' is not a job name: it must be one file name that doesn't begin with a dot.");
    }
    for (const std::string& name : {std::string("a\nb"), std::string("a\x1b[31m"), std::string("a\x7f"),
                                    std::string("a\0b", 3), std::string("\xC2\x9B")}) {
        ExpectRefusal(name, yERROR_PARAMETER, "The name of a job can't contain control characters.");
    }
    ExpectRefusal("part\xFF", yERROR_PARAMETER, "The name of a job must be text in UTF-8.");
}

TEST_F(PersistLoadJobTest, ADamagedFileIsRefused) {
    Tests::WriteWholeFile(OtherPath(), std::string(600, 'x'));
    ExpectRefusal("other", yERROR_FORMAT, "Archive '" + OtherPath() + "': file is not a database.");
}

TEST_F(PersistLoadJobTest, AFileThatWasCutShortIsRefused) {
    MakeOther("large", std::string(100000, 'x'));
    std::filesystem::resize_file(OtherPath(), std::filesystem::file_size(OtherPath()) - 5000);
    ExpectRefusal("other", yERROR_FORMAT, "Archive '" + OtherPath() + "': database disk image is malformed.");
}

TEST_F(PersistLoadJobTest, AnEntryThatIsNoJsonIsRefusedByItsName) {
    const std::string entry = "Archive '" + OtherPath() + "': entry 'controls/x/config.json' is no JSON: ";
    MakeOther("controls/x/config.json", "{\"version\": \"1\",}");
    const auto failure = Tests::FailureOf([&] { manager->LoadJob("other"); });
    ASSERT_TRUE(failure.has_value());
    ExpectRefusal("other", yERROR_FORMAT, failure->text);
    EXPECT_TRUE(failure->text.starts_with(entry + "Line 1, column 17: ")) << failure->text;

    MakeOther("controls/x/config.json", "");
    EXPECT_EQ(StatusOf([&] { manager->LoadJob("other"); }), yERROR_FORMAT);
    MakeOther("controls/x/config.json", "{\"text\": \"\xFF\"}");
    EXPECT_EQ(StatusOf([&] { manager->LoadJob("other"); }), yERROR_FORMAT);
    EXPECT_TRUE(calls.empty());

    MakeOther("controls/x/config.json", std::string(65, '[') + std::string(65, ']'));
    ExpectRefusal("other", yERROR_FORMAT, entry + "Line 1, column 65: nested more than 64 levels deep.");
    MakeOther("controls/x/config.json", std::string(64, '[') + std::string(64, ']'));
    manager->LoadJob("other");
    EXPECT_EQ(manager->LoadedJob(), "other.vrjob");
}

TEST_F(PersistLoadJobTest, AnEntryOfAnotherKindNeedNotBeJson) {
    MakeOther("controls/x/picture.png", "\xFF\x00");
    manager->LoadJob("other");
    EXPECT_EQ(manager->LoadedJob(), "other.vrjob");
}

TEST_F(PersistLoadJobTest, AStoreThatCannotBeGivenFailsTheLoadBeforeAnyHandler) {
    MakeOther("note", "");
    manager.reset();
    environ.decorateStore = [](IPersistStore&, PersistDomain) -> std::unique_ptr<IPersistStore> {
        Vor::Throw(yERROR_PARAMETER, "bad overlay");
    };
    Start();
    EXPECT_FAILURE(manager->LoadJob("other"), yERROR_PARAMETER, "bad overlay");
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(manager->LoadedJob(), "");
}

TEST_F(PersistLoadJobTest, AFailingHandlerIsLoggedAndTheOthersLoad) {
    MakeOther("note", "");
    first.onLoad = [](PersistDomain, const IPersistStore&) { Vor::Throw(yERROR_FORMAT, "bad document"); };
    const Vor::LogCapture log;
    manager->LoadJob("other");
    EXPECT_EQ(calls, (Names{"first load job", "second load job"}));
    EXPECT_TRUE(
        log.Contains(Vor::LevelError, "Persist handler \"first\" failed to load the job domain (bad document)."));
    EXPECT_EQ(manager->LoadedJob(), "other.vrjob");
}

TEST_F(PersistLoadJobTest, ASaveGoesToTheJobThatIsLoadedNow) {
    MakeOther("note", "");
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/setting", "new"); };
    manager->LoadJob("other");
    manager->Save(PersistDomain::Job).get().ThrowIfFailed();
    EXPECT_EQ(Entry(OtherPath(), "setting"), "new");
    EXPECT_EQ(Entry(jobPath, "setting"), "stored");
}

TEST_F(PersistLoadJobTest, ASaveUnderWayIsFinishedFirst) {
    MakeOther("note", "");
    first.onSave = [](PersistDomain, IPersistStore& store) { Put(store, "/setting", "new"); };
    const std::shared_future<PersistManager::SaveResult> saved = manager->Save(PersistDomain::Job);
    manager->LoadJob("other");
    EXPECT_EQ(saved.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    EXPECT_EQ(Entry(jobPath, "setting"), "new");
    EXPECT_EQ(Entry(OtherPath(), "setting"), "other");
}

TEST_F(PersistLoadJobTest, ALoadedJobIsNotModifiedUnlessAChangeIsAnnouncedMeanwhile) {
    MakeOther("note", "");
    manager->Announce(first, PersistDomain::Job, 0);
    manager->Announce(first, PersistDomain::Workspace, 0);
    manager->LoadJob("other");
    EXPECT_FALSE(manager->IsModified(PersistDomain::Job));
    EXPECT_TRUE(manager->IsModified(PersistDomain::Workspace));
    first.onLoad = [&](PersistDomain domain, const IPersistStore&) { manager->Announce(first, domain, 0); };
    manager->LoadJob("part");
    EXPECT_TRUE(manager->IsModified(PersistDomain::Job));
}

TEST_F(PersistLoadJobTest, ARefusedJobLeavesAnUnsavedChangeMarked) {
    manager->Announce(first, PersistDomain::Job, 0);
    EXPECT_THROW(manager->LoadJob("gone"), Vor::Exception);
    EXPECT_TRUE(manager->IsModified(PersistDomain::Job));
}

TEST_F(PersistLoadJobTest, TheLiveJobIsAShareThatOutlivesItsJob) {
    const Vor::Object part = Vor::Object::Adopt(manager->LiveJob());
    ASSERT_TRUE(yObject_Is(part.Get(), yType_LiveJob));
    EXPECT_EQ(yObject_ShareCount(part.Get()), 2);
    EXPECT_EQ(LiveJob_FileName(part.Get()), "part.vrjob");
    MakeOther("note", "");
    manager->LoadJob("other");
    EXPECT_EQ(yObject_ShareCount(part.Get()), 1);
    EXPECT_EQ(LiveJob_FileName(part.Get()), "part.vrjob");
    EXPECT_EQ(FileNameOf(manager->LiveJob()), "other.vrjob");
    manager.reset();
    EXPECT_EQ(LiveJob_FileName(part.Get()), "part.vrjob");
}

TEST_F(PersistLoadJobTest, TheSameJobLoadedAnewIsAnotherObjectAndARefusedOneIsNone) {
    const Vor::Object before = Vor::Object::Adopt(manager->LiveJob());
    EXPECT_THROW(manager->LoadJob("gone"), Vor::Exception);
    EXPECT_EQ(Vor::Object::Adopt(manager->LiveJob()).Get(), before.Get());
    manager->LoadJob("part");
    EXPECT_NE(Vor::Object::Adopt(manager->LiveJob()).Get(), before.Get());
}

TEST_F(PersistLoadJobTest, NoObjectIsLeftBehind) {
    const std::int64_t before = yObject_LiveCount();
    MakeOther("note", "");
    manager->LoadJob("other");
    manager->LoadJob("part");
    EXPECT_EQ(yObject_LiveCount(), before);
    manager.reset();
    EXPECT_EQ(yObject_LiveCount(), before - 1);
}

TEST_F(PersistManagerTest, ThereIsNoLiveJobBeforeTheFirstLoad) {
    Start();
    EXPECT_EQ(manager->LiveJob(), nullptr);
    manager->Load();
    EXPECT_EQ(FileNameOf(manager->LiveJob()), "part.vrjob");
}

TEST_F(PersistLoadJobTest, TheJobMayBeReadOnAnyThreadWhileOthersAreLoaded) {
    MakeOther("note", "");
    std::atomic<bool> done{false};
    std::promise<void> running;
    std::thread reader([&] {
        running.set_value();
        do {
            const std::string name = manager->LoadedJob();
            EXPECT_TRUE(name == "part.vrjob" || name == "other.vrjob") << name;
            EXPECT_NE(FileNameOf(manager->LiveJob()), "(none)");
            EXPECT_NE(manager->FilePath(PersistDomain::Job), "");
        } while (!done);
    });
    running.get_future().get();
    for (int times = 0; times < 10; ++times) {
        manager->LoadJob("other");
        manager->LoadJob("part");
    }
    done = true;
    reader.join();
}

TEST(LiveJobTest, AnObjectNeedsAPlace) {
    EXPECT_EQ(LiveJob_Construct(nullptr, "part.vrjob"), yERROR_PARAMETER);
}
