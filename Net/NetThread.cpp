#include "Net/NetThread.h"

#include "Net/Asio/Loop.h"
#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "yApi/yStatus.h"

#include <algorithm>

#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

namespace Net {

namespace asio = boost::asio;
using Clock = std::chrono::steady_clock;

namespace {

yStatus Run(asio::io_context& io) {
    const auto work = asio::make_work_guard(io);
    while (!io.stopped()) {
        Vor::RunLogged("EXCEPTION THROWN: ", [&] { io.run(); });
    }
    return yOK;
}

/// Runs at fixed times.
class Repetition : public std::enable_shared_from_this<Repetition> {
public:
    Repetition(asio::io_context& io, std::chrono::milliseconds period, std::function<void()> work)
        : timer(io, Clock::now())
        , period(period)
        , work(std::move(work)) {}

    void Wait() {
        timer.async_wait([self = shared_from_this()](const boost::system::error_code& cancelled) {
            if (!cancelled) {
                self->timer.expires_at(std::max(self->timer.expiry() + self->period, Clock::now()));
                self->Wait();
                self->work();
            }
        });
    }

private:
    asio::steady_timer timer;
    const std::chrono::milliseconds period;
    const std::function<void()> work;
};

} // namespace

NetThread::NetThread(const char* name)
    : loop(std::make_unique<Loop>(name)) {
    loop->thread = Vor::NamedThread(name, [this] {
        loop->id = std::this_thread::get_id();
        return Run(loop->io);
    });
}

NetThread::~NetThread() {
    loop->io.stop();
    loop->thread.Reset();
}

const std::string& NetThread::Name() const {
    return loop->name;
}

bool NetThread::IsCurrent() const {
    return loop->id.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

void NetThread::AssertCurrent() const {
    if (!IsCurrent()) {
        Vor::Throw(yERROR_STATE, "called on another thread than \"%s\"", loop->name);
    }
}

void NetThread::Post(std::function<void()> work) {
    asio::post(loop->io, std::move(work));
}

void NetThread::Repeat(std::chrono::milliseconds period, std::function<void()> work) {
    Post([repetition = std::make_shared<Repetition>(loop->io, period, std::move(work))] { repetition->Wait(); });
}

} // namespace Net
