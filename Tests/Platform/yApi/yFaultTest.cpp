#include "Tests/Support/Faults.h"

#include <thread>

#include <gtest/gtest.h>

TEST(yFault, NothingFailsUnlessArmed) {
    const Tests::Faults faults;
    EXPECT_EQ(yFault_Check("anything"), yOK);
    EXPECT_EQ(yFault_HitCount(), 0U);
}

TEST(yFault, FailsOnceWithTheGivenStatus) {
    Tests::Faults faults;
    faults.Set("call", yERROR_FULL);
    EXPECT_EQ(yFault_Check("other"), yOK);
    EXPECT_EQ(yFault_Check("call"), yERROR_FULL);
    EXPECT_EQ(yFault_Check("call"), yOK);
    EXPECT_EQ(yFault_HitCount(), 1U);
}

TEST(yFault, SkipsFirstAndFailsSeveralTimes) {
    Tests::Faults faults;
    faults.Set("call", yERROR, 2, 2);
    EXPECT_EQ(yFault_Check("call"), yOK);
    EXPECT_EQ(yFault_Check("call"), yOK);
    EXPECT_EQ(yFault_Check("call"), yERROR);
    EXPECT_EQ(yFault_Check("call"), yERROR);
    EXPECT_EQ(yFault_Check("call"), yOK);
}

TEST(yFault, EntriesOfOneNameAreUsedUpInOrder) {
    Tests::Faults faults;
    faults.Set("call", yERROR_STATE);
    faults.Set("call", yERROR_SIZE);
    EXPECT_EQ(yFault_Check("call"), yERROR_STATE);
    EXPECT_EQ(yFault_Check("call"), yERROR_SIZE);
    EXPECT_EQ(yFault_Check("call"), yOK);
}

TEST(yFault, OfThisThreadLeavesOtherThreadsAlone) {
    Tests::Faults faults;
    faults.SetHere("call", yERROR_STATE);
    yStatus elsewhere = yERROR;
    std::thread([&] { elsewhere = yFault_Check("call"); }).join();
    EXPECT_EQ(elsewhere, yOK);
    EXPECT_EQ(yFault_Check("call"), yERROR_STATE);
}

TEST(yFault, ClearDisarmsEverything) {
    Tests::Faults faults;
    faults.Set("call", yERROR, 0, 100);
    yFault_Clear();
    EXPECT_EQ(yFault_Check("call"), yOK);
}
