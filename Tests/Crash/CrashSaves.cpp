// Kills a program at random moments of its saves of a job, COUNT times: crash-saves COUNT [SEED]. Each time the job
// must open with the whole content of the save that ran, or of the one before.

#include "Tests/Support/TempFolder.h"
#include "Vor/Exception.h"
#include "Vor/LogOutput.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ArchiveStore.h"
#include "VorCommon/IPersistHandler.h"
#include "VorCommon/PersistManager.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <random>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <nlohmann/json.hpp>

namespace {

using VorCommon::PersistDomain;

constexpr const char* JobName = "crash";
constexpr unsigned Blocks = 300;
constexpr unsigned Services = 3;
/// A kill comes within this many times the length of a save.
constexpr int MaxSaves = 3;

std::string PathOf(unsigned service) {
    return "/controls/service" + std::to_string(service) + "/config.json";
}

std::string ContentOf(unsigned long generation, unsigned service) {
    nlohmann::json blocks = nlohmann::json::array();
    for (unsigned i = 0; i < Blocks + generation % 7; ++i) {
        blocks.push_back({{"outputId", i}, {"dataSource", std::to_string(generation * (service + 1))}});
    }
    return nlohmann::json{{"generation", generation}, {"blocks", blocks}}.dump();
}

/// Saves its generation.
class Handler : public VorCommon::IPersistHandler {
public:
    const char* Component() override { return "crash"; }
    void InitPersistDomain(PersistDomain, VorCommon::IPersistStore&) override {}
    void LoadPersistDomain(PersistDomain domain, const VorCommon::IPersistStore& store) override {
        if (domain == PersistDomain::Job) {
            const VorCommon::PersistBuffer buffer = store.Read(PathOf(0));
            const auto* text = buffer.pointer + buffer.offset;
            generation = nlohmann::json::parse(text, text + buffer.size).at("generation").get<unsigned long>();
        }
    }
    void SavePersistDomain(PersistDomain, VorCommon::IPersistStore& store) override {
        for (unsigned service = 0; service < Services; ++service) {
            const std::string text = ContentOf(generation, service);
            store.Write(PathOf(service), text.data(), text.size());
        }
    }

    unsigned long generation = 0;
};

/// Saves one generation after the other, and prints the start and the end of each, until it is killed.
[[noreturn]] void SaveUntilKilled(const std::string& folder) {
    Vor::MainLoop loop(Vor::MainLoop::Mode::Manual);
    VorCommon::PersistManager manager({.dataFolder = folder, .job = JobName});
    Handler handler;
    manager.Register(handler, "");
    manager.Load();
    while (true) {
        ++handler.generation;
        std::printf("begin %lu\n", handler.generation);
        std::fflush(stdout);
        manager.Save(PersistDomain::Job).get().ThrowIfFailed();
        std::printf("end %lu\n", handler.generation);
        std::fflush(stdout);
    }
}

void Require(bool condition, const std::string& text) {
    if (!condition) {
        throw std::runtime_error(text);
    }
}

/// The program that saves, and its output.
class Child {
public:
    explicit Child(const std::string& folder) {
        std::array<int, 2> ends{};
        Require(pipe(ends.data()) == 0, "no pipe");
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        std::string program = "/proc/self/exe";
        std::string option = "--save";
        std::string argument = folder;
        std::array<char*, 4> arguments{program.data(), option.data(), argument.data(), nullptr};
        const int error = posix_spawn(&id, program.c_str(), &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        out = fdopen(ends[0], "r");
        Require(error == 0 && out != nullptr, "the program can't be started");
    }
    ~Child() {
        Kill();
        std::fclose(out);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void Kill() {
        if (id != 0) {
            kill(id, SIGKILL);
            waitpid(id, nullptr, 0);
            id = 0;
        }
    }

    /// Reads the next line of its output; false at the end.
    bool Read(std::string& word, unsigned long& generation) {
        std::array<char, 16> text{};
        if (std::fscanf(out, "%15s %lu", text.data(), &generation) != 2) {
            return false;
        }
        word = text.data();
        return true;
    }

private:
    pid_t id = 0;
    std::FILE* out = nullptr;
};

/// The generation of the whole job.
unsigned long GenerationOf(const std::string& path) {
    VorCommon::ArchiveStore store(path);
    store.OpenJob();
    const auto read = [&](unsigned service) {
        const VorCommon::PersistBuffer buffer = store.Read(PathOf(service));
        return std::string(reinterpret_cast<const char*>(buffer.pointer + buffer.offset), buffer.size);
    };
    const auto generation = nlohmann::json::parse(read(0)).at("generation").get<unsigned long>();
    for (unsigned service = 0; service < Services; ++service) {
        Require(read(service) == ContentOf(generation, service), "the job is a mixture");
    }
    return generation;
}

std::chrono::microseconds LengthOfASave() {
    const Tests::TempFolder folder;
    Child child(folder.Path().string());
    std::string word;
    unsigned long generation = 0;
    Require(child.Read(word, generation), "the program doesn't begin a save");
    const auto begin = std::chrono::steady_clock::now();
    Require(child.Read(word, generation) && word == "end", "the program doesn't save");
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin);
}

/// Returns the generation that the job has afterwards.
unsigned long KillOnce(const std::string& folder, unsigned long former, std::chrono::microseconds delay) {
    Child child(folder);
    std::string word;
    unsigned long generation = 0;
    Require(child.Read(word, generation), "the program doesn't save");
    Require(word == "begin" && generation == former + 1, "the program didn't find the last save");
    std::this_thread::sleep_for(delay);
    child.Kill();
    unsigned long begun = generation;
    unsigned long ended = former;
    while (child.Read(word, generation)) {
        (word == "begin" ? begun : ended) = generation;
    }
    const std::string path = folder + "/jobs/" + JobName + ".vrjob";
    if (former == 0 && ended == 0 && !VorCommon::ArchiveFile(path).Exists()) {
        return 0;
    }
    const unsigned long found = GenerationOf(path);
    Require(found == ended || found == begun, "the job is neither of the last save nor of the one before");
    return found;
}

int Run(int count, unsigned seed) {
    const std::chrono::microseconds length = LengthOfASave();
    std::cout << "crash-saves: " << count << " kills, seed " << seed << ", a save takes " << length.count() << " us"
              << std::endl;
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::chrono::microseconds::rep> delays(0, MaxSaves * length.count());
    const Tests::TempFolder folder;
    unsigned long generation = 0;
    int inTheMiddle = 0;
    for (int i = 0; i < count; ++i) {
        const unsigned long former = generation;
        try {
            generation = KillOnce(folder.Path().string(), former, std::chrono::microseconds(delays(random)));
        } catch (const std::exception& e) {
            std::cout << "kill " << i + 1 << ": " << e.what() << std::endl;
            return 1;
        }
        inTheMiddle += generation == former ? 1 : 0;
    }
    std::cout << "All jobs were whole, after " << generation << " saves; " << inTheMiddle
              << " kills came before the first save was done." << std::endl;
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    Vor::LogOutput::Set([](const Vor::LogRecord&) {});
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments[0] == "--save") {
        SaveUntilKilled(arguments[1]);
    }
    if (arguments.empty()) {
        std::cerr << "crash-saves COUNT [SEED]" << std::endl;
        return 2;
    }
    return Run(std::stoi(arguments[0]),
               arguments.size() > 1 ? static_cast<unsigned>(std::stoul(arguments[1])) : std::random_device{}());
}
