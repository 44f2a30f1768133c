#include "Sensor/FolderLock.h"

#include "Sensor/StartError.h"
#include "Tests/Support/TempFolder.h"

#include <memory>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

std::string RefusalOf(const std::filesystem::path& folder) {
    try {
        const FolderLock lock(folder, "other.vrjob");
    } catch (const StartError& e) {
        return e.what();
    }
    return "none";
}

TEST(FolderLock, RefusesASecondSensorWithTheProcessIdOfTheFirst) {
    const Tests::TempFolder folder;
    auto lock = std::make_unique<FolderLock>(folder.Path(), "demo.vrjob");
    EXPECT_EQ(RefusalOf(folder.Path()), "--data " + folder.Path().string() + ": the sensor with process id " +
                                            std::to_string(getpid()) +
                                            " uses this folder. Expected a folder of this sensor's own.");
    lock.reset();
    EXPECT_EQ(RefusalOf(folder.Path()), "none");
}

TEST(FolderLock, HasAnOwnerWithItsJobAsLongAsTheSensorRuns) {
    const Tests::TempFolder folder;
    EXPECT_FALSE(FolderLock::OwnerOf(folder.Path()));
    {
        FolderLock lock(folder.Path(), "a long name.vrjob");
        ASSERT_TRUE(FolderLock::OwnerOf(folder.Path()));
        EXPECT_EQ(FolderLock::OwnerOf(folder.Path())->processId, std::to_string(getpid()));
        EXPECT_EQ(FolderLock::OwnerOf(folder.Path())->job, "a long name.vrjob");
        lock.SetJob("b.vrjob");
        EXPECT_EQ(FolderLock::OwnerOf(folder.Path())->job, "b.vrjob");
    }
    EXPECT_FALSE(FolderLock::OwnerOf(folder.Path()));
}

TEST(FolderLock, MakesTheFolder) {
    const Tests::TempFolder folder;
    const FolderLock lock(folder.File("new/data"), "demo.vrjob");
    EXPECT_TRUE(FolderLock::OwnerOf(folder.File("new/data")));
}

TEST(FolderLock, NamesTheReasonWhyItCannotLock) {
    const Tests::TempFolder folder;
    Tests::WriteWholeFile(folder.File("file"), "");
    EXPECT_EQ(RefusalOf(folder.File("file")),
              "--data " + folder.File("file") + ": the folder can't be locked for this sensor (Not a directory).");
}

} // namespace
} // namespace Sensor
