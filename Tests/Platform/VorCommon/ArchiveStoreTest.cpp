#include "VorCommon/ArchiveStore.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/Exception.h"
#include "yApi/yFault.h"
#include "yApi/yStatus.h"

#include <string>

#include <gtest/gtest.h>

using VorCommon::ArchiveFile;
using VorCommon::ArchiveStore;
using VorCommon::PersistBuffer;

namespace {

constexpr const char* ConfigPath = "/controls/modbus/config.json";

void PutText(ArchiveStore& store, const std::string& path, const std::string& content) {
    store.Write(path, content.data(), content.size());
}

std::string GetText(const ArchiveStore& store, const std::string& path) {
    const PersistBuffer buffer = store.Read(path);
    return {reinterpret_cast<const char*>(buffer.pointer) + buffer.offset, buffer.size};
}

class ArchiveStoreTest : public testing::Test {
protected:
    ~ArchiveStoreTest() override { yFault_Clear(); }

    Tests::TempFolder folder;
    const std::string path = folder.File("part.vrjob");
    ArchiveStore store{path};
};

} // namespace

TEST_F(ArchiveStoreTest, OpeningReturnsWhetherThereIsAFile) {
    EXPECT_FALSE(store.Open());
    PutText(store, ConfigPath, "{}");
    store.Commit();
    EXPECT_TRUE(ArchiveStore(path).Open());
}

TEST_F(ArchiveStoreTest, APathIsAnEntryWithoutItsFirstSlash) {
    PutText(store, ConfigPath, "{\"a\":1}");
    store.Commit();
    EXPECT_EQ(ArchiveFile(path).Read().count("controls/modbus/config.json"), 1U);
    ArchiveStore second(path);
    ASSERT_TRUE(second.Open());
    EXPECT_TRUE(second.Exists(ConfigPath));
    EXPECT_EQ(GetText(second, ConfigPath), "{\"a\":1}");
}

TEST_F(ArchiveStoreTest, WhatIsWrittenIsReadBeforeTheCommitButNotOnTheDisk) {
    PutText(store, ConfigPath, "old");
    store.Commit();
    PutText(store, ConfigPath, "new");
    EXPECT_EQ(GetText(store, ConfigPath), "new");
    ArchiveStore second(path);
    second.Open();
    EXPECT_EQ(GetText(second, ConfigPath), "old");
}

TEST_F(ArchiveStoreTest, ABufferOutlivesTheWriteAndTheStore) {
    PersistBuffer buffer;
    {
        ArchiveStore shortLived(path);
        PutText(shortLived, ConfigPath, "first");
        buffer = shortLived.Read(ConfigPath);
        PutText(shortLived, ConfigPath, "other");
    }
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer.pointer) + buffer.offset, buffer.size), "first");
}

TEST_F(ArchiveStoreTest, AMissingFileOfTheStoreIsNotFound) {
    EXPECT_FALSE(store.Exists(ConfigPath));
    EXPECT_EQ(Tests::StatusOf([&] { store.Read(ConfigPath); }), yERROR_NOT_FOUND);
}

TEST_F(ArchiveStoreTest, PathsThatNameNoFileAreRefused) {
    for (const std::string& bad : {std::string(), std::string("/"), std::string("controls/x"), std::string("/a\0b", 4),
                                   "/" + std::string(1025, 'n')}) {
        EXPECT_EQ(Tests::StatusOf([&] { store.Read(bad); }), yERROR_PARAMETER);
        EXPECT_EQ(Tests::StatusOf([&] { store.Exists(bad); }), yERROR_PARAMETER);
        EXPECT_EQ(Tests::StatusOf([&] { PutText(store, bad, "x"); }), yERROR_PARAMETER);
    }
}

TEST_F(ArchiveStoreTest, WhatCouldNotBeReadAgainIsNotWritten) {
    PutText(store, ConfigPath, "old");
    EXPECT_EQ(Tests::StatusOf([&] { PutText(store, ConfigPath, std::string(ArchiveFile::MaxEntrySize + 1, 'x')); }),
              yERROR_FULL);
    EXPECT_EQ(GetText(store, ConfigPath), "old");
    const std::string largest(ArchiveFile::MaxEntrySize, 'x');
    for (int i = 0; i < 3; ++i) {
        PutText(store, "/" + std::to_string(i), largest);
    }
    EXPECT_EQ(Tests::StatusOf([&] { PutText(store, "/3", largest); }), yERROR_FULL);
    PutText(store, "/2", largest);
}

