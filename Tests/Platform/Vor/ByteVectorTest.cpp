#include "Vor/ByteVector.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using Vor::Properties::ByteVector;

namespace {

ByteVector Bytes(const std::string& text) {
    return ByteVector(text.data(), text.size());
}

} // namespace

TEST(ByteVectorTest, OrdersByteByByteAndShorterFirst) {
    EXPECT_LT(Bytes("ab"), Bytes("abc"));
    EXPECT_LT(Bytes("abc"), Bytes("b"));
    EXPECT_GT(Bytes("\xff"), Bytes("\x7f"));
    EXPECT_LE(Bytes("a"), Bytes("a"));
    EXPECT_GE(Bytes("a"), Bytes("a"));
    EXPECT_EQ(Bytes("a"), Bytes("a"));
    EXPECT_NE(Bytes("a"), Bytes(""));
    EXPECT_LT(ByteVector(), Bytes(std::string(1, '\0')));
}

TEST(ByteVectorTest, Base64OfTheStandardsExamplesBothWays) {
    const std::vector<std::pair<std::string, std::string>> examples = {{"", ""},
                                                                       {"f", "Zg=="},
                                                                       {"fo", "Zm8="},
                                                                       {"foo", "Zm9v"},
                                                                       {"foob", "Zm9vYg=="},
                                                                       {"fooba", "Zm9vYmE="},
                                                                       {"foobar", "Zm9vYmFy"},
                                                                       {"\xfb\xff\xfe", "+//+"}};
    for (const auto& [plain, encoded] : examples) {
        EXPECT_EQ(Bytes(plain).ToBase64(), encoded);
        ByteVector decoded;
        ASSERT_TRUE(ByteVector::FromBase64(encoded, decoded)) << encoded;
        EXPECT_EQ(decoded, Bytes(plain));
    }
}

TEST(ByteVectorTest, AnyOtherTextIsRefusedAndLeavesTheTarget) {
    for (const char* text : {"Z", "Zg", "Zg=", "Zg===", "Zh==", "Zm9=", "Z===", "====", "Zg==Zg==", "Zm 9v", "Zm9v\n",
                             "Zm-v", "=m9v", "Zm=v"}) {
        ByteVector target = Bytes("kept");
        EXPECT_FALSE(ByteVector::FromBase64(text, target)) << text;
        EXPECT_EQ(target, Bytes("kept"));
    }
}

TEST(ByteVectorTest, EachByteValueSurvives) {
    std::vector<unsigned char> all;
    for (int i = 0; i < 256; ++i) {
        all.push_back(static_cast<unsigned char>(i));
    }
    const ByteVector bytes(all);
    ByteVector decoded;
    ASSERT_TRUE(ByteVector::FromBase64(bytes.ToBase64(), decoded));
    EXPECT_EQ(decoded, bytes);
    EXPECT_EQ(decoded.Size(), 256U);
}
