#include "VorCommon/ArchiveFile.h"

#include "Tests/Platform/VorCommon/ArchiveContent.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/Exception.h"
#include "yApi/yFault.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <zlib.h>

using VorCommon::ArchiveFile;

namespace {

std::string Text(const ArchiveFile::Content& content) {
    return {content->begin(), content->end()};
}

std::string OutputOf(const std::string& command) {
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    char buffer[256];
    while (pipe != nullptr && std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
        output += buffer;
    }
    EXPECT_EQ(pipe != nullptr ? pclose(pipe) : -1, 0) << command;
    return output;
}

class ArchiveFileTest : public testing::Test {
protected:
    ~ArchiveFileTest() override { yFault_Clear(); }

    void Execute(const std::string& sql) const {
        sqlite3* handle = nullptr;
        ASSERT_EQ(sqlite3_open(path.c_str(), &handle), SQLITE_OK);
        char* message = nullptr;
        EXPECT_EQ(sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, &message), SQLITE_OK) << message << ": " << sql;
        sqlite3_free(message);
        sqlite3_close(handle);
    }

    void MakeTable() const {
        Execute("CREATE TABLE sqlar(name TEXT PRIMARY KEY, mode INT, mtime INT, sz INT, data BLOB)");
    }

    void ExpectRefused(yStatus status, const std::string& reason) const {
        const std::string before = Tests::ReadWholeFile(path);
        ExpectReadFails(status, reason);
        EXPECT_EQ(Tests::ReadWholeFile(path), before) << "the refused file was changed";
    }

    void ExpectReadFails(yStatus status, const std::string& reason) const {
        try {
            ArchiveFile(path).Read();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const Vor::Exception& e) {
            EXPECT_EQ(e.Status(), status);
            EXPECT_EQ(std::string(e.what()), "Archive '" + path + "': " + reason + ".");
        }
    }

    Tests::TempFolder folder;
    const std::string path = folder.File("part.vrjob");
    ArchiveFile file{path};
};

} // namespace

TEST_F(ArchiveFileTest, WhatIsWrittenIsReadAgain) {
    const std::string binary("\0\xFF\x80 end", 7);
    file.Write({{"controls/a/config.json", Tests::Bytes("{}")},
                {"empty", Tests::Bytes("")},
                {"binary", Tests::Bytes(binary)}});
    const ArchiveFile::Entries entries = file.Read();
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(Text(entries.at("controls/a/config.json")), "{}");
    EXPECT_EQ(Text(entries.at("empty")), "");
    EXPECT_EQ(Text(entries.at("binary")), binary);
}

TEST_F(ArchiveFileTest, TheNamesAreReadWithoutTheContent) {
    EXPECT_EQ(Tests::StatusOf([&] { file.Names(); }), yERROR_NOT_FOUND);
    file.Write({{"b", Tests::Bytes("1")}, {"a/b", Tests::Bytes("2")}});
    std::vector<std::string> names = file.Names();
    std::ranges::sort(names);
    EXPECT_EQ(names, (std::vector<std::string>{"a/b", "b"}));
    Tests::WriteWholeFile(path, "no archive");
    EXPECT_EQ(Tests::StatusOf([&] { file.Names(); }), yERROR_FORMAT);
}

TEST_F(ArchiveFileTest, TheCommandLineToolListsAndExtractsIt) {
    file.Write({{"controls/modbus/config.json", Tests::Bytes("{\"version\":\"1\"}")}});
    EXPECT_EQ(OutputOf("sqlite3 '" + path + "' -A --list"), "controls/modbus/config.json\n");
    OutputOf("cd '" + folder.Path().string() + "' && sqlite3 part.vrjob -A --extract");
    EXPECT_EQ(Tests::ReadWholeFile(folder.File("controls/modbus/config.json")), "{\"version\":\"1\"}");
}

