#include "VorControl/Control/ControlResourceAdaptor.h"

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/MainLoopThread.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorApi/DocumentResourceBase.h"
#include "VorApi/ResourceRouter.h"
#include "VorRest/RequestProcessor.h"

#include <future>
#include <thread>

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using VorControl::ControlResourceAdaptor;

namespace {

class Things : public VorApi::DocumentResourceBase {
public:
    void Document(const VorApi::RequestInfoEx&, VorApi::ResponseInfoEx&, VorApi::VorDataTree& data) override {
        data["name"].Set("x");
        data["list"]["count"].Set(std::int64_t{3});
    }
};

constexpr unsigned long long Patience = 10000000;

class ControlResourceAdaptorTest : public testing::Test {
protected:
    ControlResourceAdaptorTest() { router.Register("/things", things); }

    Vor::LogCapture log;
    VorApi::ResourceRouter router;
    Things things;
    VorRest::RequestProcessor processor{router};
    ControlResourceAdaptor adaptor{processor};
    std::string out = "before";
};

TEST_F(ControlResourceAdaptorTest, ReturnsTheWholeDocumentFromAnyThread) {
    const Tests::MainLoopThread loop;
    adaptor.Read("/things", out, Patience);
    EXPECT_EQ(out, R"({"name":"x","list":{"count":3}})");
}

TEST_F(ControlResourceAdaptorTest, ReturnsTheMemberThatAFragmentNames) {
    const Tests::MainLoopThread loop;
    adaptor.Read("/things#/list", out, Patience);
    EXPECT_EQ(out, R"({"count":3})");
    adaptor.Read("/things#/missing", out, Patience);
    EXPECT_EQ(out, "null");
    adaptor.Read("/things#/", out, Patience);
    EXPECT_EQ(out, R"({"name":"x","list":{"count":3}})");
}

TEST_F(ControlResourceAdaptorTest, APathThatIsRefusedLeavesTheNextReadPossible) {
    const Tests::MainLoopThread loop;
    EXPECT_FAILURE(adaptor.Read("/other", out, Patience), yERROR_NOT_FOUND, "Failed to read resource.");
    EXPECT_EQ(out, "before");
    EXPECT_TRUE(log.Contains(Vor::LevelWarning,
                             "Exception processing reading resource path due to (There is no resource at /other.)"));
    adaptor.Read("/things#/name", out, Patience);
    EXPECT_EQ(out, "\"x\"");
}

TEST_F(ControlResourceAdaptorTest, OneReadAtATimeAndATimedOutOneCountsUntilTheMainLoopHasEndedIt) {
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    auto first = std::async(std::launch::async, [this] {
        std::string text = "unchanged";
        const auto failure = Tests::FailureOf([&] { adaptor.Read("/things", text, 1000); });
        return std::pair(failure, text);
    });
    ASSERT_TRUE(loop.WaitReady());
    EXPECT_FAILURE(std::async(std::launch::async, [this] { adaptor.Read("/things", out, 0); }).get(), yERROR_BUSY,
                   "Cannot read resource data. Another read operation is already in progress.");
    loop.Elapse(1ms);
    const auto [failure, text] = first.get();
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_COMMAND);
    EXPECT_EQ(failure->text, "Failed to read resource.");
    EXPECT_EQ(text, "unchanged");
    EXPECT_EQ(log.CountLevel(Vor::LevelWarning), 1U);
    EXPECT_TRUE(
        log.Contains(Vor::LevelWarning,
                     "Failed to read resource data due to (The main loop did not answer within 1000 microseconds)"));
    EXPECT_EQ(Tests::StatusOf([&] { adaptor.Read("/things", out, 0); }), yERROR_BUSY);

    loop.RunReady();
    adaptor.Read("/things#/name", out, 0);
    EXPECT_EQ(out, "\"x\"");
}

TEST_F(ControlResourceAdaptorTest, ASecondReadDuringAFirstIsRefusedAndTheFirstSucceeds) {
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    auto first = std::async(std::launch::async, [this] {
        std::string text;
        adaptor.Read("/things#/name", text, Patience);
        return text;
    });
    ASSERT_TRUE(loop.WaitReady());
    EXPECT_FAILURE(std::async(std::launch::async, [this] { adaptor.Read("/things", out, Patience); }).get(),
                   yERROR_BUSY, "Cannot read resource data. Another read operation is already in progress.");
    EXPECT_EQ(out, "before");
    loop.RunReady();
    EXPECT_EQ(first.get(), "\"x\"");
}

TEST_F(ControlResourceAdaptorTest, TheHostForwardsToIt) {
    const Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    Tests::HostEnviron environ;
    environ.application.router.Register("/things", things);
    environ.host.ReadResource("/things#/name", out, 0);
    EXPECT_EQ(out, "\"x\"");
}

} // namespace
