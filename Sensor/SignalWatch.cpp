#include "Sensor/SignalWatch.h"

#include "Vor/Exception.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace Sensor {

namespace {

constexpr int Forever = -1;

} // namespace

SignalWatch::Descriptor::Descriptor(int descriptor)
    : descriptor(descriptor) {
    if (descriptor < 0) {
        Vor::Throw(yERROR, "Signals can't be watched (%s).", std::strerror(errno));
    }
}

SignalWatch::Descriptor::~Descriptor() {
    close(descriptor);
}

SignalWatch::Block::Block() {
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, &former);
}

SignalWatch::Block::~Block() {
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

SignalWatch::SignalWatch(std::function<void()> stop, std::chrono::milliseconds patience, std::function<void()> overdue,
                         std::function<void()> hangUp)
    : stop(std::move(stop))
    , patience(patience)
    , overdue(std::move(overdue))
    , hangUp(std::move(hangUp))
    , signalled(signalfd(-1, &block.Signals(), SFD_CLOEXEC | SFD_NONBLOCK))
    , ended(eventfd(0, EFD_CLOEXEC))
    , thread("Signals", [this] { return Run(); }) {}

SignalWatch::~SignalWatch() {
    const std::uint64_t one = 1;
    // It can't fail: the counter is 0.
    [[maybe_unused]] const ssize_t written = write(ended.Get(), &one, sizeof(one));
}

void SignalWatch::Trigger() {
    kill(getpid(), SIGTERM);
}

yStatus SignalWatch::Run() {
    bool ending = false;
    while (!WaitForStop(Forever, ending)) {
        if (ending) {
            return yOK;
        }
    }
    stop();
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!ending) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        if (left <= 0) {
            overdue();
            return yOK;
        }
        WaitForStop(static_cast<int>(left), ending);
    }
    return yOK;
}

bool SignalWatch::WaitForStop(int timeoutMilliseconds, bool& ending) {
    std::array<pollfd, 2> watched{pollfd{signalled.Get(), POLLIN, 0}, pollfd{ended.Get(), POLLIN, 0}};
    int ready = 0;
    do {
        ready = poll(watched.data(), watched.size(), timeoutMilliseconds);
    } while (ready < 0 && errno == EINTR);
    ending = (watched[1].revents & POLLIN) != 0;
    signalfd_siginfo info{};
    if ((watched[0].revents & POLLIN) == 0 || read(signalled.Get(), &info, sizeof(info)) != sizeof(info)) {
        return false;
    }
    if (info.ssi_signo == SIGHUP) {
        hangUp();
        return false;
    }
    return true;
}

} // namespace Sensor
