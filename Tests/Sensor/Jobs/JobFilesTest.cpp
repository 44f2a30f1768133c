#include "Sensor/Jobs/JobFiles.h"

#include "Sensor/Jobs/DefaultJob.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/TempFolder.h"
#include "VorCommon/ArchiveFile.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Sensor::Jobs {
namespace {

using Tests::StatusOf;
using Texts = std::vector<std::string>;
using VorCommon::ArchiveFile;

class JobFilesTest : public testing::Test {
protected:
    void Make(const std::string& name, const Texts& entries) const {
        ArchiveFile::Entries made;
        for (const std::string& entry : entries) {
            made[entry] = std::make_shared<const std::vector<unsigned char>>(2, '0');
        }
        ArchiveFile(files.PathOf(name)).Make(made, ArchiveFile::Existing::Refuse);
    }

    Tests::TempFolder folder;
    const JobFiles files{folder.Path() / "jobs"};
};

TEST_F(JobFilesTest, ListsTheJobsOfTheFolder) {
    EXPECT_EQ(files.Names(), Texts{}) << "there is no folder";
    Make("b", {"x"});
    Make("a", {"x"});
    Tests::WriteWholeFile(folder.File("jobs/.hidden.vrjob"), "");
    Tests::WriteWholeFile(folder.File("jobs/notes.txt"), "");
    EXPECT_EQ(files.Names(), (Texts{"a", "b"}));
    EXPECT_TRUE(files.Has("a"));
    EXPECT_FALSE(files.Has("c"));
    EXPECT_FALSE(files.Has("../jobs/a"));
    EXPECT_FALSE(files.Has(""));
}

TEST_F(JobFilesTest, DescribesAJobByItsFile) {
    Make("a", {"controls/modbus/config.json", "controls/ascii/config.json", "controls/x", "sensor/y"});
    const JobFiles::Description job = files.Describe("a");
    EXPECT_EQ(job.name, "a");
    EXPECT_GT(job.size, 0U);
    EXPECT_EQ(job.modified.size(), std::string("2026-01-31T23:59:59+01:00").size());
    EXPECT_THAT(job.services, testing::UnorderedElementsAre("modbus", "ascii"));
    EXPECT_EQ(job.failure, "");
    EXPECT_EQ(StatusOf([&] { files.Describe("b"); }), yERROR_NOT_FOUND);
    EXPECT_EQ(StatusOf([&] { files.Describe("a/b"); }), yERROR_PARAMETER);
}

TEST_F(JobFilesTest, DescribesADamagedJobWithItsDamage) {
    Make("a", {"x"});
    Tests::WriteWholeFile(files.PathOf("a"), "no archive");
    const JobFiles::Description job = files.Describe("a");
    EXPECT_EQ(job.size, 10U);
    EXPECT_NE(job.failure.find("file is not a database"), std::string::npos) << job.failure;
    EXPECT_TRUE(job.services.empty());
}

TEST_F(JobFilesTest, AJobOfTooManyBytesIsntRead) {
    Make("a", {"x"});
    EXPECT_FALSE(files.Read("a").empty());
    std::filesystem::resize_file(files.PathOf("a"), JobFiles::MaxReadSize + 1);
    EXPECT_FAILURE(files.Read("a"), yERROR_FORMAT, "The job 'a' has 83886081 bytes, and at most 83886080 can be read.");
}

TEST_F(JobFilesTest, AReadLeavesNoCopyBehind) {
    const std::filesystem::path copy = folder.Path() / "jobs" / ".export";
    Make("a", {"x"});
    files.Read("a");
    EXPECT_FALSE(std::filesystem::exists(copy));
    Tests::WriteWholeFile(files.PathOf("a"), "no archive");
    Tests::WriteWholeFile(copy.string(), "left by an interrupted read");
    EXPECT_EQ(StatusOf([&] { files.Read("a"); }), yERROR_FORMAT);
    EXPECT_FALSE(std::filesystem::exists(copy));
}

TEST_F(JobFilesTest, TheDefaultJobIsKeptInTheWorkspace) {
    const std::string workspace = folder.File("workspace.vrdata");
    EXPECT_EQ(DefaultJob::Read(workspace), "");
    DefaultJob::Write(workspace, "first");
    EXPECT_EQ(DefaultJob::Read(workspace), "first");
    DefaultJob::Write(workspace, "two words");
    EXPECT_EQ(DefaultJob::Read(workspace), "two words");
    EXPECT_EQ(ArchiveFile(workspace).Names(), Texts{"sensor/defaultJob"});
    DefaultJob::Write(workspace, "../elsewhere");
    EXPECT_EQ(DefaultJob::Read(workspace), "") << "it names no job";
    Tests::WriteWholeFile(workspace, "no archive");
    EXPECT_EQ(DefaultJob::Read(workspace), "");
}

} // namespace
} // namespace Sensor::Jobs
