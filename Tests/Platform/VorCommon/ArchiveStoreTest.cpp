#include "VorCommon/ArchiveStore.h"

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

constexpr const char* configPath = "/controls/modbus/config.json";

void Put(ArchiveStore& store, const std::string& path, const std::string& content) {
    store.Write(path, content.data(), content.size());
}

std::string Get(const ArchiveStore& store, const std::string& path) {
    const PersistBuffer buffer = store.Read(path);
    return {reinterpret_cast<const char*>(buffer.pointer) + buffer.offset, buffer.size};
}

template <typename Function>
yStatus StatusOf(const Function& function) {
    try {
        function();
    } catch (const Vor::Exception& e) {
        return e.Status();
    }
    return yOK;
}

class ArchiveStoreTest : public testing::Test {
protected:
    ~ArchiveStoreTest() override { yFault_Clear(); }

    Tests::TempFolder folder;
    const std::string path = folder.File("part.vrjob");
    ArchiveStore store{path};
};

} // namespace

TEST_F(ArchiveStoreTest, OpeningTellsWhetherThereIsAFile) {
    EXPECT_FALSE(store.Open());
    Put(store, configPath, "{}");
    store.Commit();
    EXPECT_TRUE(ArchiveStore(path).Open());
}

TEST_F(ArchiveStoreTest, APathIsAnEntryWithoutItsFirstSlash) {
    Put(store, configPath, "{\"a\":1}");
    store.Commit();
    EXPECT_EQ(ArchiveFile(path).Read().count("controls/modbus/config.json"), 1U);
    ArchiveStore second(path);
    ASSERT_TRUE(second.Open());
    EXPECT_TRUE(second.Exists(configPath));
    EXPECT_EQ(Get(second, configPath), "{\"a\":1}");
}

TEST_F(ArchiveStoreTest, WhatIsWrittenIsReadBeforeTheCommitButNotOnTheDisk) {
    Put(store, configPath, "old");
    store.Commit();
    Put(store, configPath, "new");
    EXPECT_EQ(Get(store, configPath), "new");
    ArchiveStore second(path);
    second.Open();
    EXPECT_EQ(Get(second, configPath), "old");
}

TEST_F(ArchiveStoreTest, ABufferOutlivesTheWriteAndTheStore) {
    PersistBuffer buffer;
    {
        ArchiveStore shortLived(path);
        Put(shortLived, configPath, "first");
        buffer = shortLived.Read(configPath);
        Put(shortLived, configPath, "other");
    }
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer.pointer) + buffer.offset, buffer.size), "first");
}

TEST_F(ArchiveStoreTest, AMissingFileOfTheStoreIsNotFound) {
    EXPECT_FALSE(store.Exists(configPath));
    EXPECT_EQ(StatusOf([&] { store.Read(configPath); }), yERROR_NOT_FOUND);
}

TEST_F(ArchiveStoreTest, PathsThatNameNoFileAreRefused) {
    for (const std::string& bad : {std::string(), std::string("/"), std::string("controls/x"), std::string("/a\0b", 4),
                                   "/" + std::string(1025, 'n')}) {
        EXPECT_EQ(StatusOf([&] { store.Read(bad); }), yERROR_PARAMETER);
        EXPECT_EQ(StatusOf([&] { store.Exists(bad); }), yERROR_PARAMETER);
        EXPECT_EQ(StatusOf([&] { Put(store, bad, "x"); }), yERROR_PARAMETER);
    }
}

TEST_F(ArchiveStoreTest, WhatCouldNotBeReadAgainIsNotWritten) {
    Put(store, configPath, "old");
    EXPECT_EQ(StatusOf([&] { Put(store, configPath, std::string(ArchiveFile::maxEntrySize + 1, 'x')); }), yERROR_FULL);
    EXPECT_EQ(Get(store, configPath), "old");
    const std::string largest(ArchiveFile::maxEntrySize, 'x');
    for (int i = 0; i < 3; ++i) {
        Put(store, "/" + std::to_string(i), largest);
    }
    EXPECT_EQ(StatusOf([&] { Put(store, "/3", largest); }), yERROR_FULL);
    Put(store, "/2", largest);
}

