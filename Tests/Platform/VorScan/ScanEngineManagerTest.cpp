#include "VorScan/Internal/ScanEngineManager.h"

#include "BareScanner.h"
#include "Tests/Support/Failure.h"

#include <gtest/gtest.h>

namespace Tests {
namespace {

TEST(ScanEngineManager, ListsEnginesInOrderOfAdding) {
    VorScan::Internal::ScanEngineManager manager;
    EXPECT_TRUE(manager.List().empty());
    manager.Add(MakeEngine("z", "laser"));
    manager.Add(MakeEngine("a", "laser"));
    EXPECT_EQ(manager.List(), (std::vector<std::string>{"z", "a"}));
}

TEST(ScanEngineManager, FindsAnEngineByItsIdAndNotByItsType) {
    VorScan::Internal::ScanEngineManager manager;
    manager.Add(MakeEngine("engine-1", "laser"));
    EXPECT_EQ(manager.GetInstance("engine-1").Info().TypeName(), "laser");
    EXPECT_FAILURE(manager.GetInstance("laser"), yERROR_NOT_FOUND, "There is no scan engine laser.");
}

TEST(ScanEngineManager, RefusesAnIdThatIsInUse) {
    VorScan::Internal::ScanEngineManager manager;
    manager.Add(MakeEngine("engine", "laser"));
    EXPECT_FAILURE(manager.Add(MakeEngine("engine", "camera")), yERROR_ALREADY_EXISTS,
                   "There is a scan engine engine already.");
    EXPECT_EQ(manager.List().size(), 1U);
    EXPECT_EQ(manager.GetInstance("engine").Info().TypeName(), "laser");
}

TEST(ScanEngineManager, DestroysItsScanners) {
    int alive = 0;
    {
        VorScan::Internal::ScanEngineManager manager;
        manager.Add(MakeEngine("engine", "engine"));
        manager.GetInstance("engine").AddScanner(MakeScanner("a", alive));
        EXPECT_EQ(alive, 1);
    }
    EXPECT_EQ(alive, 0);
}

} // namespace
} // namespace Tests
