#include "Tests/Platform/VorCommon/ArchiveContent.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/TempFolder.h"
#include "VorCommon/ArchiveFile.h"
#include "yApi/yFault.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

using VorCommon::ArchiveFile;
using Existing = VorCommon::ArchiveFile::Existing;

namespace {

class ArchiveFileCopyTest : public testing::Test {
protected:
    ~ArchiveFileCopyTest() override { yFault_Clear(); }

    std::string TextIn(const std::string& path) const {
        const ArchiveFile::Entries entries = ArchiveFile(path).Read();
        return entries.size() == 1 ? std::string(entries.at("a")->begin(), entries.at("a")->end()) : "(other entries)";
    }

    /// The names of all files in the folder.
    std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    Tests::TempFolder folder;
    const std::string source = folder.File("part.vrjob");
    const std::string copy = folder.File("copy.vrjob");
};

} // namespace

TEST_F(ArchiveFileCopyTest, ACopyHoldsTheWholeFile) {
    ArchiveFile(source).Write({{"a", Tests::Bytes("1")}});
    ArchiveFile(source).CopyTo(copy, Existing::Refuse);
    EXPECT_EQ(TextIn(copy), "1");
    EXPECT_EQ(TextIn(source), "1");
    EXPECT_EQ(Files(), (std::vector<std::string>{"copy.vrjob", "part.vrjob"}));
}

TEST_F(ArchiveFileCopyTest, AnExistingFileIsReplacedOnlyOnRequest) {
    ArchiveFile(source).Write({{"a", Tests::Bytes("1")}});
    ArchiveFile(copy).Write({{"a", Tests::Bytes("old")}, {"b", Tests::Bytes("old")}});
    EXPECT_FAILURE(ArchiveFile(source).CopyTo(copy, Existing::Refuse), yERROR_ALREADY_EXISTS,
                   "Archive '" + copy + "': it exists already.");
    EXPECT_EQ(ArchiveFile(copy).Read().size(), 2U);
    ArchiveFile(source).CopyTo(copy, Existing::Replace);
    EXPECT_EQ(TextIn(copy), "1");
    EXPECT_EQ(Files(), (std::vector<std::string>{"copy.vrjob", "part.vrjob"}));
}

TEST_F(ArchiveFileCopyTest, AFileThatIsInUseCanBeCopied) {
    ArchiveFile(source).Write({{"a", Tests::Bytes("1")}});
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(source.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    ArchiveFile(source).CopyTo(copy, Existing::Refuse);
    sqlite3_close(other);
    EXPECT_EQ(TextIn(copy), "1");
}

TEST_F(ArchiveFileCopyTest, WhatCannotBeCopiedLeavesNothingBehind) {
    EXPECT_FAILURE(ArchiveFile(source).CopyTo(copy, Existing::Refuse), yERROR_NOT_FOUND,
                   "Archive '" + source + "': there is no such file.");
    EXPECT_TRUE(Files().empty());
    Tests::WriteWholeFile(source, std::string(600, 'x'));
    EXPECT_FAILURE(ArchiveFile(source).CopyTo(copy, Existing::Refuse), yERROR_FORMAT,
                   "Archive '" + source + "': file is not a database.");
    std::filesystem::remove(source);
    ArchiveFile(source).Write({{"a", Tests::Bytes(std::string(100000, 'x'))}});
    const std::string nowhere = folder.File("nowhere/copy.vrjob");
    EXPECT_FAILURE(ArchiveFile(source).CopyTo(nowhere, Existing::Refuse), yERROR,
                   "Archive '" + nowhere + "': its folder doesn't exist.");
    std::filesystem::resize_file(source, std::filesystem::file_size(source) - 1);
    EXPECT_EQ(Tests::FailureOf([&] { ArchiveFile(source).CopyTo(copy, Existing::Refuse); })->status, yERROR_FORMAT);
    std::filesystem::create_directory(copy);
    EXPECT_THROW(ArchiveFile(source).CopyTo(copy, Existing::Replace), Vor::Exception);
    EXPECT_EQ(Files(), (std::vector<std::string>{"copy.vrjob", "part.vrjob"}));
}

TEST_F(ArchiveFileCopyTest, AFileIsMadeOfExactlyItsEntries) {
    ArchiveFile(copy).Make({{"a", Tests::Bytes("1")}}, Existing::Refuse);
    EXPECT_EQ(TextIn(copy), "1");
    EXPECT_FAILURE(ArchiveFile(copy).Make({{"a", Tests::Bytes("2")}}, Existing::Refuse), yERROR_ALREADY_EXISTS,
                   "Archive '" + copy + "': it exists already.");
    EXPECT_EQ(TextIn(copy), "1");
    ArchiveFile(copy).Write({{"b", Tests::Bytes("1")}});
    ArchiveFile(copy).Make({{"a", Tests::Bytes("2")}}, Existing::Replace);
    EXPECT_EQ(TextIn(copy), "2");
    EXPECT_EQ(Files(), std::vector<std::string>{"copy.vrjob"});
}

TEST_F(ArchiveFileCopyTest, AFileThatCannotBeMadeLeavesNothingBehind) {
    yFault_Set("ArchiveFile_Commit", yERROR_FULL);
    EXPECT_FAILURE(ArchiveFile(copy).Make({{"a", Tests::Bytes("1")}}, Existing::Refuse), yERROR_FULL,
                   "Archive '" + copy + "': the disk failed.");
    EXPECT_TRUE(Files().empty());
}

TEST_F(ArchiveFileCopyTest, AnInterruptedSaveOfAReplacedFileIsForgotten) {
    ArchiveFile(copy).Write({{"a", Tests::Bytes("old")}});
    Tests::WriteWholeFile(copy + "-journal", std::string(4096, 'j'));
    ArchiveFile(copy).Make({{"a", Tests::Bytes("new")}}, Existing::Replace);
    EXPECT_EQ(TextIn(copy), "new");
    EXPECT_EQ(Files(), std::vector<std::string>{"copy.vrjob"});
}

TEST_F(ArchiveFileCopyTest, ARemovedFilesJournalIsRemovedToo) {
    ArchiveFile(source).Remove();
    ArchiveFile(source).Write({{"a", Tests::Bytes("1")}});
    Tests::WriteWholeFile(source + "-journal", "half");
    ArchiveFile(source).Remove();
    EXPECT_TRUE(Files().empty());
    std::filesystem::create_directory(source);
    EXPECT_EQ(Tests::FailureOf([&] { ArchiveFile(source).Remove(); })->status, yERROR);
    EXPECT_EQ(Files(), std::vector<std::string>{"part.vrjob"});
}
