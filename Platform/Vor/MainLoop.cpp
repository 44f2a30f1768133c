#include "Vor/MainLoop.h"

#include "Vor/Exception.h"
#include "Vor/LoopCore.h"

#include <utility>

namespace Vor {

namespace {

LoopCore& Manual(MainLoop::Mode mode) {
    if (mode != MainLoop::Mode::Manual) {
        Throw(yERROR_STATE, "The main loop isn't driven by hand");
    }
    return LoopCore::Instance();
}

} // namespace

MainLoop::MainLoop(Mode mode)
    : mode(mode) {
    LoopCore::Instance().Claim(mode == Mode::Manual);
}

MainLoop::~MainLoop() {
    LoopCore::Instance().Unclaim();
}

void MainLoop::Run() {
    if (mode != Mode::Running) {
        Throw(yERROR_STATE, "The main loop is driven by hand");
    }
    LoopCore::Instance().Run();
}

void MainLoop::Stop() {
    LoopCore::Instance().Stop();
}

void MainLoop::Post(std::function<void()> call) {
    LoopCore::Instance().Post(std::move(call));
}

bool MainLoop::Step() {
    return Manual(mode).Step();
}

std::size_t MainLoop::RunReady() {
    return Manual(mode).RunReady();
}

std::size_t MainLoop::Advance(std::chrono::microseconds time) {
    return Manual(mode).Advance(time);
}

void MainLoop::Elapse(std::chrono::microseconds time) {
    Manual(mode).Elapse(time);
}

bool MainLoop::WaitReady(std::chrono::milliseconds deadline) {
    return Manual(mode).WaitReady(deadline);
}

} // namespace Vor
