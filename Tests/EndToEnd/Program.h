#pragma once

#include "Tests/Support/TempFolder.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace Tests {

/// A program that is started with arguments and killed at destruction. Each wait has a deadline.
class Program {
public:
    static constexpr std::chrono::seconds Deadline{20};

    explicit Program(const std::vector<std::string>& command) {
        int out[2];
        if (pipe2(out, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        const int errors = open(folder.File("stderr").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        std::vector<char*> arguments;
        for (const std::string& word : command) {
            arguments.push_back(const_cast<char*>(word.c_str()));
        }
        arguments.push_back(nullptr);
        pid = fork();
        if (pid == 0) {
            dup2(out[1], STDOUT_FILENO);
            dup2(errors, STDERR_FILENO);
            execvp(arguments[0], arguments.data());
            _exit(127);
        }
        close(out[1]);
        close(errors);
        output = out[0];
    }
    ~Program() {
        if (!status) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
        close(output);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits for the next line on stdout that contains the text. Nothing when the program ends or the deadline passes
    /// before.
    std::optional<std::string> WaitForLine(const std::string& text) {
        const auto end = std::chrono::steady_clock::now() + Deadline;
        for (;;) {
            for (auto at = unread.find('\n'); at != std::string::npos; at = unread.find('\n')) {
                const std::string line = unread.substr(0, at);
                unread.erase(0, at + 1);
                if (line.find(text) != std::string::npos) {
                    return line;
                }
            }
            if (!ReadSome(end)) {
                return std::nullopt;
            }
        }
    }

    pid_t Id() const { return pid; }

    void Signal(int number) { kill(pid, number); }

    /// Waits for the exit status, which is 128 plus the signal's number after a signal. Nothing when the program still
    /// runs at the deadline.
    std::optional<int> WaitForExit(std::chrono::milliseconds deadline = Deadline) {
        const auto end = std::chrono::steady_clock::now() + deadline;
        while (!status && ReadSome(end)) {
        }
        while (!status) {
            int raw = 0;
            if (waitpid(pid, &raw, WNOHANG) == pid) {
                status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
            } else if (std::chrono::steady_clock::now() > end) {
                return std::nullopt;
            } else {
                std::this_thread::yield();
            }
        }
        return status;
    }

    /// Everything that was read from stdout.
    const std::string& Output() const { return all; }
    std::string Errors() const { return ReadWholeFile(folder.File("stderr")); }

private:
    bool ReadSome(std::chrono::steady_clock::time_point end) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd wait{output, POLLIN, 0};
        if (left.count() <= 0 || poll(&wait, 1, static_cast<int>(left.count())) != 1) {
            return false;
        }
        char bytes[4096];
        const ssize_t size = read(output, bytes, sizeof bytes);
        if (size <= 0) {
            return false;
        }
        unread.append(bytes, static_cast<std::size_t>(size));
        all.append(bytes, static_cast<std::size_t>(size));
        return true;
    }

    TempFolder folder;
    pid_t pid = -1;
    int output = -1;
    std::optional<int> status;
    std::string unread; ///< what WaitForLine hasn't returned yet
    std::string all;
};

/// What a program that has ended wrote.
struct Answer {
    int status;
    std::string output;
    std::string errors;
};

/// Ends the program as its user does, and expects that it ends in time with status 0.
inline void ExpectEndWell(Program& program, int signal = SIGTERM) {
    program.Signal(signal);
    EXPECT_EQ(program.WaitForExit(std::chrono::seconds(2)), 0) << program.Output() << program.Errors();
}

inline Answer RunToEnd(const std::vector<std::string>& command, std::chrono::seconds deadline = Program::Deadline) {
    Program program(command);
    const int status = program.WaitForExit(deadline).value_or(-1);
    return {status, program.Output(), program.Errors()};
}

} // namespace Tests