TEST_F(ArchiveFileTest, AnArchiveOfTheCommandLineToolIsReadWithoutItsFolders) {
    const std::string large(10000, 'x');
    std::filesystem::create_directories(folder.File("controls/modbus"));
    Tests::WriteWholeFile(folder.File("controls/modbus/config.json"), large);
    Tests::WriteWholeFile(folder.File("controls/modbus/empty"), "");
    OutputOf("cd '" + folder.Path().string() + "' && sqlite3 part.vrjob -A --create controls");
    const ArchiveFile::Entries entries = file.Read();
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(Text(entries.at("controls/modbus/config.json")), large);
    EXPECT_EQ(Text(entries.at("controls/modbus/empty")), "");
}

TEST_F(ArchiveFileTest, AWriteKeepsWhatElseTheArchiveHolds) {
    file.Write({{"a", Tests::Bytes("1")}, {"b", Tests::Bytes("2")}});
    Execute("CREATE TABLE notes(text TEXT); INSERT INTO notes VALUES('kept')");
    file.Write({{"b", Tests::Bytes("3")}, {"c", Tests::Bytes("4")}});
    const ArchiveFile::Entries entries = file.Read();
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(Text(entries.at("a")), "1");
    EXPECT_EQ(Text(entries.at("b")), "3");
    EXPECT_EQ(Text(entries.at("c")), "4");
    EXPECT_EQ(OutputOf("sqlite3 '" + path + "' 'SELECT text FROM notes'"), "kept\n");
}

TEST_F(ArchiveFileTest, AWriteCreatesTheFolderAndLeavesNothingElseBehind) {
    const ArchiveFile::Entries entries{{"a", Tests::Bytes("1")}};
    ArchiveFile inFolder(folder.File("data/jobs/part.vrjob"));
    EXPECT_FALSE(inFolder.Exists());
    inFolder.Write(entries);
    EXPECT_TRUE(inFolder.Exists());
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.File("data/jobs"))) {
        names.push_back(entry.path().filename().string());
    }
    EXPECT_EQ(names, std::vector<std::string>{"part.vrjob"});
}

TEST_F(ArchiveFileTest, TheJournalOfAFileThatIsGoneDoesNotSpoilTheNewOne) {
    Tests::WriteWholeFile(path + "-journal", std::string(4096, 'j'));
    Tests::WriteWholeFile(folder.File(".part.vrjob.new"), "half");
    file.Write({{"a", Tests::Bytes("1")}});
    EXPECT_EQ(Text(file.Read().at("a")), "1");
    EXPECT_FALSE(std::filesystem::exists(path + "-journal"));
    EXPECT_FALSE(std::filesystem::exists(folder.File(".part.vrjob.new")));
}

TEST_F(ArchiveFileTest, EntriesAreStoredAsPlainFiles) {
    file.Write({{"a", Tests::Bytes("123")}});
    EXPECT_EQ(OutputOf("sqlite3 '" + path + "' \"SELECT mode, sz, typeof(data), mtime > 1600000000 FROM sqlar\""),
              std::to_string(S_IFREG | 0644) + "|3|blob|1\n");
}

TEST_F(ArchiveFileTest, AFailingWriteChangesNothing) {
    file.Write({{"a", Tests::Bytes("1")}});
    for (const char* fault : {"ArchiveFile_Write", "ArchiveFile_Commit"}) {
        yFault_Set(fault, yERROR_FULL);
        try {
            file.Write({{"a", Tests::Bytes("2")}});
            ADD_FAILURE() << fault;
        } catch (const Vor::Exception& e) {
            EXPECT_EQ(e.Status(), yERROR_FULL);
        }
        EXPECT_EQ(Text(file.Read().at("a")), "1") << fault;
    }
}

TEST_F(ArchiveFileTest, AFailingCreationLeavesNoFile) {
    yFault_Set("ArchiveFile_Commit", yERROR);
    EXPECT_THROW(file.Write({{"a", Tests::Bytes("1")}}), Vor::Exception);
    EXPECT_FALSE(file.Exists());
    file.Write({{"a", Tests::Bytes("1")}});
    EXPECT_EQ(Text(file.Read().at("a")), "1");
}

