#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace VorControl::ControlProtocol {

/// A client's command, as read from its input block. Its layout in memory is fixed, since a block fills it as bytes.
struct ControlRegisterCommandData {
    /// Other values of `commandId` aren't commands.
    enum CommandId : std::uint8_t {
        NoCommand = 0,
        Start = 1,
        Stop = 2,
        Align = 3,
        ClearAlign = 4,
        LoadJob = 5,
        SoftwareTrigger = 6,
        SetUserData = 9
    };

    std::uint16_t requestWord = 0;
    std::uint8_t commandId = NoCommand;
    std::uint8_t reserved = 0;
    std::array<char, 492> commandArgs{}; ///< text with a terminator, or user data
    std::uint64_t commandArgsSize = 0;   ///< bytes of user data; 0 for every other command

    /// Throws yERROR_PARAMETER above the size of `commandArgs`.
    void SetCommandArgsSize(std::uint64_t size);
};

static_assert(sizeof(ControlRegisterCommandData) == 504);
static_assert(offsetof(ControlRegisterCommandData, commandId) == 2);
static_assert(offsetof(ControlRegisterCommandData, commandArgs) == 4);
static_assert(offsetof(ControlRegisterCommandData, commandArgsSize) == 496);
static_assert(std::is_trivially_copyable_v<ControlRegisterCommandData>);

/// The response to a command.
struct DefaultCommandResultData {
    std::uint16_t requestWord = 0;
    std::uint8_t commandResult = 0; ///< 0 none completed yet, 1 in progress, 2 done, 3 failed
};

static_assert(sizeof(DefaultCommandResultData) == 4);

using DefaultUserDataInputData = std::array<unsigned char, 468>;

/// The state of the sensor. The service that fills it defines the values; the comments describe the usual ones.
struct DefaultSystemStateData {
    std::uint8_t firstStateByte = 0;    ///< run state: 0 ready, 1 scanning
    std::uint8_t jobFileNameLength = 0; ///< at most 64
    std::uint8_t secondStateByte = 0;   ///< not used
    std::uint8_t thirdStateByte = 0;    ///< processor load in percent
    std::uint32_t reserved = 0;
    std::uint64_t stateValue = 0;       ///< up time in seconds
    std::array<char, 64> jobFileName{}; ///< without a terminator
};

static_assert(sizeof(DefaultSystemStateData) == 80);
static_assert(offsetof(DefaultSystemStateData, stateValue) == 8);
static_assert(offsetof(DefaultSystemStateData, jobFileName) == 16);

/// The state of the scanner. The service that fills it defines the values; the comments describe the usual ones.
struct DefaultScannerStateData {
    std::uint8_t firstScannerByte = 0;  ///< 0 not aligned, 1 aligned, 2 aligning
    std::uint8_t secondScannerByte = 0; ///< 1: the laser is on
    std::array<std::uint8_t, 6> reserved{};
    std::int64_t signedScannerValue = 0;    ///< encoder value
    std::uint64_t unsignedScannerValue = 0; ///< sync time in microseconds
};

static_assert(sizeof(DefaultScannerStateData) == 24);
static_assert(offsetof(DefaultScannerStateData, signedScannerValue) == 8);

} // namespace VorControl::ControlProtocol
