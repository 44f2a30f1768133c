#include "Sensor/Io/OutputPort.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Sensor::Io {

OutputPort::OutputPort(std::shared_ptr<ChangeCount> changes)
    : changes(std::move(changes)) {}

void OutputPort::Configure(const PortSettings& given, const Moment& moment) {
    RunDue(moment);
    const bool behavesOtherwise = given.behaviour != settings.behaviour;
    settings = given;
    NoteChange();
    SetLine(moment);
    if (behavesOtherwise) {
        LoseAll();
        Rest(moment);
    }
    SwitchByItself(moment);
}

void OutputPort::Enable(bool enable, const Moment& moment) {
    RunDue(moment);
    if (enable == enabled) {
        return;
    }
    enabled = enable;
    NoteChange();
    if (!enabled) {
        LoseAll();
    }
    SwitchByItself(moment);
}

OutputPort::Answer OutputPort::Ask(const Request& request, const Moment& moment) {
    RunDue(moment);
    ++counts.requests;
    last = request;
    NoteChange();
    const Answer answer = Schedule(request, moment);
    if (answer != Answer::Taken) {
        ++counts.refused;
    }
    return answer;
}

OutputPort::Answer OutputPort::Schedule(const Request& request, const Moment& moment) {
    if (settings.behaviour != PortBehaviour::SoftwareEvents) {
        return Answer::SwitchesByItself;
    }
    if (!enabled) {
        if (request.on != on) {
            return Answer::NotDriven;
        }
        ++counts.done;
        return Answer::Taken;
    }
    const bool isAtEncoder = settings.schedule == PortSchedule::Encoder && request.target > moment.encoder;
    const bool isAtTime = settings.schedule == PortSchedule::Time && std::cmp_greater(request.target, moment.time);
    if ((isAtEncoder || isAtTime) && !moment.scanning) {
        return Answer::NotScanning;
    }
    if ((isAtEncoder || isAtTime || settings.delay.count() > 0) && IsFull()) {
        return Answer::Full;
    }
    if (isAtEncoder) {
        atEncoder.emplace(request.target, request.on);
    } else if (isAtTime) {
        const auto ticks = static_cast<std::uint64_t>(request.target) - moment.time;
        const Time reached = moment.now + Vor::LoopCore::Duration(ticks);
        timed.emplace(reached + settings.delay, Timed{request.on, reached});
    } else {
        Begin(request.on, moment);
    }
    return Answer::Taken;
}

void OutputPort::Begin(bool wanted, const Moment& moment) {
    if (settings.delay.count() > 0) {
        timed.emplace(moment.now + settings.delay, Timed{wanted, moment.now});
    } else {
        CarryOut(wanted, moment);
    }
}

void OutputPort::CarryOut(bool wanted, const Moment& moment) {
    ++counts.done;
    NoteChange();
    if (wanted && settings.mode == PortMode::Pulse) {
        Pulse(moment);
    } else {
        pulseEnd.reset();
        Switch(wanted, moment);
    }
}

// One that is asked for while another one runs makes that longer.
void OutputPort::Pulse(const Moment& moment) {
    pulseEnd = moment.now + settings.pulseWidth;
    Switch(true, moment);
}

void OutputPort::OnScanChanged(const Moment& moment) {
    RunDue(moment);
    LoseTargets(moment);
    SwitchByItself(moment);
}

void OutputPort::OnFrame(const Moment& moment) {
    RunDue(moment);
    while (!atEncoder.empty() && atEncoder.begin()->first <= moment.encoder) {
        const bool wanted = atEncoder.begin()->second;
        atEncoder.erase(atEncoder.begin());
        Begin(wanted, moment);
    }
    if (enabled && settings.behaviour == PortBehaviour::Frames) {
        Pulse(moment);
    }
}

void OutputPort::RunDue(const Moment& moment) {
    while (const auto due = NextDue()) {
        if (*due > moment.now) {
            return;
        }
        if (pulseEnd == due) {
            pulseEnd.reset();
            Switch(false, moment);
        } else {
            const bool wanted = timed.begin()->second.on;
            timed.erase(timed.begin());
            CarryOut(wanted, moment);
        }
    }
}

std::optional<OutputPort::Time> OutputPort::NextDue() const {
    if (timed.empty()) {
        return pulseEnd;
    }
    const Time first = timed.begin()->first;
    return pulseEnd ? std::min(*pulseEnd, first) : first;
}

void OutputPort::LoseAll() {
    counts.lost += atEncoder.size() + timed.size();
    atEncoder.clear();
    timed.clear();
}

void OutputPort::LoseTargets(const Moment& moment) {
    counts.lost += atEncoder.size();
    atEncoder.clear();
    counts.lost += std::erase_if(timed, [&](const auto& entry) { return entry.second.reached > moment.now; });
    NoteChange();
}

// A pulse of an output that is kept as it was ends by itself.
void OutputPort::Rest(const Moment& moment) {
    if (settings.idle != PortIdle::Keep) {
        pulseEnd.reset();
        Switch(settings.idle == PortIdle::On, moment);
    }
}

void OutputPort::SwitchByItself(const Moment& moment) {
    if (!enabled || settings.behaviour == PortBehaviour::Unused) {
        Rest(moment);
    } else if (settings.behaviour == PortBehaviour::Scanning) {
        pulseEnd.reset();
        Switch(moment.scanning, moment);
    } else if (settings.behaviour == PortBehaviour::Frames && !pulseEnd) {
        Switch(false, moment);
    }
}

void OutputPort::Switch(bool wanted, const Moment& moment) {
    on = wanted;
    SetLine(moment);
}

void OutputPort::SetLine(const Moment& moment) {
    const bool wanted = on != settings.activeLow;
    if (wanted == high) {
        return;
    }
    high = wanted;
    NoteChange();
    ++(high ? counts.rises : counts.falls);
    edges.push_back({.number = counts.rises + counts.falls, .time = moment.time, .frame = moment.frame, .high = high});
    if (edges.size() > MaxEdges) {
        edges.pop_front();
    }
}

OutputPort::Counts OutputPort::ReadCounts() const {
    Counts read = counts;
    read.waiting = atEncoder.size() + timed.size();
    return read;
}

std::vector<OutputPort::Edge> OutputPort::Edges(std::size_t count) const {
    return {edges.end() - static_cast<std::ptrdiff_t>(std::min(count, edges.size())), edges.end()};
}

} // namespace Sensor::Io
