#include "VorScan/Internal/ScanEngineInstance.h"

#include "BareScanner.h"
#include "Tests/Support/Failure.h"

#include <gtest/gtest.h>

namespace Tests {
namespace {

TEST(ScanEngineInstance, ReturnsItsIdAndThatOfItsType) {
    const auto engine = MakeEngine("engine-1", "laser");
    EXPECT_EQ(engine->Id(), "engine-1");
    EXPECT_EQ(engine->Info().TypeName(), "laser");
    EXPECT_TRUE(engine->Engine().Services().empty());
    EXPECT_TRUE(engine->ListScanners().empty());
}

TEST(ScanEngineInstance, ListsScannersInOrderOfAddingAndFindsThem) {
    int alive = 0;
    const auto engine = MakeEngine("engine", "engine");
    engine->AddScanner(MakeScanner("z", alive, {"left", "right"}));
    engine->AddScanner(MakeScanner("a", alive));
    EXPECT_EQ(engine->ListScanners(), (std::vector<std::string>{"z", "a"}));
    EXPECT_EQ(engine->FindScanner("z").Id(), "z");
    EXPECT_EQ(engine->FindScanner("z").ListSensors(), (std::vector<std::string>{"left", "right"}));
    EXPECT_EQ(engine->FindScanner("a").CommandTarget(), nullptr);
}

TEST(ScanEngineInstance, FindsNoScannerThatItHasnt) {
    int alive = 0;
    const auto engine = MakeEngine("engine", "engine");
    engine->AddScanner(MakeScanner("a", alive));
    EXPECT_FAILURE(engine->FindScanner("A"), yERROR_NOT_FOUND, "Scan engine engine has no scanner A.");
    EXPECT_FAILURE(engine->FindScanner(""), yERROR_NOT_FOUND, "Scan engine engine has no scanner .");
}

TEST(ScanEngineInstance, RefusesAnIdThatIsInUse) {
    int alive = 0;
    const auto engine = MakeEngine("engine", "engine");
    engine->AddScanner(MakeScanner("a", alive));
    EXPECT_FAILURE(engine->AddScanner(MakeScanner("a", alive)), yERROR_ALREADY_EXISTS,
                   "Scan engine engine has a scanner a already.");
    EXPECT_EQ(engine->ListScanners().size(), 1U);
    EXPECT_EQ(alive, 1);
}

TEST(ScanEngineInstance, ARemovedScannerIsGone) {
    int alive = 0;
    const auto engine = MakeEngine("engine", "engine");
    engine->AddScanner(MakeScanner("a", alive));
    engine->AddScanner(MakeScanner("b", alive));
    engine->RemoveScanner("a");
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(engine->ListScanners(), (std::vector<std::string>{"b"}));
    EXPECT_FAILURE(engine->RemoveScanner("a"), yERROR_NOT_FOUND, "Scan engine engine has no scanner a.");
}

TEST(ScannerInstance, RaisesTheUpdateOfItsAlignmentState) {
    int alive = 0;
    const auto scanner = MakeScanner("a", alive);
    int raised = 0;
    auto id = scanner->ScannerAlignStateUpdatedEvent().Add([&] { ++raised; });
    scanner->ScannerAlignStateUpdatedEvent().Raise();
    EXPECT_EQ(raised, 1);
    scanner->ScannerAlignStateUpdatedEvent().Remove(id);
}

} // namespace
} // namespace Tests