TEST_F(ArchiveStoreTest, TooManyFilesAreRefused) {
    for (std::size_t i = 0; i < 40; ++i) {
        PutText(store, "/" + std::to_string(i), "");
    }
    ArchiveFile::Entries many;
    for (std::size_t i = 0; i < ArchiveFile::MaxEntryCount; ++i) {
        many.emplace("n" + std::to_string(i), std::make_shared<const std::vector<unsigned char>>());
    }
    ArchiveFile(path).Write(many);
    ArchiveStore full(path);
    full.Open();
    EXPECT_EQ(Tests::StatusOf([&] { PutText(full, "/another", ""); }), yERROR_FULL);
    PutText(full, "/n7", "replaced");
    EXPECT_EQ(GetText(full, "/n7"), "replaced");
}

TEST_F(ArchiveStoreTest, ACommitWithNothingWrittenTouchesNoFile) {
    store.Commit();
    EXPECT_FALSE(std::filesystem::exists(path));
    PutText(store, ConfigPath, "{}");
    store.Commit();
    Tests::WriteWholeFile(path, "spoiled");
    store.Commit();
    EXPECT_EQ(Tests::ReadWholeFile(path), "spoiled");
}

TEST_F(ArchiveStoreTest, ACommitWritesOnlyWhatWasWritten) {
    PutText(store, "/a", "1");
    PutText(store, "/b", "1");
    store.Commit();
    ArchiveFile(path).Write({{"b", std::make_shared<const std::vector<unsigned char>>(1, '2')}});
    PutText(store, "/a", "3");
    store.Commit();
    ArchiveStore second(path);
    second.Open();
    EXPECT_EQ(GetText(second, "/a"), "3");
    EXPECT_EQ(GetText(second, "/b"), "2");
}

TEST_F(ArchiveStoreTest, AFileThatWasDeletedIsWrittenWhole) {
    PutText(store, "/a", "1");
    store.Commit();
    std::filesystem::remove(path);
    PutText(store, "/b", "2");
    store.Commit();
    ArchiveStore second(path);
    ASSERT_TRUE(second.Open());
    EXPECT_EQ(GetText(second, "/a"), "1");
    EXPECT_EQ(GetText(second, "/b"), "2");
}

TEST_F(ArchiveStoreTest, DiscardForgetsWhatWasWritten) {
    PutText(store, "/a", "1");
    store.Commit();
    PutText(store, "/a", "2");
    PutText(store, "/b", "2");
    store.Discard();
    EXPECT_EQ(GetText(store, "/a"), "1");
    EXPECT_FALSE(store.Exists("/b"));
}

TEST_F(ArchiveStoreTest, AFailingCommitForgetsWhatWasWritten) {
    PutText(store, "/a", "1");
    store.Commit();
    PutText(store, "/a", "2");
    yFault_Set("ArchiveFile_Commit", yERROR_FULL);
    EXPECT_EQ(Tests::StatusOf([&] { store.Commit(); }), yERROR_FULL);
    EXPECT_EQ(GetText(store, "/a"), "1");
}

TEST_F(ArchiveStoreTest, ReadsAndWritesCanBeMadeToFail) {
    PutText(store, "/a", "1");
    yFault_Set("IPersistStore_Read", yERROR_TIMEOUT);
    yFault_Set("IPersistStore_Write", yERROR_READ_ONLY);
    EXPECT_EQ(Tests::StatusOf([&] { store.Read("/a"); }), yERROR_TIMEOUT);
    EXPECT_EQ(Tests::StatusOf([&] { PutText(store, "/a", "2"); }), yERROR_READ_ONLY);
    EXPECT_EQ(GetText(store, "/a"), "1");
}

TEST_F(ArchiveStoreTest, AnOpeningThatFailsLeavesTheStoreAsItWas) {
    PutText(store, "/a", "1");
    store.Commit();
    Tests::WriteWholeFile(path, "spoiled");
    EXPECT_EQ(Tests::StatusOf([&] { store.Open(); }), yERROR_FORMAT);
    EXPECT_EQ(GetText(store, "/a"), "1");
}
