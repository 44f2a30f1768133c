#include "Sensor/Io/PortParams.h"

#include "Vor/Utf8.h"

#include <algorithm>
#include <array>

namespace Sensor::Io {

namespace {

constexpr unsigned MinPulseWidth = 100;
constexpr unsigned MaxMicroseconds = 10'000'000;

/// An option of a parameter: what it means, how documents name it, and what people read.
template <class T>
struct Word {
    T value;
    const char* name;
    const char* text;
};

constexpr std::array<Word<PortMode>, 2> Modes{
    {{PortMode::Level, "level", "Level"}, {PortMode::Pulse, "pulse", "Pulse"}}};
constexpr std::array<Word<PortSchedule>, 3> Schedules{{{PortSchedule::Now, "now", "At Once"},
                                                       {PortSchedule::Encoder, "encoder", "At an Encoder Position"},
                                                       {PortSchedule::Time, "time", "At a Time of the Scan"}}};
constexpr std::array<Word<PortIdle>, 3> Idles{
    {{PortIdle::Off, "off", "Off"}, {PortIdle::On, "on", "On"}, {PortIdle::Keep, "keep", "As It Was"}}};

template <class Words>
void AddOptions(Vor::Params::Enum<std::string>& parameter, const Words& words) {
    for (const auto& word : words) {
        parameter.AddOption(word.name, word.text);
    }
}

template <class Words, class T>
std::string NameOf(const Words& words, T value) {
    return std::ranges::find(words, value, [](const auto& word) { return word.value; })->name;
}

template <class Words>
auto ValueOf(const Words& words, const std::string& name) {
    return std::ranges::find(words, name, [](const auto& word) { return std::string(word.name); })->value;
}

void LimitMicroseconds(Vor::Params::Value<unsigned int>& parameter, unsigned minimum) {
    parameter.EnableUnits(true);
    parameter.SetUnits("us");
    parameter.EnableMinimum(true);
    parameter.SetMinimum(minimum);
    parameter.EnableMaximum(true);
    parameter.SetMaximum(MaxMicroseconds);
}

unsigned CountOf(std::chrono::microseconds time) {
    return static_cast<unsigned>(time.count());
}

template <class P, class T>
void MendOne(P& parameter, const T& former, std::vector<std::string>& sentences) {
    const std::size_t before = sentences.size();
    parameter.CheckValidationAndCollect(sentences, 0);
    if (sentences.size() > before) {
        parameter = former;
    }
}

} // namespace

void NameParam::CheckValidation(const std::string& value, bool log) const {
    Value::CheckValidation(value, log);
    const auto isControl = [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; };
    if (value.size() > MaxSize || !Vor::IsUtf8(value) || std::ranges::any_of(value, isControl)) {
        FailValidation(log, "%1$s must be at most 64 bytes of text in UTF-8 without control characters.");
    }
}

PortParams::PortParams() {
    Register("name", name, "Name");
    Register("behaviour", behaviour, "Behaviour");
    behaviour.AddOption(PortBehaviour::Unused, "Unused");
    behaviour.AddOption(PortBehaviour::Scanning, "On While the Sensor Scans");
    behaviour.AddOption(PortBehaviour::Frames, "A Pulse with Each Frame");
    behaviour.AddOption(PortBehaviour::SoftwareEvents, "Software Events");
    Register("activeLow", activeLow, "Active Low");
    Register("mode", mode, "Mode");
    AddOptions(mode, Modes);
    Register("pulseWidth", pulseWidth, "Pulse Width");
    LimitMicroseconds(pulseWidth, MinPulseWidth);
    Register("delay", delay, "Delay");
    LimitMicroseconds(delay, 0);
    Register("schedule", schedule, "Schedule");
    AddOptions(schedule, Schedules);
    Register("idle", idle, "Idle State");
    AddOptions(idle, Idles);

    const PortSettings defaults;
    behaviour = defaults.behaviour;
    mode = NameOf(Modes, defaults.mode);
    pulseWidth = CountOf(defaults.pulseWidth);
    delay = CountOf(defaults.delay);
    schedule = NameOf(Schedules, defaults.schedule);
    idle = NameOf(Idles, defaults.idle);
}

PortSettings PortParams::Settings() const {
    return {.name = name.Get(),
            .behaviour = behaviour.Get(),
            .activeLow = activeLow.Get(),
            .mode = ValueOf(Modes, mode),
            .pulseWidth = std::chrono::microseconds(pulseWidth.Get()),
            .delay = std::chrono::microseconds(delay.Get()),
            .schedule = ValueOf(Schedules, schedule),
            .idle = ValueOf(Idles, idle)};
}

std::vector<std::string> PortParams::Mend(const PortSettings& former) {
    std::vector<std::string> sentences;
    MendOne(name, former.name, sentences);
    MendOne(behaviour, former.behaviour, sentences);
    MendOne(mode, NameOf(Modes, former.mode), sentences);
    MendOne(pulseWidth, CountOf(former.pulseWidth), sentences);
    MendOne(delay, CountOf(former.delay), sentences);
    MendOne(schedule, NameOf(Schedules, former.schedule), sentences);
    MendOne(idle, NameOf(Idles, former.idle), sentences);
    return sentences;
}

} // namespace Sensor::Io
