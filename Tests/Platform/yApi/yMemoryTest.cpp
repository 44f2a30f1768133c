#include "yApi/yMemory.h"

#include "Tests/Support/Faults.h"

#include <array>
#include <memory_resource>

#include <gtest/gtest.h>

TEST(yMemory, SetFillsExactlyTheGivenBytes) {
    std::array<unsigned char, 4> bytes{1, 1, 1, 1};
    EXPECT_EQ(yMemSet(bytes.data() + 1, 0xAB, 2), yOK);
    EXPECT_EQ(bytes, (std::array<unsigned char, 4>{1, 0xAB, 0xAB, 1}));
}

TEST(yMemory, CopyCopiesExactlyTheGivenBytes) {
    std::array<unsigned char, 4> bytes{9, 9, 9, 9};
    const std::array<unsigned char, 2> source{1, 2};
    EXPECT_EQ(yMemCopy(bytes.data() + 1, source.data(), 2), yOK);
    EXPECT_EQ(bytes, (std::array<unsigned char, 4>{9, 1, 2, 9}));
}

TEST(yMemory, SizeZeroIsLegalEvenWithNullPointers) {
    EXPECT_EQ(yMemSet(nullptr, 0, 0), yOK);
    EXPECT_EQ(yMemCopy(nullptr, nullptr, 0), yOK);
}

TEST(yMemory, NullPointerWithASizeIsABadParameter) {
    char byte = 0;
    EXPECT_EQ(yMemSet(nullptr, 0, 1), yERROR_PARAMETER);
    EXPECT_EQ(yMemCopy(nullptr, &byte, 1), yERROR_PARAMETER);
    EXPECT_EQ(yMemCopy(&byte, nullptr, 1), yERROR_PARAMETER);
}

TEST(yMemory, SetAndCopyCanBeMadeToFailWithoutWriting) {
    Tests::Faults faults;
    faults.Set("yMemSet", -1234);
    faults.Set("yMemCopy", -2345);
    char byte = 7;
    const char source = 1;
    EXPECT_EQ(yMemSet(&byte, 0, 1), -1234);
    EXPECT_EQ(yMemCopy(&byte, &source, 1), -2345);
    EXPECT_EQ(byte, 7);
}

TEST(yMemory, AllocatesFromTheGivenResource) {
    std::array<std::byte, 256> buffer;
    std::pmr::monotonic_buffer_resource resource(buffer.data(), buffer.size(), std::pmr::null_memory_resource());
    void* memory = yMemory_Allocate(static_cast<std::pmr::memory_resource*>(&resource), 16);
    EXPECT_GE(memory, static_cast<void*>(buffer.data()));
    EXPECT_LT(memory, static_cast<void*>(buffer.data() + buffer.size()));
    yMemory_Free(static_cast<std::pmr::memory_resource*>(&resource), memory, 16);
}
