#include "Sensor/Resources/FileTasks.h"
#include "Tests/Sensor/Resources/SensorFixture.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/TempFolder.h"
#include "VorCommon/ArchiveFile.h"
#include "VorControl/Control/ControlModule.h"
#include "VorControl/Control/ControlProtocolOperations.h"

#include <future>

namespace Sensor::Resources {
namespace {

using Json = nlohmann::json;
using Tests::StatusOf;
using Texts = std::vector<std::string>;
using VorCommon::ArchiveFile;
using VorRest::Answer;
using VorRest::Verb;

constexpr const char* Changes = "/sensor/jobs/loaded/changes";

/// A sensor whose loaded job "test" has no file yet.
class SensorJobsTest : public SensorFixture {
protected:
    std::string FileOf(const std::string& name) const { return folder.File("jobs/" + name + ".vrjob"); }
    bool Exists(const std::string& name) const { return ArchiveFile(FileOf(name)).Exists(); }
    void Make(const std::string& name, const std::string& configOfA) const {
        ArchiveFile(FileOf(name))
            .Make({{"controls/a/config.json",
                    std::make_shared<const std::vector<unsigned char>>(configOfA.begin(), configOfA.end())}},
                  ArchiveFile::Existing::Refuse);
    }
    void MakeEnabling(const std::string& name) const {
        Make(name, R"({"version":"1","vor:control":{"enabled":true}})");
    }

