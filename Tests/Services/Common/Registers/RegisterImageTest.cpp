#include "Services/Common/Registers/RegisterImage.h"

#include <atomic>
#include <initializer_list>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Common {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned char Untouched = 0xEE;

Bytes Read(const RegisterImage& image, std::size_t offset, std::size_t size) {
    Bytes bytes(size + 2, Untouched);
    if (!image.Read(offset, size, bytes.data())) {
        EXPECT_EQ(bytes, Bytes(size + 2, Untouched)) << "nothing is written";
        return {};
    }
    EXPECT_EQ(bytes[size], Untouched);
    EXPECT_EQ(bytes[size + 1], Untouched);
    bytes.resize(size);
    return bytes;
}

Bytes CountingBytes(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<unsigned char>(i + 1);
    }
    return bytes;
}

TEST(RegisterImage, HasNoByteAtFirst) {
    const RegisterImage image;
    EXPECT_EQ(Read(image, 0, 250), Bytes());
    EXPECT_EQ(Read(image, 131070, 2), Bytes());
}

TEST(RegisterImage, ReadsARangeThatTouchesABlock) {
    RegisterImage image;
    Bytes bytes(14, 0);
    bytes[8] = 1;
    bytes[13] = 6;
    image.Replace({{8, 14}}, bytes);
    EXPECT_EQ(Read(image, 0, 8), Bytes()) << "ends before the block";
    EXPECT_EQ(Read(image, 14, 8), Bytes()) << "begins behind the block";
    EXPECT_EQ(Read(image, 7, 2), (Bytes{0, 1}));
    EXPECT_EQ(Read(image, 12, 5), (Bytes{0, 6, 0, 0, 0})) << "beyond the last block bytes are 0";
    EXPECT_EQ(Read(image, 13, 1), (Bytes{6}));
}

TEST(RegisterImage, FindsBlocksOnBothSidesOfAGap) {
    RegisterImage image;
    image.Replace({{0, 3}, {10, 12}, {20, 21}}, CountingBytes(21));
    EXPECT_EQ(Read(image, 3, 7), Bytes());
    EXPECT_EQ(Read(image, 12, 8), Bytes());
    EXPECT_EQ(Read(image, 3, 8).size(), 8u);
    EXPECT_EQ(Read(image, 11, 9).size(), 9u);
    EXPECT_EQ(Read(image, 20, 1), (Bytes{21}));
    EXPECT_EQ(Read(image, 21, 1), Bytes());
}

TEST(RegisterImage, ReadsTheLastByte) {
    RegisterImage image;
    image.Replace({{131071, 131072}}, Bytes(131072, 9));
    EXPECT_EQ(Read(image, 131071, 1), (Bytes{9}));
    EXPECT_EQ(Read(image, 131070, 1), Bytes());
}

/// Writes all parts at once.
void Write(RegisterImage& image, std::initializer_list<std::pair<std::size_t, Bytes>> written) {
    std::vector<RegisterImage::Part> parts;
    for (const auto& [offset, bytes] : written) {
        parts.push_back({offset, bytes});
    }
    image.Write(parts);
}

TEST(RegisterImage, WritesPartsInPlace) {
    RegisterImage image;
    image.Replace({{0, 12}}, Bytes(12, 0));
    Write(image, {{3, {7, 8, 9}}, {0, {}}, {9, {5}}});
    EXPECT_EQ(Read(image, 0, 12), (Bytes{0, 0, 0, 7, 8, 9, 0, 0, 0, 5, 0, 0}));
}

TEST(RegisterImage, ShowsOneWriteWholeToEveryRead) {
    RegisterImage image;
    image.Replace({{0, 250}}, Bytes(250, 0));
    std::atomic<bool> stop = false;
    std::thread writer([&] {
        for (unsigned i = 0; !stop; ++i) {
            if (i % 64 == 0) {
                image.Replace({{0, 250}}, Bytes(250, static_cast<unsigned char>(i)));
            } else {
                const Bytes half(125, static_cast<unsigned char>(i));
                Write(image, {{0, half}, {125, half}});
            }
        }
    });
    for (int i = 0; i < 20000; ++i) {
        const Bytes bytes = Read(image, 0, 250);
        ASSERT_EQ(bytes, Bytes(250, bytes[0]));
    }
    stop = true;
    writer.join();
}

} // namespace
} // namespace Services::Common
