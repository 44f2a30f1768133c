#include "VorCommon/UpdateGate.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using VorCommon::UpdateGate;

TEST(UpdateGateTest, OneThreadEntersAndLeavesAsOften) {
    UpdateGate gate;
    EXPECT_EQ(gate.Depth(), 0);
    gate.Enter(1);
    gate.Enter(1);
    EXPECT_EQ(gate.Depth(), 2);
    EXPECT_TRUE(gate.HeldByThisThread());
    gate.Leave(1);
    EXPECT_TRUE(gate.HeldByThisThread());
    gate.Leave(1);
    EXPECT_EQ(gate.Depth(), 0);
    EXPECT_FALSE(gate.HeldByThisThread());
}

TEST(UpdateGateTest, LeaveOfAFreeGateThrowsState) {
    UpdateGate gate;
    try {
        gate.Leave(1);
        FAIL() << "a gate that wasn't entered was left";
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_STATE);
    }
}

TEST(UpdateGateTest, LeaveOfAnotherThreadThrowsAndTheGateStaysHeld) {
    UpdateGate gate;
    gate.Enter(1);
    std::thread([&] {
        EXPECT_FALSE(gate.HeldByThisThread());
        EXPECT_THROW(gate.Leave(1), Vor::Exception);
    }).join();
    EXPECT_EQ(gate.Depth(), 1);
    gate.Leave(1);
}

TEST(UpdateGateTest, WaitingThreadEntersWhenTheGateIsFreeAndItsWaitIsLogged) {
    const Vor::LogCapture log;
    UpdateGate gate(std::chrono::milliseconds(1));
    std::atomic<bool> entered{false};
    gate.Enter(1);
    std::thread waiter([&] {
        gate.Enter(1);
        entered = true;
        gate.Leave(1);
    });
    EXPECT_TRUE(log.WaitFor("The update gate has been held by another thread for more than 1 ms"));
    EXPECT_FALSE(entered);
    gate.Leave(1);
    waiter.join();
    EXPECT_TRUE(entered);
    EXPECT_EQ(gate.Depth(), 0);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 1U);
}

TEST(UpdateGateTest, UpdatesOfManyThreadsNeverOverlap) {
    UpdateGate gate;
    int inside = 0;
    int total = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 200; ++k) {
                gate.Enter(1);
                EXPECT_EQ(++inside, 1);
                ++total;
                --inside;
                gate.Leave(1);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(total, 800);
}