    static std::string PathOf(const std::string& job) { return "/sensor/jobs/" + job; }
    static std::string CommandOf(const std::string& job, const std::string& command) {
        return PathOf(job) + "/commands/" + command;
    }
    Answer Command(const std::string& job, const std::string& command, const Json& arguments = nullptr) {
        return Invoke(CommandOf(job, command), arguments);
    }
    Answer Delete(const std::string& job) { return Ask({.verb = Verb::Delete, .path = PathOf(job)}); }
    Json Job(const std::string& job) { return Read(PathOf(job)).ToJson(); }
    Texts RelationsOf(const std::string& path) {
        Texts paths;
        for (const auto& relation : Ask({Verb::Read, path}).relations) {
            paths.push_back(relation.path);
        }
        return paths;
    }
    /// Changes as "POINTER: BEFORE -> AFTER".
    Texts ChangesNow() {
        const Json document = Read(Changes).ToJson();
        Texts changes;
        for (const Json& change : document["changes"]) {
            const std::string before = change["before"];
            const std::string after = change["after"];
            changes.push_back(change["pointer"].get<std::string>() + ": " + before + " -> " + after);
            EXPECT_EQ(change["entry"], "controls/" + change["service"].get<std::string>() + "/config.json");
        }
        EXPECT_EQ(document["count"], changes.size());
        return changes;
    }
};

TEST_F(SensorJobsTest, TheLoadedJobIsListedBeforeItHasAFile) {
    EXPECT_EQ(RelationsOf("/sensor/jobs"), Texts{PathOf("test")});
    EXPECT_EQ(Job("test"), (Json{{"name", "test"},
                                 {"size", 0},
                                 {"modified", ""},
                                 {"loaded", true},
                                 {"default", false},
                                 {"services", Json::array()},
                                 {"failure", "It isn't saved yet."}}));
    EXPECT_EQ(RelationsOf(PathOf("test")), (Texts{PathOf("test") + "/file", Changes}));
    EXPECT_EQ(StatusOf([&] { Read(PathOf("test") + "/file"); }), yERROR_NOT_FOUND);
}

TEST_F(SensorJobsTest, EachJobHasADocumentAndItsCommands) {
    MakeEnabling("two words");
    EXPECT_EQ(RelationsOf("/sensor/jobs"), (Texts{PathOf("test"), PathOf("two%20words")}));
    const Json job = Job("two%20words");
    EXPECT_EQ(job["name"], "two words");
    EXPECT_GT(job["size"], 0);
    EXPECT_EQ(job["loaded"], false);
    EXPECT_EQ(job["services"], Json::array({"a"}));
    EXPECT_EQ(job["failure"], "");
    EXPECT_EQ(RelationsOf(PathOf("two%20words")), Texts{PathOf("two%20words") + "/file"});
    EXPECT_EQ(RelationsOf(PathOf("two%20words") + "/commands"),
              (Texts{CommandOf("two%20words", "load"), CommandOf("two%20words", "copy"),
                     CommandOf("two%20words", "rename"), CommandOf("two%20words", "setDefault")}));
    EXPECT_EQ(RelationsOf(PathOf("test") + "/commands").size(), 6U) << "with those that save";
    EXPECT_EQ(Read(CommandOf("test", "saveAs")).ToJson(),
              (Json{{"id", "saveAs"}, {"parameters", {{"name", ""}, {"replace", false}}}}));
}

TEST_F(SensorJobsTest, WhatIsNoJobIsntFound) {
    MakeEnabling("second");
    for (const char* const name : {"none", "second.vrjob", "..%2Fworkspace", ".second", "a%2Fb"}) {
        EXPECT_EQ(StatusOf([&] { Read(PathOf(name)); }), yERROR_NOT_FOUND) << name;
        EXPECT_EQ(StatusIn(Delete(name)), yERROR_NOT_FOUND) << name;
        EXPECT_EQ(StatusIn(Command(name, "load")), yERROR_NOT_FOUND) << name;
    }
    EXPECT_EQ(StatusIn(Command("second", "save")), yERROR_NOT_FOUND) << "it isn't loaded";
    EXPECT_EQ(StatusIn(Command("second", "fly")), yERROR_NOT_FOUND);
    EXPECT_EQ(StatusIn(Ask({.verb = Verb::Create, .path = "/sensor/jobs"})), yERROR_UNIMPLEMENTED);
}

TEST_F(SensorJobsTest, ASavedJobHasNoChanges) {
    EXPECT_FALSE(ChangesNow().empty());
    const Answer saved = Command("test", "save");
    EXPECT_EQ(StatusIn(saved), yOK) << TextIn(saved);
    EXPECT_EQ(saved.document["loaded"].AsBool(), true);
    EXPECT_EQ(saved.document.ToJson()["services"], Json::array({"a", "b"}));
    EXPECT_EQ(saved.relations.at(0).path, PathOf("test"));
    EXPECT_TRUE(Exists("test"));
    EXPECT_EQ(ChangesNow(), Texts{});

    host.Services().GetInstance("b").Enable(true);
    EXPECT_EQ(ChangesNow(), Texts{"/vor:control/enabled: false -> true"});
    host.Services().GetInstance("b").Enable(false);
    EXPECT_EQ(ChangesNow(), Texts{}) << "exactly when nothing differs";
    host.Services().GetInstance("b").Enable(true);
    EXPECT_EQ(StatusIn(Command("test", "save")), yOK);
    EXPECT_EQ(ChangesNow(), Texts{});
    EXPECT_EQ(Read("/sensor").ToJson()["jobModified"], false);
}

TEST_F(SensorJobsTest, ASaveThatFailsIsAnsweredWithTheReason) {
    Command("test", "save");
    Tests::WriteWholeFile(FileOf("test"), "no archive");
    host.Services().GetInstance("b").Enable(true);
    const Answer answer = Command("test", "save");
    EXPECT_EQ(StatusIn(answer), yERROR_FORMAT);
    EXPECT_NE(TextIn(answer).find("file is not a database"), std::string::npos) << TextIn(answer);
    EXPECT_EQ(StatusOf([&] { Read(Changes); }), yERROR_FORMAT);
}

TEST_F(SensorJobsTest, AJobThatIsSavedUnderAnotherNameIsTheLoadedOne) {
    MakeEnabling("taken");
    EXPECT_EQ(TextIn(Command("test", "saveAs", {{"name", "taken"}})),
              "There is a job 'taken' already, and 'replace' isn't true.");
    EXPECT_EQ(StatusIn(Command("test", "saveAs", {{"name", "taken"}})), yERROR_ALREADY_EXISTS);
    const Answer answer = Command("test", "saveAs", {{"name", "other"}});
    EXPECT_EQ(StatusIn(answer), yOK) << TextIn(answer);
    EXPECT_EQ(answer.document["name"].AsText(), "other");
    EXPECT_EQ(Job("other")["loaded"], true);
    EXPECT_EQ(Read("/sensor").ToJson()["job"], "other.vrjob");
    EXPECT_EQ(ChangesNow(), Texts{});
    EXPECT_EQ(StatusIn(Command("other", "saveAs", {{"name", "taken"}, {"replace", true}})), yOK);
    EXPECT_EQ(Job("taken")["services"], Json::array({"a", "b"}));
    EXPECT_EQ(Job("other")["loaded"], false);
}

TEST_F(SensorJobsTest, AJobIsCopiedAndRenamed) {
    MakeEnabling("first");
    const Answer copied = Command("first", "copy", {{"name", "second.vrjob"}});
    EXPECT_EQ(StatusIn(copied), yOK) << TextIn(copied);
    EXPECT_EQ(copied.document["name"].AsText(), "second");
    EXPECT_TRUE(Exists("first") && Exists("second"));
    EXPECT_EQ(StatusIn(Command("first", "copy", {{"name", "second"}})), yERROR_ALREADY_EXISTS);
    EXPECT_EQ(StatusIn(Command("first", "copy", {{"name", "second"}, {"replace", true}})), yOK);
    EXPECT_EQ(StatusIn(Command("second", "rename", {{"name", "third"}})), yOK);
    EXPECT_FALSE(Exists("second"));
    EXPECT_EQ(Job("third")["services"], Json::array({"a"}));
    EXPECT_EQ(StatusIn(Command("third", "rename", {{"name", "third"}, {"replace", true}})), yERROR_PARAMETER);
    for (const char* const name : {"", ".x", "a/b", "../x"}) {
        EXPECT_EQ(StatusIn(Command("first", "copy", {{"name", name}})), yERROR_PARAMETER) << name;
        EXPECT_EQ(StatusIn(Command("first", "rename", {{"name", name}})), yERROR_PARAMETER) << name;
    }
    EXPECT_EQ(StatusIn(Command("first", "copy", {{"name", 5}})), yERROR_PARAMETER);
    EXPECT_EQ(StatusIn(Command("test", "copy", {{"name", "new"}})), yERROR_NOT_FOUND) << "it has no file";
}

TEST_F(SensorJobsTest, TheLoadedJobIsNeitherReplacedNorRenamedNorDeleted) {
    Command("test", "save");
    MakeEnabling("other");
    const Json overTest = {{"name", "test"}, {"replace", true}};
    EXPECT_EQ(TextIn(Command("other", "copy", overTest)), "The job 'test' can't be replaced while it is loaded.");
    EXPECT_EQ(StatusIn(Command("other", "rename", overTest)), yERROR_CONFLICT);
    EXPECT_EQ(TextIn(Command("test", "rename", {{"name", "new"}})),
              "The job 'test' can't be renamed while it is loaded.");
    EXPECT_EQ(TextIn(Delete("test")), "The job 'test' can't be deleted while it is loaded.");
    EXPECT_EQ(StatusIn(Delete("test")), yERROR_CONFLICT);
    EXPECT_EQ(RelationsOf("/sensor/jobs"), (Texts{PathOf("other"), PathOf("test")}));
    EXPECT_EQ(ChangesNow(), Texts{});
    EXPECT_EQ(StatusIn(Delete("other")), yOK);
    EXPECT_FALSE(Exists("other"));
}

TEST_F(SensorJobsTest, TheExtensionInANameCountsOnce) {
    Command("test", "save");
    MakeEnabling("other");
    const std::string before = Tests::ReadWholeFile(FileOf("test"));
    for (const char* const command : {"copy", "rename"}) {
        const Answer answer = Command("other", command, {{"name", "test.vrjob.vrjob"}, {"replace", true}});
        EXPECT_EQ(StatusIn(answer), yERROR_PARAMETER) << command;
        EXPECT_EQ(TextIn(answer), "'test.vrjob.vrjob' is not a job name: it ends with '.vrjob' more than once.");
    }
    EXPECT_EQ(StatusIn(Command("test", "saveAs", {{"name", "new.vrjob.vrjob"}})), yERROR_PARAMETER);
    EXPECT_EQ(Tests::ReadWholeFile(FileOf("test")), before);
    EXPECT_EQ(RelationsOf("/sensor/jobs"), (Texts{PathOf("other"), PathOf("test")}));
}

TEST_F(SensorJobsTest, TheDefaultJobStaysUntilAnotherOneIs) {
    MakeEnabling("first");
    MakeEnabling("second");
    EXPECT_EQ(StatusIn(Command("first", "setDefault")), yOK);
    EXPECT_EQ(Job("first")["default"], true);
    EXPECT_EQ(Job("second")["default"], false);
    EXPECT_EQ(TextIn(Delete("first")), "The job 'first' can't be deleted while the sensor starts with it.");
    EXPECT_EQ(StatusIn(Command("first", "rename", {{"name", "third"}})), yOK);
    EXPECT_EQ(Job("third")["default"], true) << "it is the same one";
    EXPECT_EQ(StatusIn(Command("second", "setDefault")), yOK);
    EXPECT_EQ(StatusIn(Delete("third")), yOK);
}

TEST_F(SensorJobsTest, TheDefaultJobIsOneWithWhichTheSensorStarts) {
    MakeEnabling("good");
    EXPECT_EQ(StatusIn(Command("good", "setDefault")), yOK);
    Make("damaged", "{");
    Make("old", R"({"version":"0","vor:control":{"enabled":true}})");
    for (const char* const name : {"damaged", "old"}) {
        const Answer answer = Command(name, "setDefault");
        EXPECT_EQ(StatusIn(answer), yERROR_FORMAT) << name;
        EXPECT_TRUE(TextIn(answer).starts_with("The sensor couldn't start with the job '" + std::string(name) + "'. "))
            << TextIn(answer);
        const Json overGood = {{"name", "good"}, {"replace", true}};
        EXPECT_EQ(StatusIn(Command(name, "copy", overGood)), yERROR_FORMAT) << name;
        EXPECT_EQ(StatusIn(Command(name, "rename", overGood)), yERROR_FORMAT) << name;
        EXPECT_TRUE(Exists(name));
    }
    EXPECT_EQ(Job("good")["default"], true);
    EXPECT_EQ(StatusIn(Command("good", "load")), yOK) << "it is as it was";
}

TEST_F(SensorJobsTest, TheFileOfAJobIsItsArchive) {
    Command("test", "save");
    const auto bytes = Read(PathOf("test") + "/file").AsBinary();
    const std::string copy = folder.File("copy");
    Tests::WriteWholeFile(copy, {reinterpret_cast<const char*>(bytes.Data()), bytes.Size()});
    const ArchiveFile::Entries entries = ArchiveFile(copy).Read();
    const ArchiveFile::Entries stored = ArchiveFile(FileOf("test")).Read();
    ASSERT_EQ(entries.size(), stored.size());
    for (const auto& [name, content] : stored) {
        EXPECT_EQ(*entries.at(name), *content) << name;
    }
    EXPECT_EQ(RelationsOf("/sensor/jobs"), Texts{PathOf("test")}) << "nothing else is left in the folder";
    Tests::WriteWholeFile(FileOf("test"), "no archive");
    EXPECT_EQ(StatusOf([&] { Read(PathOf("test") + "/file"); }), yERROR_FORMAT);
    EXPECT_EQ(StatusOf([&] { Read(PathOf("none") + "/file"); }), yERROR_NOT_FOUND);
}

TEST_F(SensorJobsTest, ALoadIsAnsweredAtItsEndWithTheNotesOfEachService) {
    MakeEnabling("good");
    const Answer good = Command("good", "load");
    EXPECT_EQ(StatusIn(good), yOK) << TextIn(good);
    EXPECT_TRUE(host.Services().GetInstance("a").IsEnabled());
    const Json operation = good.document.ToJson();
    EXPECT_EQ(operation["command"], "load");
    EXPECT_EQ(operation["argument"], "good");
    EXPECT_EQ(operation["notes"][0], (Json{{"service", "a"}, {"result", "complete"}, {"texts", Json::array()}}));
    EXPECT_EQ(operation["notes"][1]["service"], "b");
    EXPECT_EQ(Job("good")["loaded"], true);

    Make("old", R"({"version":"0","vor:control":{"enabled":true}})");
    const Answer old = Command("old", "load");
    EXPECT_EQ(StatusIn(old), yOK) << "it is loaded, and what can't be is noted";
    const Json notes = old.document.ToJson()["notes"][0];
    EXPECT_EQ(notes["result"], "failed");
    ASSERT_FALSE(notes["texts"].empty());
    EXPECT_EQ(notes["texts"][0], "Unsupported configuration file version for service 'a service'. Manual "
                                 "configuration for service may be needed.");
}

TEST_F(SensorJobsTest, AJobThatCantBeLoadedLeavesTheOther) {
    Make("damaged", "{");
    const Answer answer = Command("damaged", "load");
    EXPECT_EQ(StatusIn(answer), yERROR_FORMAT);
    EXPECT_NE(TextIn(answer).find("entry 'controls/a/config.json' is no JSON"), std::string::npos) << TextIn(answer);
    EXPECT_EQ(Job("test")["loaded"], true);
    EXPECT_EQ(Read("/sensor/operations/1").ToJson()["text"], TextIn(answer));
}

TEST_F(SensorJobsTest, AClientOfALoadNeedntWait) {
    MakeEnabling("good");
    const Answer answer = Ask({.verb = Verb::Invoke, .path = CommandOf("good", "load"), .prefersAsync = true});
    EXPECT_TRUE(answer.isAccepted);
    EXPECT_EQ(WaitForEnd(answer.path)["notes"][0]["result"], "complete");
}

TEST_F(SensorJobsTest, EachChangeOfTheJobsIsANotice) {
    const auto stream = streams
                            ->Open({"/events", {{"topic", "notice:/sensor/jobs"}}}, {},
                                   Http::Responder(std::make_shared<NoConnection>()))
                            .stream;
    std::string text;
    const auto notices = [&] {
        loop.RunReady();
        text.clear();
        stream->Read(text);
        int count = 0;
        for (auto at = text.find("\"reload\""); at != std::string::npos; at = text.find("\"reload\"", at + 1)) {
            ++count;
        }
        return count;
    };
    EXPECT_EQ(notices(), 0);
    Command("test", "save");
    EXPECT_EQ(notices(), 1) << text;
    Command("test", "copy", {{"name", "second"}});
    EXPECT_EQ(notices(), 1);
    Command("second", "setDefault");
    EXPECT_EQ(notices(), 1);
    Command("second", "rename", {{"name", "third"}});
    EXPECT_EQ(notices(), 1);
    Delete("test");
    EXPECT_EQ(notices(), 0) << "it was refused";
    Command("third", "load");
    EXPECT_EQ(notices(), 1);
    Delete("test");
    EXPECT_EQ(notices(), 1);
    Command("third", "saveAs", {{"name", "fourth"}});
    EXPECT_EQ(notices(), 1);
    Make("damaged", "{");
    Command("damaged", "load");
    EXPECT_EQ(notices(), 0) << "it was refused";
    host.Module().Operations().LoadJob("a", "third");
    WaitFor([&] { return host.Persistence().LoadedJob() == "third.vrjob"; });
    EXPECT_EQ(notices(), 1) << "whoever loads it";
    host.Persistence().Restore("demo", [](const VorCommon::IPersistStore&) {});
    EXPECT_EQ(notices(), 1);
    Tests::Faults faults;
    faults.Set("ArchiveFile_Remove", yERROR);
    EXPECT_NE(StatusIn(Command("fourth", "rename", {{"name", "fifth"}})), yOK);
    EXPECT_EQ(notices(), 1) << "it is done by half";
}

TEST_F(SensorJobsTest, AFewRequestsWaitForFiles) {
    MakeEnabling("first");
    std::promise<void> released;
    host.Persistence().Post([wait = released.get_future().share()] { wait.wait(); });
    std::vector<Pending> waiting;
    for (std::size_t i = 0; i < FileTasks::MaxWaiting; ++i) {
        waiting.push_back(Begin({Verb::Read, PathOf("first")}));
    }
    const auto copy = [&] {
        return Begin({.verb = Verb::Invoke,
                      .path = CommandOf("first", "copy"),
                      .body = VorApi::VorDataTree::FromJson(Json{{"name", "second"}})});
    };
    // Those that wait for the persistence thread themselves would never return.
    for (const Pending& refused : {Begin({Verb::Read, PathOf("first")}), Begin({Verb::Read, PathOf("first") + "/file"}),
                                   Begin({Verb::Read, Changes}), Begin({.verb = Verb::Delete, .path = PathOf("first")}),
                                   copy(), Begin({.verb = Verb::Invoke, .path = CommandOf("test", "save")})}) {
        ASSERT_TRUE(refused->has_value());
        EXPECT_EQ(StatusIn(**refused), yERROR_BUSY);
        EXPECT_EQ(TextIn(**refused), "8 requests wait for files of jobs, which is the most that may.");
    }
    released.set_value();
    for (const Pending& pending : waiting) {
        EXPECT_EQ(StatusIn(AnswerTo(pending)), yOK);
    }
    EXPECT_EQ(StatusIn(AnswerTo(copy())), yOK);
}

TEST_F(SensorJobsTest, WorkWithFilesMayEndAfterTheResources) {
    Command("test", "save");
    std::promise<void> released;
    host.Persistence().Post([wait = released.get_future().share()] { wait.wait(); });
    const Pending pending = Begin({.verb = Verb::Invoke,
                                   .path = CommandOf("test", "copy"),
                                   .body = VorApi::VorDataTree::FromJson(Json{{"name", "second"}})});
    directory.reset();
    released.set_value();
    host.Persistence().Save(VorCommon::PersistDomain::Job).get().ThrowIfFailed(); // behind the copy
    loop.RunReady();
    EXPECT_TRUE(Exists("second"));
    EXPECT_FALSE(pending->has_value());
}

} // namespace
} // namespace Sensor::Resources
