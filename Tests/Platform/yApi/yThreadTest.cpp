#include "yApi/yThread.h"

#include "Tests/Support/Faults.h"
#include "Tests/Support/Signal.h"

#include <array>
#include <chrono>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace {

std::string NameOfThisThread() {
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

} // namespace

class yThreadTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(yThread_Destroy(thread), yOK); }

    Tests::Faults faults;
    yThread thread = nullptr;
};

TEST_F(yThreadTest, RunsUnderItsNameAndReturnsTheStatusAtTheJoin) {
    std::string name;
    ASSERT_EQ(yThread_Construct(&thread,
                                [&] {
                                    name = NameOfThisThread();
                                    return yStatus(-77);
                                }),
              yOK);
    EXPECT_EQ(yThread_SetName(thread, "CtlProtoOp.Disp"), yOK);
    EXPECT_EQ(yThread_Start(thread), yOK);
    yStatus exit = yOK;
    EXPECT_EQ(yThread_Join(thread, yINFINITE, &exit), yOK);
    EXPECT_EQ(exit, -77);
    EXPECT_EQ(name, "CtlProtoOp.Disp");
    EXPECT_STREQ(yThread_Name(thread), "CtlProtoOp.Disp");
}

TEST_F(yThreadTest, LongNameIsCutForTheSystem) {
    std::string name;
    ASSERT_EQ(yThread_Construct(&thread,
                                [&] {
                                    name = NameOfThisThread();
                                    return yOK;
                                }),
              yOK);
    EXPECT_EQ(yThread_SetName(thread, "0123456789abcdefgh"), yOK);
    EXPECT_EQ(yThread_Start(thread), yOK);
    EXPECT_EQ(yThread_Join(thread, yINFINITE, nullptr), yOK);
    EXPECT_EQ(name, "0123456789abcde");
    EXPECT_STREQ(yThread_Name(thread), "0123456789abcdefgh");
}

TEST_F(yThreadTest, JoinTimesOutWhileTheFunctionRuns) {
    Tests::Signal end;
    ASSERT_EQ(yThread_Construct(&thread,
                                [&] {
                                    end.Wait();
                                    return yOK;
                                }),
              yOK);
    EXPECT_EQ(yThread_Start(thread), yOK);
    EXPECT_EQ(yThread_Join(thread, 1000, nullptr), yERROR_TIMEOUT);
    EXPECT_EQ(yThread_Join(thread, 0, nullptr), yERROR_TIMEOUT);
    end.Set();
    yStatus exit = yERROR;
    EXPECT_EQ(yThread_Join(thread, 20'000'000, &exit), yOK);
    EXPECT_EQ(exit, yOK);
    EXPECT_EQ(yThread_Join(thread, yINFINITE, nullptr), yERROR_STATE);
}

TEST_F(yThreadTest, AnythingThrownEndsTheThreadWithAGenericFailure) {
    ASSERT_EQ(yThread_Construct(&thread, []() -> yStatus { throw 5; }), yOK);
    EXPECT_EQ(yThread_Start(thread), yOK);
    yStatus exit = yOK;
    EXPECT_EQ(yThread_Join(thread, yINFINITE, &exit), yOK);
    EXPECT_EQ(exit, yERROR);
}

TEST_F(yThreadTest, DestroyWaitsForTheEnd) {
    Tests::Signal started;
    bool ended = false;
    ASSERT_EQ(yThread_Construct(&thread,
                                [&] {
                                    started.Set();
                                    yThread_Sleep(1000);
                                    ended = true;
                                    return yOK;
                                }),
              yOK);
    EXPECT_EQ(yThread_Start(thread), yOK);
    EXPECT_TRUE(started.Wait());
    EXPECT_EQ(yThread_Destroy(thread), yOK);
    thread = nullptr;
    EXPECT_TRUE(ended);
}

TEST_F(yThreadTest, StartsOnlyOnceAndCantBeJoinedUnstarted) {
    ASSERT_EQ(yThread_Construct(&thread, [] { return yOK; }), yOK);
    EXPECT_EQ(yThread_Join(thread, 0, nullptr), yERROR_STATE);
    EXPECT_EQ(yThread_Start(thread), yOK);
    EXPECT_EQ(yThread_Start(thread), yERROR_STATE);
}

TEST_F(yThreadTest, CantJoinItself) {
    yStatus inside = yOK;
    Tests::Signal known;
    ASSERT_EQ(yThread_Construct(&thread,
                                [&] {
                                    known.Wait();
                                    inside = yThread_Join(thread, yINFINITE, nullptr);
                                    return yOK;
                                }),
              yOK);
    EXPECT_EQ(yThread_Start(thread), yOK);
    known.Set();
    EXPECT_EQ(yThread_Join(thread, yINFINITE, nullptr), yOK);
    EXPECT_EQ(inside, yERROR_STATE);
}

TEST_F(yThreadTest, StepsCanBeMadeToFail) {
    faults.Set("yThread_Construct", -1);
    EXPECT_EQ(yThread_Construct(&thread, [] { return yOK; }), -1);
    EXPECT_EQ(thread, nullptr);
    ASSERT_EQ(yThread_Construct(&thread, [] { return yOK; }), yOK);
    faults.Set("yThread_SetName", -2);
    EXPECT_EQ(yThread_SetName(thread, "name"), -2);
    faults.Set("yThread_Start", -3);
    EXPECT_EQ(yThread_Start(thread), -3);
    EXPECT_EQ(yThread_Start(thread), yOK);
    faults.Set("yThread_Join", -4);
    EXPECT_EQ(yThread_Join(thread, yINFINITE, nullptr), -4);
    EXPECT_EQ(yThread_Join(thread, yINFINITE, nullptr), yOK);
    faults.Set("yThread_Sleep", -5);
    EXPECT_EQ(yThread_Sleep(60'000'000), -5);
}

TEST_F(yThreadTest, EmptyFunctionAndNullAreBadParameters) {
    EXPECT_EQ(yThread_Construct(&thread, nullptr), yERROR_PARAMETER);
    EXPECT_EQ(yThread_Construct(nullptr, [] { return yOK; }), yERROR_PARAMETER);
    EXPECT_EQ(yThread_Start(nullptr), yERROR_PARAMETER);
    EXPECT_EQ(yThread_SetName(nullptr, "name"), yERROR_PARAMETER);
    EXPECT_EQ(yThread_Join(nullptr, 0, nullptr), yERROR_PARAMETER);
}

TEST(yThread, SleepLastsAtLeastTheGivenMicroseconds) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(yThread_Sleep(2000), yOK);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::microseconds(2000));
}