TEST_F(ArchiveFileTest, AFailingReadThrowsTheStatus) {
    file.Write({{"a", Tests::Bytes("1")}});
    yFault_Set("ArchiveFile_Read", yERROR_TIMEOUT);
    ExpectReadFails(yERROR_TIMEOUT, "the disk failed");
    EXPECT_EQ(Text(file.Read().at("a")), "1");
}

TEST_F(ArchiveFileTest, AMissingFileIsNamed) {
    ExpectReadFails(yERROR_NOT_FOUND, "there is no such file");
}

TEST_F(ArchiveFileTest, AFileThatIsNoDatabaseIsRefusedAndStays) {
    for (const std::string& content :
         {std::string("{\"version\":\"1\"}"), std::string(600, 'x'), std::string(9000, '\0')}) {
        Tests::WriteWholeFile(path, content);
        ExpectRefused(yERROR_FORMAT, "file is not a database");
        EXPECT_THROW(file.Write({{"a", Tests::Bytes("1")}}), Vor::Exception);
        EXPECT_EQ(Tests::ReadWholeFile(path), content);
    }
}

TEST_F(ArchiveFileTest, AFileTooShortForADatabaseIsRefusedAndStays) {
    for (const std::string& content : {std::string(), std::string("x")}) {
        Tests::WriteWholeFile(path, content);
        ExpectRefused(yERROR_FORMAT, "it is a database without the table of an archive");
        EXPECT_THROW(file.Write({{"a", Tests::Bytes("1")}}), Vor::Exception);
        EXPECT_EQ(Tests::ReadWholeFile(path), content);
    }
}

TEST_F(ArchiveFileTest, ADamagedDatabaseIsRefusedAndStays) {
    file.Write({{"a", Tests::Bytes(std::string(100000, 'a'))}, {"b", Tests::Bytes(std::string(100000, 'b'))}});
    const std::string whole = Tests::ReadWholeFile(path);
    for (const std::size_t cut : {whole.size() / 2, whole.size() - 1, std::size_t{4096}, std::size_t{200}}) {
        Tests::WriteWholeFile(path, whole.substr(0, cut));
        try {
            file.Read();
            ADD_FAILURE() << "cut to " << cut;
        } catch (const Vor::Exception& e) {
            EXPECT_EQ(e.Status(), yERROR_FORMAT) << "cut to " << cut << ": " << e.what();
            EXPECT_NE(std::string(e.what()).find(path), std::string::npos);
        }
        EXPECT_EQ(Tests::ReadWholeFile(path), whole.substr(0, cut));
    }
}

TEST_F(ArchiveFileTest, ADatabaseWithoutTheTableIsRefused) {
    Execute("CREATE TABLE other(name TEXT)");
    ExpectRefused(yERROR_FORMAT, "it is a database without the table of an archive");
}

TEST_F(ArchiveFileTest, AViewInPlaceOfTheTableIsNeverRun) {
    Execute("CREATE VIEW sqlar AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
            "SELECT 'x' || i AS name, 33188 AS mode, 0 AS mtime, 0 AS sz, x'' AS data FROM n");
    ExpectRefused(yERROR_FORMAT, "it is a database without the table of an archive");
}

TEST_F(ArchiveFileTest, ATableWithoutItsColumnsIsRefused) {
    Execute("CREATE TABLE sqlar(name TEXT)");
    ExpectRefused(yERROR, "no such column: mode");
}

TEST_F(ArchiveFileTest, ATriggerOfTheFileIsNeverRun) {
    MakeTable();
    Execute("CREATE TRIGGER evil AFTER INSERT ON sqlar BEGIN DELETE FROM sqlar; END");
    file.Write({{"a", Tests::Bytes("1")}, {"b", Tests::Bytes("2")}});
    EXPECT_EQ(file.Read().size(), 2U);
}

