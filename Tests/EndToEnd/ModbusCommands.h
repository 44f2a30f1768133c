#pragma once

#include <cstdint>

namespace Tests {

/// The command registers of the demo job, and what is in them.
inline constexpr int CommandAddress = 1000;
inline constexpr int AnswerAddress = 1100;
inline constexpr int SystemAddress = 1200;
inline constexpr int ScannerAddress = 1300;

enum CommandId : std::uint16_t {
    Start = 1,
    Stop = 2,
    Align = 3,
    ClearAlign = 4,
    LoadJob = 5,
    Trigger = 6,
    Invalid = 7,
    UserData = 9
};

enum CommandStatus : std::uint16_t { NothingRan = 0, InProgress = 1, Done = 2, Failed = 3 };

} // namespace Tests
