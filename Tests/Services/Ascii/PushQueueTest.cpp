#include "Services/Ascii/PushQueue.h"

#include <array>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace Services::Ascii {
namespace {

std::string MoveLines(PushQueue& queue, std::size_t room) {
    std::string place(room, '#');
    const std::size_t size = queue.MoveTo(std::span(reinterpret_cast<unsigned char*>(place.data()), place.size()));
    EXPECT_EQ(place.find_first_not_of('#', size), std::string::npos) << "nothing behind the lines is touched";
    return place.substr(0, size);
}

TEST(PushQueue, GivesLinesInTheirOrder) {
    PushQueue queue(100);
    EXPECT_TRUE(queue.Add("one\n"));
    EXPECT_TRUE(queue.Add("two\n"));
    EXPECT_EQ(MoveLines(queue, 50), "one\ntwo\n");
    EXPECT_EQ(MoveLines(queue, 50), "");
}

TEST(PushQueue, GivesWholeLinesOnly) {
    PushQueue queue(100);
    queue.Add("one\n");
    queue.Add("three\n");
    queue.Add("x\n");
    EXPECT_EQ(MoveLines(queue, 3), "");
    EXPECT_EQ(MoveLines(queue, 9), "one\n");
    EXPECT_EQ(MoveLines(queue, 7), "three\n") << "a shorter line doesn't pass a longer one";
    EXPECT_EQ(MoveLines(queue, 2), "x\n");
}

TEST(PushQueue, DropsAndCountsALineWithoutRoom) {
    PushQueue queue(16);
    EXPECT_TRUE(queue.Add("1234"));
    EXPECT_TRUE(queue.Add("5678"));
    EXPECT_FALSE(queue.Add(""));
    EXPECT_FALSE(queue.Add("9"));
    EXPECT_EQ(queue.Dropped(), 2u);
    EXPECT_EQ(MoveLines(queue, 4), "1234");
    EXPECT_TRUE(queue.Add("abcd")) << "the room at the start is used again";
    EXPECT_EQ(MoveLines(queue, 50), "5678abcd");
    EXPECT_FALSE(queue.Add("1234567890123"));
    EXPECT_TRUE(queue.Add("123456789012"));
    EXPECT_EQ(queue.Dropped(), 3u);
}

TEST(PushQueue, LosesNothingBetweenTwoThreads) {
    PushQueue queue(64);
    constexpr int Count = 20000;
    std::thread writer([&] {
        for (int i = 0; i < Count;) {
            i += queue.Add(std::to_string(i) + "\n") ? 1 : 0;
        }
    });
    std::string expected;
    std::string all;
    for (int i = 0; i < Count; ++i) {
        expected += std::to_string(i) + "\n";
    }
    while (all.size() < expected.size()) {
        all += MoveLines(queue, 20);
    }
    writer.join();
    EXPECT_EQ(all, expected);
}

} // namespace
} // namespace Services::Ascii
