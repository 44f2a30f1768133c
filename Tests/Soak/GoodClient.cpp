#include "Tests/Soak/GoodClient.h"

#include <array>
#include <cstdlib>
#include <thread>

namespace Soak {

namespace {

constexpr std::uint16_t CommandAddress = 1000;
constexpr std::uint16_t AnswerAddress = 1100;
constexpr std::uint16_t SystemAddress = 1200;
constexpr int Busy = 6;
constexpr int InProgress = 1;

/// The frame number in a text such as "frame 17: max 9.864 mm"; -1 for another text.
long FrameOfText(const Words& words, std::size_t at) {
    std::string text;
    for (std::size_t i = at; i < at + 16; ++i) {
        text += static_cast<char>(words[i] >> 8);
        text += static_cast<char>(words[i]);
    }
    return text.starts_with("frame ") ? std::atol(text.c_str() + 6) : -1;
}

} // namespace

GoodClient::GoodClient(int number, std::uint16_t port, Totals& totals, const std::atomic<bool>& ending)
    : number(number)
    , port(port)
    , totals(totals)
    , ending(ending)
    , random(static_cast<unsigned>(number)) {}

void GoodClient::Run() {
    while (!ending) {
        try {
            if (!connection) {
                connection = std::make_unique<Connection>(port);
            }
            if (random() % 4 == 0) {
                SendCommand(RandomCommand());
            } else {
                ReadScan();
            }
        } catch (const Connection::Lost&) {
            connection.reset(); // the service is disabled
        } catch (const std::runtime_error&) {
            ++totals.withoutReply;
            connection.reset();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 10));
    }
}

GoodClient::Command GoodClient::RandomCommand() {
    static const std::array<Command, 12> Commands = {{{1, "", 2},
                                                      {1, "", 2},
                                                      {2, "", 2},
                                                      {3, "", 2},
                                                      {4, "", 2},
                                                      {5, "demo", 2},
                                                      {5, "second.vrjob", 2},
                                                      {5, "third", 2},
                                                      {5, "nowhere", 3},
                                                      {6, "", 3},
                                                      {7, "", 3},
                                                      {9, "data", 2}}};
    return Commands[random() % Commands.size()];
}

void GoodClient::SendCommand(const Command& command) {
    const auto word = static_cast<std::uint16_t>(number << 12 | (++counter & 0xFFF));
    Words words = {word, command.id};
    words.insert(words.end(), command.argument.begin(), command.argument.end());
    words.push_back(0);
    const int refusal = connection->Write(CommandAddress, words);
    if (refusal == Busy) {
        ++totals.busy;
    } else if (refusal == 0) {
        ++totals.commands;
        WaitForEnd(command, word);
    } else {
        ++totals.wrongStatus;
    }
}

// Another request word in the answer also means that the command has ended: only then another one is accepted.
void GoodClient::WaitForEnd(const Command& command, std::uint16_t word) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < end) {
        std::optional<Words> answer;
        try {
            answer = connection->Read(AnswerAddress, 2);
        } catch (const Connection::Lost&) {
            ++totals.interrupted;
            throw;
        }
        if (answer && (*answer)[0] != word) {
            return;
        }
        if (answer && (*answer)[1] != InProgress) {
            if ((*answer)[1] != command.expected) {
                ++totals.wrongStatus;
            }
            return;
        }
    }
    ++totals.withoutEnd;
}

void GoodClient::ReadScan() {
    ++totals.reads;
    if (random() % 8 == 0) {
        connection->Read(SystemAddress, 40);
        return;
    }
    const auto words = connection->Read(0, 56);
    if (!words) {
        return; // the map of another job
    }
    const long textFrame = FrameOfText(*words, 40);
    if (textFrame >= 0 && textFrame != ((*words)[30] << 16 | (*words)[31])) {
        ++totals.mixedScans;
    }
}

bool GoodClient::StartsTheScan() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (std::chrono::steady_clock::now() < end) {
        try {
            connection = std::make_unique<Connection>(port);
            const auto word = static_cast<std::uint16_t>(number << 12 | (++counter & 0xFFF));
            if (connection->Write(CommandAddress, {word, 1}) != 0) {
                continue;
            }
            while (std::chrono::steady_clock::now() < end) {
                if (const auto answer = connection->Read(AnswerAddress, 2); answer && (*answer)[1] != InProgress) {
                    return (*answer)[0] == word && (*answer)[1] == 2;
                }
            }
        } catch (const std::runtime_error&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }
    return false;
}

} // namespace Soak
