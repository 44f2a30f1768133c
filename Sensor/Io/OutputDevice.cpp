#include "Sensor/Io/OutputDevice.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/LoopCore.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace Sensor::Io {

namespace {

using Answer = OutputPort::Answer;

std::vector<std::shared_ptr<PortParams>> MakeParams() {
    std::vector<std::shared_ptr<PortParams>> params;
    for (unsigned long long port = 0; port < OutputDevice::PortCount; ++port) {
        params.push_back(std::make_shared<PortParams>());
    }
    return params;
}

const char* ReasonOf(Answer answer) {
    switch (answer) {
    case Answer::NotDriven:
        return "nobody drives the device";
    case Answer::SwitchesByItself:
        return "the port isn't for software events";
    default:
        return "no scan runs that could reach its target";
    }
}

} // namespace

OutputDevice::OutputDevice(Environ environ)
    : latency(environ.latency)
    , clock(std::move(environ.clock))
    , changes(std::move(environ.changes))
    , params(MakeParams())
    , serialNumber(std::move(environ.serialNumber))
    , ports(PortCount, OutputPort(changes))
    , timer([this](Vor::AsyncTimer&) { RunDue(); }) {}

template <class Function>
void OutputDevice::ChangePorts(const Function& function) {
    const ScanClock::Moment moment = clock->Now();
    for (OutputPort& port : ports) {
        function(port, moment);
    }
    Arm(moment);
}

void OutputDevice::RunDue() {
    const std::lock_guard guard(mutex);
    armed.reset();
    ChangePorts([](OutputPort& port, const ScanClock::Moment& moment) { port.RunDue(moment); });
}

void OutputDevice::Arm(const ScanClock::Moment& moment) {
    std::optional<Vor::LoopCore::Time> next;
    for (const OutputPort& port : ports) {
        const auto due = port.NextDue();
        if (due && (!next || *due < *next)) {
            next = due;
        }
    }
    if (next == armed) {
        return;
    }
    armed = next;
    if (next) {
        const auto period = std::chrono::ceil<std::chrono::microseconds>(*next - moment.now);
        timer.Start(static_cast<unsigned long long>(std::max<std::int64_t>(period.count(), 0)), true);
    }
}

yStatus OutputDevice::SetOutputState(unsigned long long outputId, bool state, long long target) {
    Transfer();
    const std::lock_guard guard(mutex);
    if (!plugged) {
        Vor::Throw(yERROR_STATE, "The device %s isn't connected.", serialNumber);
    }
    if (outputId >= ports.size()) {
        Vor::Throw(yERROR_NOT_FOUND, "The device %s has no port %llu.", serialNumber, outputId);
    }
    const ScanClock::Moment moment = clock->Now();
    const Answer answer = ports[outputId].Ask({.on = state, .target = target}, moment);
    Arm(moment);
    if (answer == Answer::Full) {
        return yERROR_FULL;
    }
    if (answer != Answer::Taken) {
        Vor::Throw(yERROR_STATE, "The device %s refuses a request for its port %llu: %s.", serialNumber, outputId,
                   ReasonOf(answer));
    }
    return yOK;
}

void OutputDevice::Transfer() const {
    Vor::LoopCore& loop = Vor::LoopCore::Instance();
    const auto calledAt = loop.Now();
    if (calls == Calls::Hang) {
        const auto never = Vor::LoopCore::Duration(std::numeric_limits<unsigned long long>::max());
        loop.WaitUntil(calledAt + never, [this] { return calls != Calls::Hang || !plugged; });
    }
    if (latency.count() > 0) {
        loop.WaitUntil(calledAt + latency, [this] { return !plugged.load(); });
    }
    if (calls == Calls::Fail) {
        Vor::Throw(yERROR_TIMEOUT, "The device %s doesn't answer.", SerialNumber());
    }
}

void OutputDevice::Enable(bool enable) {
    const std::lock_guard guard(mutex);
    enabled = enable && plugged;
    ChangePorts([this](OutputPort& port, const ScanClock::Moment& moment) { port.Enable(enabled, moment); });
}

int OutputDevice::BehaviourType(unsigned long long port) const {
    const std::lock_guard guard(mutex);
    return static_cast<int>(port < ports.size() ? ports[port].Settings().behaviour : PortBehaviour::Unused);
}

std::string OutputDevice::DisplayName(unsigned long long port) const {
    const std::lock_guard guard(mutex);
    return port < ports.size() ? ports[port].Settings().name : std::string();
}

std::vector<unsigned long long> OutputDevice::Ports() const {
    std::vector<unsigned long long> numbers;
    for (unsigned long long port = 0; port < PortCount; ++port) {
        numbers.push_back(port);
    }
    return numbers;
}

std::shared_ptr<const Vor::Params::Group> OutputDevice::PortParams(unsigned long long port) const {
    return port < params.size() ? params[port] : nullptr;
}

std::shared_ptr<Vor::Params::Group> OutputDevice::BeginUpdatePortParams(unsigned long long port) {
    return port < params.size() ? params[port] : nullptr;
}

void OutputDevice::EndUpdatePortParams(unsigned long long port) {
    if (port >= params.size()) {
        return;
    }
    PortSettings former;
    {
        const std::lock_guard guard(mutex);
        former = ports[port].Settings();
    }
    for (const std::string& sentence : params[port]->Mend(former)) {
        Vor::LogUser(Vor::UserWarning, "VorSensor", "Port %1$s of the device %2$s: %3$s It stays as it was.",
                     std::to_string(port), SerialNumber(), sentence);
    }
    const PortSettings settings = params[port]->Settings();
    if (settings == former) {
        return;
    }
    {
        const std::lock_guard guard(mutex);
        const ScanClock::Moment moment = clock->Now();
        ports[port].Configure(settings, moment);
        Arm(moment);
    }
    paramsChanged.Raise(port);
}

std::string OutputDevice::SerialNumber() const {
    const std::lock_guard guard(mutex);
    return serialNumber;
}

OutputDevice::DeviceStatus OutputDevice::Status() const {
    return plugged ? DeviceStatus::Connected : DeviceStatus::NotConnected;
}

void OutputDevice::ChangeSerialNumber(const std::string& given) {
    {
        const std::lock_guard guard(mutex);
        serialNumber = given;
        changes->fetch_add(1, std::memory_order_relaxed);
    }
    changed.Raise();
}

void OutputDevice::SetCalls(Calls given) {
    Vor::LoopCore::Instance().Signal([&] { calls = given; });
}

void OutputDevice::Unplug() {
    Vor::LoopCore::Instance().Signal([&] { plugged = false; });
    Enable(false);
}

void OutputDevice::OnScanChanged() {
    const std::lock_guard guard(mutex);
    ChangePorts([](OutputPort& port, const ScanClock::Moment& moment) { port.OnScanChanged(moment); });
}

void OutputDevice::OnFrame() {
    const std::lock_guard guard(mutex);
    ChangePorts([](OutputPort& port, const ScanClock::Moment& moment) { port.OnFrame(moment); });
}

OutputDevice::DeviceState OutputDevice::State(std::size_t edges) const {
    const std::lock_guard guard(mutex);
    DeviceState state{.serialNumber = serialNumber, .enabled = enabled, .ports = {}};
    for (const OutputPort& port : ports) {
        state.ports.push_back({.settings = port.Settings(),
                               .on = port.IsOn(),
                               .high = port.IsHigh(),
                               .counts = port.ReadCounts(),
                               .lastRequest = port.LastRequest(),
                               .edges = port.Edges(edges)});
    }
    return state;
}

} // namespace Sensor::Io
