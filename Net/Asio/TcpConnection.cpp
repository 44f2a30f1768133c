#include "Net/Asio/TcpConnection.h"

#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"

namespace Net {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

namespace {

/// Bounds what the kernel keeps of the replies to a client that doesn't read them.
constexpr int SendBufferSize = 64 * 1024;
/// After that many bytes it is the next connection's turn.
constexpr std::size_t MaxBurst = std::size_t{1024} * 1024;

} // namespace

TcpConnection::TcpConnection(tcp::socket accepted, const NetworkAddress& peer, std::string name, TcpCounters& counters,
                             std::unique_ptr<ITcpSession> session, std::chrono::milliseconds idleTimeOut)
    : socket(std::move(accepted))
    , timer(socket.get_executor())
    , peer(peer)
    , name(std::move(name))
    , counters(counters)
    , session(std::move(session))
    , idleTimeOut(idleTimeOut) {}

void TcpConnection::Start(std::function<void()> whenClosed) {
    closed = std::move(whenClosed);
    Vor::LogInfo("Client %s has connected", name);
    error_code ignored;
    socket.non_blocking(true, ignored);
    socket.set_option(tcp::no_delay(true), ignored);
    socket.set_option(asio::socket_base::keep_alive(true), ignored);
    socket.set_option(asio::socket_base::send_buffer_size(SendBufferSize), ignored);
    Pump();
}

void TcpConnection::Close(const std::string& reason) {
    if (!IsOpen()) {
        return;
    }
    Vor::LogInfo("Client %s has left: %s", name, reason);
    const bool isAborted = session->IsAborted();
    session.reset();
    timer.cancel();
    closed(); // first, so that a client that notices the end is no longer counted
    error_code ignored;
    if (isAborted) { // an end in order isn't a reset
        socket.set_option(asio::socket_base::linger(true, 0), ignored);
    } else {
        socket.shutdown(tcp::socket::shutdown_both, ignored);
    }
    socket.close(ignored);
}

template <typename Work>
void TcpConnection::Guarded(const Work& work) {
    if (!Vor::RunLogged("EXCEPTION THROWN: ", work)) {
        Close("its session has failed");
    }
}

void TcpConnection::Wake() {
    if (IsOpen() && session->WantsWakeup()) {
        Pump();
    }
}

void TcpConnection::Pump() {
    if (!IsOpen()) {
        return;
    }
    Guarded([this] {
        Exchange();
        if (IsOpen()) {
            Watch();
        }
    });
}

void TcpConnection::Exchange() {
    std::size_t burst = 0;
    for (;;) {
        if ((!blocked || session->ReadsAhead()) && session->Process() > 0) {
            lastRequest = Clock::now();
        }
        if (session->IsAborted()) {
            Close(session->EndReason());
            return;
        }
        if (blocked) {
            break;
        }
        const auto replies = session->Replies();
        if (replies.empty()) {
            if (session->Broken()) {
                Close(session->EndReason());
                return;
            }
            if (inputEnded && !session->IsWorking()) {
                Close("it has closed the connection");
                return;
            }
            if (session->HasFinished() && !outputEnded) {
                error_code ignored;
                socket.shutdown(tcp::socket::shutdown_send, ignored);
                outputEnded = true;
            }
            break;
        }
        error_code error;
        const std::size_t sent = socket.write_some(asio::buffer(replies.data(), replies.size()), error);
        if (error == asio::error::would_block) {
            WaitUntilSendable();
            break;
        }
        if (error) {
            Close(error.message());
            return;
        }
        counters.bytesOut.fetch_add(sent, std::memory_order_relaxed);
        session->Sent(sent);
        if (session->IsSubscribed()) {
            lastSent = Clock::now();
        }
        if (session->Replies().empty()) {
            session->Drained();
        }
        burst += sent;
        if (burst >= MaxBurst) {
            WaitUntilSendable();
            break;
        }
    }
    if (!blocked || session->ReadsAhead()) {
        Receive();
    }
}

void TcpConnection::WaitFor(tcp::socket::wait_type what, bool& waiting, void (TcpConnection::*ready)()) {
    waiting = true;
    socket.async_wait(what, [self = shared_from_this(), &waiting, ready](const error_code& error) {
        waiting = false;
        if (!self->IsOpen()) {
            return;
        }
        if (error) {
            self->Close(error.message());
        } else {
            self->Guarded([&] { (self.get()->*ready)(); });
        }
    });
}

// Waits, then reads: while it waits, the session may move its received bytes.
void TcpConnection::Receive() {
    if (!receiving && !inputEnded && !session->Broken() && !session->ReceiveSpace().empty()) {
        WaitFor(tcp::socket::wait_read, receiving, &TcpConnection::Read);
    }
}

void TcpConnection::Read() {
    const auto space = session->ReceiveSpace();
    if (!space.empty()) {
        error_code error;
        const std::size_t size = socket.read_some(asio::buffer(space.data(), space.size()), error);
        if (error == asio::error::eof) {
            inputEnded = true;
            session->InputEnded();
        } else if (error && error != asio::error::would_block) {
            Close(error.message());
            return;
        }
        counters.bytesIn.fetch_add(size, std::memory_order_relaxed);
        session->Received(size);
    }
    Pump();
}

void TcpConnection::WaitUntilSendable() {
    WaitFor(tcp::socket::wait_write, blocked, &TcpConnection::Pump);
}

void TcpConnection::SetIdleTimeOut(std::chrono::milliseconds value) {
    idleTimeOut = value;
    Guarded([this] { Watch(); });
}

std::optional<TcpConnection::Clock::time_point> TcpConnection::Deadline() const {
    if (const auto own = session->Deadline()) {
        return own;
    }
    if (idleTimeOut.count() == 0) {
        return std::nullopt;
    }
    return lastRequest + idleTimeOut;
}

// A deadline that moves on needs nothing: the timer looks at it when it ends.
void TcpConnection::Watch() {
    const auto deadline = Deadline();
    if (!deadline || *deadline >= watchedUntil) {
        return;
    }
    watchedUntil = *deadline;
    timer.expires_at(watchedUntil);
    timer.async_wait([self = shared_from_this()](const error_code& cancelled) {
        if (!cancelled && self->IsOpen()) {
            self->watchedUntil = Clock::time_point::max();
            self->Guarded([&self] { self->CheckDeadline(); });
        }
    });
}

void TcpConnection::CheckDeadline() {
    const auto now = Clock::now();
    const auto deadline = Deadline();
    if (deadline && *deadline <= now) {
        if (!session->Deadline()) {
            if (!MayBeSilent(now - idleTimeOut)) {
                Close("it was idle for " + std::to_string(idleTimeOut.count()) + " ms");
                return;
            }
            lastRequest = now;
        } else if (!session->Expire() || session->Deadline().value_or(Clock::time_point::max()) <= now) {
            Close("its session's deadline has passed");
            return;
        }
    }
    Pump();
}

// Whether the connection stays open although the client made no request since `oldest`.
bool TcpConnection::MayBeSilent(Clock::time_point oldest) const {
    return session->IsWorking() || (session->IsSubscribed() && (session->Replies().empty() || lastSent > oldest));
}

} // namespace Net
