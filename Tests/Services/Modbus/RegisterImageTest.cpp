#include "Services/Modbus/RegisterImage.h"

#include "Tests/Services/Modbus/Bytes.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

namespace Services::Modbus {
namespace {

constexpr unsigned char Untouched = 0xEE;

Bytes Read(const RegisterImage& image, unsigned address, unsigned count) {
    Bytes bytes(2 * count + 2, Untouched);
    if (!image.Read(static_cast<std::uint16_t>(address), static_cast<std::uint16_t>(count), bytes.data())) {
        EXPECT_EQ(bytes, Bytes(2 * count + 2, Untouched)) << "nothing is written";
        return {};
    }
    EXPECT_EQ(bytes[2 * count], Untouched);
    EXPECT_EQ(bytes[2 * count + 1], Untouched);
    bytes.resize(2 * count);
    return bytes;
}

Bytes CountingBytes(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<unsigned char>(i + 1);
    }
    return bytes;
}

TEST(RegisterImage, HasNoRegisterAtFirst) {
    const RegisterImage image;
    EXPECT_EQ(Read(image, 0, 125), Bytes());
    EXPECT_EQ(Read(image, 65535, 1), Bytes());
}

TEST(RegisterImage, ReadsARangeThatTouchesABlock) {
    RegisterImage image;
    Bytes bytes(14, 0);
    bytes[8] = 1;
    bytes[13] = 6;
    image.Replace({{4, 7}}, bytes);
    EXPECT_EQ(Read(image, 0, 4), Bytes()) << "ends before the block";
    EXPECT_EQ(Read(image, 7, 4), Bytes()) << "begins behind the block";
    EXPECT_EQ(Read(image, 3, 2), (Bytes{0, 0, 1, 0}));
    EXPECT_EQ(Read(image, 6, 3), (Bytes{0, 6, 0, 0, 0, 0})) << "beyond the last block registers are 0";
    EXPECT_EQ(Read(image, 5, 1), (Bytes{0, 0}));
}

TEST(RegisterImage, FindsBlocksOnBothSidesOfAGap) {
    RegisterImage image;
    image.Replace({{0, 2}, {10, 12}, {20, 21}}, CountingBytes(42));
    EXPECT_EQ(Read(image, 2, 8), Bytes());
    EXPECT_EQ(Read(image, 12, 8), Bytes());
    EXPECT_EQ(Read(image, 2, 9).size(), 18u);
    EXPECT_EQ(Read(image, 11, 9).size(), 18u);
    EXPECT_EQ(Read(image, 20, 1), (Bytes{41, 42}));
    EXPECT_EQ(Read(image, 21, 1), Bytes());
}

TEST(RegisterImage, ReadsTheLastRegister) {
    RegisterImage image;
    image.Replace({{65535, 65536}}, Bytes(2 * 65536, 9));
    EXPECT_EQ(Read(image, 65535, 1), (Bytes{9, 9}));
    EXPECT_EQ(Read(image, 65534, 1), Bytes());
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
    image.Replace({{0, 6}}, Bytes(12, 0));
    Write(image, {{3, {7, 8, 9}}, {0, {}}, {9, {5}}});
    EXPECT_EQ(Read(image, 0, 6), (Bytes{0, 0, 0, 7, 8, 9, 0, 0, 0, 5, 0, 0}));
}

TEST(RegisterImage, ShowsOneWriteWholeToEveryRead) {
    RegisterImage image;
    image.Replace({{0, 125}}, Bytes(250, 0));
    std::atomic<bool> stop = false;
    std::thread writer([&] {
        for (unsigned i = 0; !stop; ++i) {
            if (i % 64 == 0) {
                image.Replace({{0, 125}}, Bytes(250, static_cast<unsigned char>(i)));
            } else {
                const Bytes half(125, static_cast<unsigned char>(i));
                Write(image, {{0, half}, {125, half}});
            }
        }
    });
    for (int i = 0; i < 20000; ++i) {
        const Bytes bytes = Read(image, 0, 125);
        ASSERT_EQ(bytes, Bytes(250, bytes[0]));
    }
    stop = true;
    writer.join();
}

} // namespace
} // namespace Services::Modbus
