#include "yApi/yVersion.h"

#include "Tests/Support/Faults.h"

#include <gtest/gtest.h>

TEST(yVersion, ParsesFourNumbers) {
    yVersion version;
    EXPECT_EQ(yVersion_Parse(&version, "1.20.0.4294967295"), yOK);
    EXPECT_EQ(version, (yVersion{1, 20, 0, 4294967295U}));
}

TEST(yVersion, RefusesEverythingElse) {
    for (const char* text : {"", "1", "1.0.0", "1.0.0.", "1.0.0.0.", "1.0.0.0.0", "1.0.0.0 ", " 1.0.0.0", "1.0.x.0",
                             "1.-1.0.0", "1.+1.0.0", "1..0.0", "1.0.0.4294967296"}) {
        yVersion version{9, 9, 9, 9};
        EXPECT_EQ(yVersion_Parse(&version, text), yERROR_FORMAT) << text;
        EXPECT_EQ(version, (yVersion{9, 9, 9, 9})) << text;
    }
}

TEST(yVersion, RefusesNullAndCanBeMadeToFail) {
    yVersion version;
    EXPECT_EQ(yVersion_Parse(nullptr, "1.0.0.0"), yERROR_PARAMETER);
    EXPECT_EQ(yVersion_Parse(&version, nullptr), yERROR_PARAMETER);
    Tests::Faults faults;
    faults.Set("yVersion_Parse", -1);
    EXPECT_EQ(yVersion_Parse(&version, "1.0.0.0"), -1);
}

TEST(yVersion, OrdersByTheMostSignificantNumber) {
    EXPECT_LT((yVersion{1, 9, 9, 9}), (yVersion{2, 0, 0, 0}));
}