TEST_F(ArchiveStoreTest, TooManyFilesAreRefused) {
    for (std::size_t i = 0; i < 40; ++i) {
        Put(store, "/" + std::to_string(i), "");
    }
    ArchiveFile::Entries many;
    for (std::size_t i = 0; i < ArchiveFile::maxEntryCount; ++i) {
        many.emplace("n" + std::to_string(i), std::make_shared<const std::vector<unsigned char>>());
    }
    ArchiveFile(path).Write(many);
    ArchiveStore full(path);
    full.Open();
    EXPECT_EQ(StatusOf([&] { Put(full, "/another", ""); }), yERROR_FULL);
    Put(full, "/n7", "replaced");
    EXPECT_EQ(Get(full, "/n7"), "replaced");
}

TEST_F(ArchiveStoreTest, ACommitWithNothingWrittenTouchesNoFile) {
    store.Commit();
    EXPECT_FALSE(std::filesystem::exists(path));
    Put(store, configPath, "{}");
    store.Commit();
    Tests::WriteWholeFile(path, "spoiled");
    store.Commit();
    EXPECT_EQ(Tests::ReadWholeFile(path), "spoiled");
}

TEST_F(ArchiveStoreTest, ACommitWritesOnlyWhatWasWritten) {
    Put(store, "/a", "1");
    Put(store, "/b", "1");
    store.Commit();
    ArchiveFile(path).Write({{"b", std::make_shared<const std::vector<unsigned char>>(1, '2')}});
    Put(store, "/a", "3");
    store.Commit();
    ArchiveStore second(path);
    second.Open();
    EXPECT_EQ(Get(second, "/a"), "3");
    EXPECT_EQ(Get(second, "/b"), "2");
}

TEST_F(ArchiveStoreTest, AFileThatWasDeletedIsWrittenWhole) {
    Put(store, "/a", "1");
    store.Commit();
    std::filesystem::remove(path);
    Put(store, "/b", "2");
    store.Commit();
    ArchiveStore second(path);
    ASSERT_TRUE(second.Open());
    EXPECT_EQ(Get(second, "/a"), "1");
    EXPECT_EQ(Get(second, "/b"), "2");
}

TEST_F(ArchiveStoreTest, DiscardForgetsWhatWasWritten) {
    Put(store, "/a", "1");
    store.Commit();
    Put(store, "/a", "2");
    Put(store, "/b", "2");
    store.Discard();
    EXPECT_EQ(Get(store, "/a"), "1");
    EXPECT_FALSE(store.Exists("/b"));
}

TEST_F(ArchiveStoreTest, AFailingCommitForgetsWhatWasWritten) {
    Put(store, "/a", "1");
    store.Commit();
    Put(store, "/a", "2");
    yFault_Set("ArchiveFile_Commit", yERROR_FULL);
    EXPECT_EQ(StatusOf([&] { store.Commit(); }), yERROR_FULL);
    EXPECT_EQ(Get(store, "/a"), "1");
}

TEST_F(ArchiveStoreTest, ReadsAndWritesCanBeMadeToFail) {
    Put(store, "/a", "1");
    yFault_Set("IPersistStore_Read", yERROR_TIMEOUT);
    yFault_Set("IPersistStore_Write", yERROR_READ_ONLY);
    EXPECT_EQ(StatusOf([&] { store.Read("/a"); }), yERROR_TIMEOUT);
    EXPECT_EQ(StatusOf([&] { Put(store, "/a", "2"); }), yERROR_READ_ONLY);
    EXPECT_EQ(Get(store, "/a"), "1");
}

TEST_F(ArchiveStoreTest, AnOpeningThatFailsLeavesTheStoreAsItWas) {
    Put(store, "/a", "1");
    store.Commit();
    Tests::WriteWholeFile(path, "spoiled");
    EXPECT_EQ(StatusOf([&] { store.Open(); }), yERROR_FORMAT);
    EXPECT_EQ(Get(store, "/a"), "1");
}
