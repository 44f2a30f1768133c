#include "VorApi/Handle.h"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

std::vector<int*> destroyed;

void Destroy(int* resource) {
    destroyed.push_back(resource);
}

using IntHandle = Vor::Handle<int*, Destroy>;

} // namespace

class HandleTest : public testing::Test {
protected:
    HandleTest() { destroyed.clear(); }

    int first = 1;
    int second = 2;
};

TEST_F(HandleTest, DestroysWhatItHoldsOnce) {
    {
        IntHandle handle;
        EXPECT_FALSE(handle);
        *handle.Out() = &first;
        EXPECT_TRUE(handle);
        EXPECT_EQ(handle.Get(), &first);
        handle.Reset();
        handle.Reset();
        EXPECT_EQ(handle.Get(), nullptr);
    }
    EXPECT_EQ(destroyed, std::vector<int*>{&first});
}

TEST_F(HandleTest, OutDestroysTheFormerResource) {
    IntHandle handle;
    *handle.Out() = &first;
    *handle.Out() = &second;
    EXPECT_EQ(destroyed, std::vector<int*>{&first});
    EXPECT_EQ(handle.Get(), &second);
}

TEST_F(HandleTest, MovesAndSwapsWithoutDestroying) {
    IntHandle one;
    IntHandle two;
    *one.Out() = &first;
    *two.Out() = &second;
    std::swap(one, two);
    EXPECT_EQ(one.Get(), &second);
    EXPECT_EQ(two.Get(), &first);
    const IntHandle three(std::move(one));
    EXPECT_EQ(three.Get(), &second);
    EXPECT_TRUE(destroyed.empty());
}
