#include "Tests/Support/TempFolder.h"
#include "VorCommon/ArchiveFile.h"
#include "VorCommon/IPersistHandler.h"
#include "VorCommon/IPersistStore.h"
#include "VorCommon/PersistManager.h"

#include <chrono>
#include <cstdint>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

using VorCommon::ArchiveFile;
using VorCommon::IPersistStore;
using VorCommon::PersistDomain;
using VorCommon::PersistManager;

namespace {

constexpr int RoundCount = 20;
constexpr int FileCount = 5;
constexpr std::size_t ContentSize = 60000; ///< many pages, so that a save is many writes

/// Every file of a generation is full of that generation's letter, so a mixture is found.
std::string ContentOf(unsigned generation) {
    return std::to_string(generation) + ":" + std::string(ContentSize, static_cast<char>('a' + generation % 26));
}

class Writer : public VorCommon::IPersistHandler {
public:
    const char* Component() override { return "writer"; }
    void InitPersistDomain(PersistDomain, IPersistStore&) override {}
    void LoadPersistDomain(PersistDomain, const IPersistStore& store) override {
        const VorCommon::PersistBuffer buffer = store.Read("/file0");
        generation = static_cast<unsigned>(
            std::stoul(std::string(reinterpret_cast<const char*>(buffer.pointer) + buffer.offset, buffer.size)));
    }
    void SavePersistDomain(PersistDomain, IPersistStore& store) override {
        const std::string content = ContentOf(++generation);
        for (int i = 0; i < FileCount; ++i) {
            store.Write("/file" + std::to_string(i), content.data(), content.size());
        }
    }

    unsigned generation = 0;
};

/// Saves until it is killed, and writes the generation on the disk to the pipe before each save.
[[noreturn]] void SaveUntilKilled(const std::string& folder, int pipe) {
    PersistManager manager({.dataFolder = folder, .job = "crash"});
    Writer writer;
    manager.Register(writer, "");
    manager.Load();
    while (true) {
        const std::uint32_t saved = writer.generation;
        if (write(pipe, &saved, sizeof saved) != sizeof saved) {
            _exit(1);
        }
        manager.Save(PersistDomain::Job).get().ThrowIfFailed();
    }
}

void SpinFor(std::chrono::nanoseconds duration) {
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end) {
    }
}

/// Kills a saving process `delay` after it began its save number `saves` + 1. Returns the last generation that it wrote
/// to the pipe.
std::uint32_t KillWhileSaving(const std::string& folder, int saves, std::chrono::nanoseconds delay) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        SaveUntilKilled(folder, ends[1]);
    }
    close(ends[1]);
    std::uint32_t saved = 0;
    for (int i = 0; i <= saves; ++i) {
        EXPECT_EQ(read(ends[0], &saved, sizeof saved), static_cast<ssize_t>(sizeof saved));
    }
    SpinFor(delay);
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status)) << "the saving process ended by itself";
    while (read(ends[0], &saved, sizeof saved) == sizeof saved) {
    }
    close(ends[0]);
    return saved;
}

/// The one generation that all files of the archive have.
std::uint32_t WholeGeneration(const std::string& path) {
    const ArchiveFile::Entries entries = ArchiveFile(path).Read();
    EXPECT_EQ(entries.size(), static_cast<std::size_t>(FileCount));
    std::string first;
    for (const auto& [name, content] : entries) {
        const std::string text(content->begin(), content->end());
        first = first.empty() ? text : first;
        EXPECT_EQ(text, first) << name << " is of another save";
    }
    const auto generation = static_cast<std::uint32_t>(std::stoul(first));
    EXPECT_EQ(first, ContentOf(generation));
    return generation;
}

std::chrono::nanoseconds DurationOfASave(const std::string& folder) {
    PersistManager manager({.dataFolder = folder, .job = "measured"});
    Writer writer;
    manager.Register(writer, "");
    manager.Load();
    manager.Save(PersistDomain::Job).get().ThrowIfFailed();
    const auto begin = std::chrono::steady_clock::now();
    manager.Save(PersistDomain::Job).get().ThrowIfFailed();
    return std::chrono::steady_clock::now() - begin;
}

} // namespace

TEST(PersistCrashTest, AKilledSaveLeavesTheWholeOldOrTheWholeNewContent) {
    const Tests::TempFolder folder;
    const std::string path = folder.File("jobs/crash.vrjob");
    const auto duration = DurationOfASave(folder.Path().string());
    KillWhileSaving(folder.Path().string(), 1, std::chrono::nanoseconds(0));
    for (int round = 0; round < RoundCount; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const std::uint32_t saved = KillWhileSaving(folder.Path().string(), round % 3, duration * round / RoundCount);
        const std::uint32_t found = WholeGeneration(path);
        EXPECT_GE(found, saved) << "a finished save was lost";
        EXPECT_LE(found, saved + 1);
    }
}

TEST(PersistCrashTest, AKilledFirstSaveLeavesNoFileOrAWholeOne) {
    for (int round = 0; round < RoundCount; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const Tests::TempFolder folder;
        const std::string path = folder.File("jobs/crash.vrjob");
        const auto duration = DurationOfASave(folder.Path().string());
        const std::uint32_t saved = KillWhileSaving(folder.Path().string(), 0, duration * round / RoundCount);
        if (std::filesystem::exists(path)) {
            EXPECT_GE(WholeGeneration(path), 1U);
        } else {
            EXPECT_EQ(saved, 0U) << "a finished save was lost";
        }
    }
}
