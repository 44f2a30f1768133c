// The thread of the test is the main loop's, and runs it step by step.

#include "Services/Ascii/ResourceReader.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Threads.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "yApi/yStatus.h"

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Ascii {
namespace {

using namespace std::chrono_literals;

class ResourceReaderTest : public testing::Test {
protected:
    std::shared_ptr<PendingAnswer> Add(const std::string& target) {
        auto answer = std::make_shared<PendingAnswer>(PendingAnswer::Kind::Document);
        return reader->Add(ReadTarget::Parse(target), answer) ? answer : nullptr;
    }

    /// Runs the main loop until the read has ended.
    bool WaitForEnd(const std::shared_ptr<PendingAnswer>& answer) {
        return Tests::WaitUntil([&] {
            loop.RunReady();
            return answer->HasEnded();
        });
    }

    /// What a read results in: the document, or "STATUS REASON".
    std::string Read(const std::string& target) {
        const auto answer = Add(target);
        if (answer == nullptr || !WaitForEnd(answer)) {
            return "(nothing)";
        }
        return answer->status == yOK ? answer->document : std::to_string(answer->status) + " " + answer->reason;
    }

    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    std::map<std::string, std::string> documents;
    std::vector<std::string> paths; ///< that were read
    std::atomic<int> ends{0};
    const ResourceReader::Read read = [this](const std::string& path) {
        paths.push_back(path);
        if (!documents.contains(path)) {
            Vor::Throw(yERROR_NOT_FOUND, "there is no %s", path);
        }
        return documents[path];
    };
    std::optional<ResourceReader> reader{std::in_place, read, [this] { ++ends; }, 1h};
};

TEST_F(ResourceReaderTest, ParsesAPathWithAMember) {
    const ReadTarget whole = ReadTarget::Parse("/controls/ascii");
    EXPECT_EQ(whole.path, "/controls/ascii");
    EXPECT_EQ(whole.pointer, "");
    const ReadTarget member = ReadTarget::Parse("/sensor/scan#/values/0/a~1b");
    EXPECT_EQ(member.path, "/sensor/scan");
    EXPECT_EQ(member.pointer, "/values/0/a~1b");
    for (const char* path : {"/controls", "/controls/", "/controls/modbus/registerAssemblies/registerAssembly-0",
                             "/controls/a%20b", "/sensor/scan", "/sensor/scan/history", "/sensor/scan#"}) {
        EXPECT_NO_THROW(ReadTarget::Parse(path)) << path;
    }
}

TEST_F(ResourceReaderTest, RefusesWhatLeadsElsewhere) {
    for (const char* path : {"/",
                             "/sensor",
                             "/sensor/",
                             "/sensor/jobs/demo",
                             "/sensor/scanner",
                             "/controlTypes",
                             "/controls2",
                             "//controls",
                             "/controls//ascii",
                             "/controls/..",
                             "/controls/../sensor/jobs",
                             "/controls/./ascii",
                             "/controls/%2e%2e/sensor/jobs",
                             "/controls/%2E./sensor/jobs",
                             "/controls/..%2Fsensor",
                             "/controls%2F..%2Fsensor",
                             "/sensor%2Fscan",
                             "/sensor/scan/../jobs",
                             "/sensor/scan?points=0",
                             "/%73ensor/jobs"}) {
        EXPECT_FAILURE(ReadTarget::Parse(path), yERROR_PARAMETER,
                       "READ reads /controls, /sensor/scan and what is below them, and nothing else");
    }
    EXPECT_FAILURE(ReadTarget::Parse(""), yERROR_PARAMETER, "the path is missing: READ PATH[#/MEMBER]");
    EXPECT_FAILURE(ReadTarget::Parse("#/a"), yERROR_PARAMETER, "the path is missing: READ PATH[#/MEMBER]");
    EXPECT_FAILURE(ReadTarget::Parse("controls"), yERROR_PARAMETER, "The path 'controls' doesn't begin with a slash.");
    EXPECT_FAILURE(ReadTarget::Parse("/controls/%2"), yERROR_FORMAT,
                   "'%2' has a percent sign that two hexadecimal digits don't follow.");
    EXPECT_EQ(Tests::StatusOf([] { ReadTarget::Parse("/controls/%00"); }), yERROR_FORMAT);
    for (const char* member : {"a", "/a~", "/a~2"}) {
        EXPECT_FAILURE(ReadTarget::Parse(std::string("/controls#") + member), yERROR_PARAMETER,
                       "#" + std::string(member) +
                           " isn't a member: expected #/MEMBER, with ~0 for ~ and ~1 for / in a name");
    }
}

TEST_F(ResourceReaderTest, ReadsDocumentsAndMembers) {
    documents["/controls/a"] = R"({"z":1.5,"a/b":{"~c":[1,"two",null]},"":true})";
    EXPECT_EQ(Read("/controls/a"), R"({"z":1.5,"a/b":{"~c":[1,"two",null]},"":true})");
    EXPECT_EQ(Read("/controls/a#/z"), "1.5");
    EXPECT_EQ(Read("/controls/a#/a~1b/~0c"), R"([1,"two",null])");
    EXPECT_EQ(Read("/controls/a#/a~1b/~0c/2"), "null");
    EXPECT_EQ(Read("/controls/a#/"), "true");
    for (const char* member : {"/b", "/z/1", "/a~1b/~0c/3", "/a~1b/~0c/-", "/a~1b/~0c/01", "/a~1b/~0c/x"}) {
        EXPECT_EQ(Read(std::string("/controls/a#") + member), "-999 the document has no member " + std::string(member));
    }
    EXPECT_TRUE(Tests::WaitUntil([&] { return ends == 11; })) << "each end is reported";
}

TEST_F(ResourceReaderTest, AnswersInOneLineOfAscii) {
    documents["/controls/a"] = "{\"H\u00f6he\": \"a\\nb\x7f\"}";
    EXPECT_EQ(Read("/controls/a"), R"({"H\u00f6he":"a\nb\u007f"})");
}

TEST_F(ResourceReaderTest, SaysWhyAReadFails) {
    EXPECT_EQ(Read("/controls/a"), "-999 there is no /controls/a");
    documents["/controls/a"] = "no JSON";
    const Vor::LogCapture log;
    EXPECT_EQ(Read("/controls/a"), "0 ");
    EXPECT_TRUE(log.Contains(Vor::LevelError, "A resource can't be read."));
}

TEST_F(ResourceReaderTest, RefusesWhatIsTooLong) {
    const std::size_t text = ResourceReader::MaxAnswerSize - 2;
    documents["/controls/a"] = "[\"" + std::string(text, 'x') + "\",7]";
    EXPECT_EQ(Read("/controls/a#/0").size(), ResourceReader::MaxAnswerSize);
    EXPECT_EQ(Read("/controls/a#/1"), "7");
    EXPECT_EQ(Read("/controls/a"),
              "-992 the answer would be longer than 65536 bytes; read a member of it: READ PATH#/MEMBER");
    documents["/controls/a"] = "[\"" + std::string(text + 1, 'x') + "\",7]";
    EXPECT_EQ(Read("/controls/a#/0").substr(0, 5), "-992 ");
    documents["/controls/a"] = "[7,\"" + std::string(ResourceReader::MaxDocumentSize - 6, 'x') + "\"]";
    EXPECT_EQ(Read("/controls/a#/0"), "7");
    documents["/controls/a"] += ' ';
    EXPECT_EQ(Read("/controls/a#/0"), "-992 the document is longer than 1048576 bytes, and too long for this service");
}

TEST_F(ResourceReaderTest, ReadsOneAfterTheOtherInTheirOrder) {
    std::vector<std::shared_ptr<PendingAnswer>> answers;
    std::vector<std::string> expected;
    for (std::size_t i = 0; i <= ResourceReader::MaxWaiting; ++i) {
        expected.push_back("/controls/" + std::to_string(i));
        documents[expected.back()] = std::to_string(i);
        answers.push_back(Add(expected.back()));
        ASSERT_NE(answers.back(), nullptr);
    }
    EXPECT_EQ(Add("/controls/more"), nullptr) << "eight wait";
    ASSERT_TRUE(WaitForEnd(answers.back()));
    EXPECT_EQ(paths, expected);
    for (std::size_t i = 0; i < answers.size(); ++i) {
        EXPECT_TRUE(answers[i]->HasEnded());
        EXPECT_EQ(answers[i]->document, std::to_string(i));
    }
    EXPECT_EQ(Read("/controls/0"), "0");
}

TEST_F(ResourceReaderTest, DoesNotReadForAClientThatHasGone) {
    documents = {{"/controls/0", "0"}, {"/controls/2", "2"}};
    const auto first = Add("/controls/0");
    ASSERT_TRUE(loop.WaitReady()) << "the first one is being read";
    for (std::size_t i = 0; i < 3 * ResourceReader::MaxWaiting; ++i) {
        EXPECT_NE(Add("/controls/1"), nullptr) << "those that have gone occupy no place";
    }
    const auto last = Add("/controls/2");
    ASSERT_TRUE(WaitForEnd(last));
    EXPECT_TRUE(first->HasEnded());
    EXPECT_EQ(paths, (std::vector<std::string>{"/controls/0", "/controls/2"}));
}

TEST_F(ResourceReaderTest, GivesUpAReadThatTakesTooLong) {
    reader.emplace(
        read, [this] { ++ends; }, 1ms);
    documents["/controls/a"] = "1";
    const auto answer = Add("/controls/a");
    ASSERT_TRUE(Tests::WaitUntil([&] { return answer->HasEnded(); }));
    EXPECT_EQ(answer->status, yERROR_TIMEOUT);
    EXPECT_EQ(answer->reason, "the sensor didn't read this within 1 ms");
    loop.RunReady();
    EXPECT_TRUE(paths.empty()) << "the main loop doesn't read what nobody waits for";
}

TEST_F(ResourceReaderTest, StopsOnTheMainLoopWhileReadsWaitForIt) {
    documents = {{"/controls/0", "0"}, {"/controls/1", "1"}};
    const auto first = Add("/controls/0");
    const auto second = Add("/controls/1");
    ASSERT_TRUE(loop.WaitReady()) << "the first one is being read";
    reader->Stop();
    EXPECT_EQ(Tests::CountThreads("AsciiRead"), 0u);
    EXPECT_TRUE(first->HasEnded());
    EXPECT_EQ(first->status, yERROR_STATE);
    EXPECT_FALSE(second->HasEnded());
    loop.RunReady();
    EXPECT_TRUE(paths.empty());
    EXPECT_EQ(Read("/controls/1"), "1") << "it starts anew";
    reader->Stop();
    reader->Stop();
}

TEST_F(ResourceReaderTest, EndsOnTheMainLoopWhileAReadWaitsForIt) {
    documents["/controls/0"] = "0";
    const auto answer = Add("/controls/0");
    ASSERT_TRUE(loop.WaitReady());
    reader.reset();
    EXPECT_TRUE(answer->HasEnded());
    loop.RunReady();
    EXPECT_TRUE(paths.empty());
}

} // namespace
} // namespace Services::Ascii