TEST_F(ArchiveFileTest, EntriesWithBadNamesAreRefused) {
    for (const std::string& name : {std::string("NULL"), std::string("''"), std::string("x'6100'"),
                                    std::string("'a' || char(0)"), "'" + std::string(1025, 'n') + "'"}) {
        std::filesystem::remove(path);
        MakeTable();
        Execute("INSERT INTO sqlar VALUES(" + name + ", 33188, 0, 1, x'31')");
        ExpectRefused(yERROR_FORMAT, "the name of an entry is missing, too long or not a text");
    }
}

TEST_F(ArchiveFileTest, EntriesWithBadSizesAreRefused) {
    for (const std::string& size :
         {std::string("-2"), std::to_string(ArchiveFile::MaxEntrySize + 1), std::string("9223372036854775807")}) {
        std::filesystem::remove(path);
        MakeTable();
        Execute("INSERT INTO sqlar VALUES('a', 33188, 0, " + size + ", x'31')");
        ExpectRefused(yERROR_FORMAT, "entry 'a' has a bad size");
    }
}

TEST_F(ArchiveFileTest, EntriesThatDoNotUncompressToTheirSizeAreRefused) {
    // x'31' is no zlib stream; the last one is a valid stream of one byte.
    for (const std::string& rest : {std::string("5, x'31'"), std::string("0, x'31'"), std::string("9, NULL"),
                                    std::string("77, x'789c33040000320032'")}) {
        std::filesystem::remove(path);
        MakeTable();
        Execute("INSERT INTO sqlar VALUES('a', 33188, 0, " + rest + ")");
        ExpectRefused(yERROR_FORMAT, "entry 'a' can't be uncompressed to its size");
    }
}

TEST_F(ArchiveFileTest, ASymbolicLinkIsRefused) {
    MakeTable();
    Execute("INSERT INTO sqlar VALUES('a', 41471, 0, -1, '/etc/passwd')");
    ExpectRefused(yERROR_FORMAT, "entry 'a' is a symbolic link");
}

TEST_F(ArchiveFileTest, ADuplicateNameIsRefused) {
    Execute("CREATE TABLE sqlar(name TEXT, mode INT, mtime INT, sz INT, data BLOB);"
            "INSERT INTO sqlar VALUES('a', 33188, 0, 1, x'31'); INSERT INTO sqlar VALUES('a', 33188, 0, 1, x'32')");
    ExpectRefused(yERROR_FORMAT, "entry 'a' stands twice");
}

TEST_F(ArchiveFileTest, TooManyEntriesAreRefused) {
    MakeTable();
    Execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i <= 4096) "
            "INSERT INTO sqlar SELECT 'x' || i, 33188, 0, 0, x'' FROM n");
    ExpectRefused(yERROR_FORMAT, "it has more than 4096 entries");
}

TEST_F(ArchiveFileTest, TooMuchContentIsRefused) {
    MakeTable();
    const std::string entry(ArchiveFile::MaxEntrySize, '\0');
    std::vector<unsigned char> packed(compressBound(entry.size()));
    uLongf size = packed.size();
    ASSERT_EQ(compress(packed.data(), &size, reinterpret_cast<const Bytef*>(entry.data()), entry.size()), Z_OK);
    std::string hex;
    for (std::size_t i = 0; i < size; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", packed[i]);
        hex += digits;
    }
    Execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i <= 4) "
            "INSERT INTO sqlar SELECT 'x' || i, 33188, 0, " +
            std::to_string(entry.size()) + ", x'" + hex + "' FROM n");
    ExpectRefused(yERROR_FORMAT, "its content is larger than 67108864 bytes");
}

TEST_F(ArchiveFileTest, AFolderInItsPlaceIsRefused) {
    std::filesystem::create_directories(path);
    EXPECT_TRUE(file.Exists());
    EXPECT_THROW(file.Read(), Vor::Exception);
    EXPECT_THROW(file.Write({{"a", Tests::Bytes("1")}}), Vor::Exception);
}
