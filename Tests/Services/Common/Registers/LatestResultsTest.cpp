#include "Services/Common/Registers/LatestResults.h"

#include "Tests/Support/Results.h"
#include "VorMsg/VvMeasureMsg.h"

#include <map>
#include <optional>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Common {
namespace {

using Tests::Results;

std::optional<double> ValueOf(ResultItem item) {
    if (item == nullptr) {
        return std::nullopt;
    }
    return VvMeasureMsg_Value(yMsgInfo_Message(ResultItem_MsgInfo(item)));
}

/// The values that were kept, by their places.
std::map<std::size_t, double> Store(LatestResults& latest, const Results& results) {
    std::map<std::size_t, double> kept;
    latest.Store(results.Get(), [&](std::size_t place, ResultItem item) { kept[place] = ValueOf(item).value(); });
    return kept;
}

TEST(LatestResults, GivesEachDataSourceOnePlace) {
    LatestResults latest;
    EXPECT_EQ(latest.Count(), 0u);
    EXPECT_EQ(latest.Replace({"a", "b", "a", "c", "b"}), (std::vector<std::size_t>{0, 1, 0, 2, 1}));
    EXPECT_EQ(latest.Count(), 3u);
    EXPECT_EQ(latest.At(0), nullptr);
}

TEST(LatestResults, KeepsWhatBelongsToTheMap) {
    LatestResults latest;
    latest.Replace({"a", "b"});
    EXPECT_EQ(Store(latest, Results().Measurement("b", 2).Measurement("unknown", 3)),
              (std::map<std::size_t, double>{{1, 2.0}}));
    EXPECT_EQ(ValueOf(latest.At(0)), std::nullopt);
    EXPECT_EQ(ValueOf(latest.At(1)), 2.0);
    Store(latest, Results().Measurement("a", 4));
    EXPECT_EQ(ValueOf(latest.At(0)), 4.0);
    EXPECT_EQ(ValueOf(latest.At(1)), 2.0) << "a frame without it leaves it";
}

TEST(LatestResults, KeepsTheResultsOverANewMap) {
    LatestResults latest;
    latest.Replace({"a", "b", "c"});
    Store(latest, Results().Measurement("a", 1).Measurement("b", 2).Measurement("c", 3));
    EXPECT_EQ(latest.Replace({"c", "new", "a", "c"}), (std::vector<std::size_t>{0, 1, 2, 0}));
    EXPECT_EQ(ValueOf(latest.At(0)), 3.0);
    EXPECT_EQ(ValueOf(latest.At(1)), std::nullopt);
    EXPECT_EQ(ValueOf(latest.At(2)), 1.0);
    EXPECT_EQ(Store(latest, Results().Measurement("b", 5)), (std::map<std::size_t, double>()));
    latest.Replace({"b"});
    EXPECT_EQ(latest.At(0), nullptr) << "it wasn't in the map meanwhile";
}

TEST(LatestResults, ForgetsResultsAndKeepsTheMap) {
    LatestResults latest;
    latest.Replace({"a"});
    Store(latest, Results().Measurement("a", 1));
    latest.Forget();
    EXPECT_EQ(latest.At(0), nullptr);
    EXPECT_EQ(Store(latest, Results().Measurement("a", 2)), (std::map<std::size_t, double>{{0, 2.0}}));
}

TEST(LatestResults, SharesResultsOnlyAsLongAsItHasThem) {
    const auto before = yObject_LiveCount();
    LatestResults latest;
    latest.Replace({"a", "b"});
    Store(latest, Results().Measurement("a", 1).Measurement("b", 1));
    EXPECT_GT(yObject_LiveCount(), before);
    latest.Replace({"a"});
    Store(latest, Results().Measurement("a", 2));
    latest.Forget();
    EXPECT_EQ(yObject_LiveCount(), before);
}

} // namespace
} // namespace Services::Common
