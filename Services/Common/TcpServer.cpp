#include "Services/Common/TcpServer.h"

#include "Services/Common/TcpListen.h"
#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Threads/NamedThread.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <future>
#include <list>
#include <optional>
#include <type_traits>
#include <unistd.h>
#include <utility>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

namespace Services::Common {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using Clock = std::chrono::steady_clock;

/// Bounds what the kernel keeps of the replies to a client that doesn't read them.
constexpr int SendBufferSize = 64 * 1024;
constexpr std::chrono::milliseconds AcceptRetryPeriod{100};

/// Nothing when the client has already closed the connection.
std::optional<NetworkAddress> PeerOf(const tcp::socket& socket) {
    error_code error;
    const asio::ip::address address = socket.remote_endpoint(error).address();
    if (error) {
        return std::nullopt;
    }
    return address.is_v4() ? asio::ip::make_address_v6(asio::ip::v4_mapped, address.to_v4()).to_bytes()
                           : address.to_v6().to_bytes();
}

} // namespace

class TcpServer::Impl {
public:
    Impl(const char* threadName, TcpCounters& counters, const TcpServerSettings& settings, Hooks hooks, Wakeup* wakeup);
    ~Impl();

    void Update(const TcpServerSettings& next, const std::function<void()>& applied);
    bool IsListening() {
        return OnThread([this] { return acceptor.is_open(); });
    }
    tcp::endpoint Endpoint() {
        return OnThread([this] {
            error_code ignored;
            return acceptor.local_endpoint(ignored);
        });
    }

private:
    class Connection;
    using ConnectionList = std::list<std::shared_ptr<Connection>>;

    static yStatus Run(asio::io_context& io);
    /// Runs `work` on the network thread and waits for its result or exception.
    template <typename Work>
    auto OnThread(Work work) -> decltype(work());

    bool IsAt(const TcpServerSettings& wanted) const;
    void Move(const TcpServerSettings& next);
    void StartAccept();
    void Accepted(const error_code& error, tcp::socket socket);
    void ApplyNetworks();
    void WaitForWakeup();
    void PumpAll();
    void ArmIdleTimer();
    void CloseIdle();
    void Remove(ConnectionList::iterator position);
    void Poll();

    asio::io_context io{1};
    /// The rest belongs to the network thread while that runs.
    TcpServerSettings settings;
    TcpCounters& counters;
    const Hooks hooks;
    Wakeup* const wakeup;
    asio::posix::stream_descriptor wakeupDescriptor{io};
    tcp::acceptor acceptor;
    unsigned listenGeneration = 0; ///< an accept of a former acceptor is ignored
    asio::steady_timer acceptRetryTimer{io};
    asio::steady_timer idleTimer{io};
    asio::steady_timer pollTimer{io};
    ConnectionList connections; ///< ordered by their last request, the oldest first
    Vor::NamedThread thread;
};

/// One client. It lives as long as the server's list or an operation under way refers to it.
class TcpServer::Impl::Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(Impl& server, tcp::socket accepted, const NetworkAddress& peer)
        : server(server)
        , socket(std::move(accepted))
        , peer(peer)
        , session(server.hooks.makeSession(Contain(server.settings.writers, peer)))
        , lastRequest(Clock::now())
        , lastSent(lastRequest) {}

    void Start(ConnectionList::iterator place) {
        position = place;
        error_code ignored;
        socket.non_blocking(true, ignored);
        socket.set_option(tcp::no_delay(true), ignored);
        socket.set_option(asio::socket_base::keep_alive(true), ignored);
        socket.set_option(asio::socket_base::send_buffer_size(SendBufferSize), ignored);
        Receive();
    }

    Clock::time_point LastRequest() const { return lastRequest; }

    /// The idle time starts anew.
    void Touch() {
        lastRequest = Clock::now();
        server.connections.splice(server.connections.end(), server.connections, position);
    }

    /// Whether the connection stays open although the client made no request since `oldest`.
    bool MayBeSilent(Clock::time_point oldest) const {
        return session->IsWorking() || (session->IsSubscribed() && (session->Replies().empty() || lastSent > oldest));
    }

    /// Applies changed networks.
    void ApplyNetworks() {
        session->SetMayWrite(Contain(server.settings.writers, peer));
        if (!Contain(server.settings.readers, peer)) {
            Close();
        }
    }

    void Close() {
        if (!socket.is_open()) {
            return;
        }
        error_code ignored;
        socket.shutdown(tcp::socket::shutdown_both, ignored);
        socket.close(ignored);
        server.Remove(position);
    }

    /// Answers the requests that were received and sends the replies. Receives more only when all replies are sent.
    void Pump() {
        if (!socket.is_open() || blocked) {
            return;
        }
        for (;;) {
            if (session->Process() > 0) {
                Touch();
            }
            const auto replies = session->Replies();
            if (replies.empty()) {
                break;
            }
            error_code error;
            const std::size_t sent = socket.write_some(asio::buffer(replies.data(), replies.size()), error);
            if (error == asio::error::would_block) {
                WaitUntilSendable();
                return;
            }
            if (error) {
                Close();
                return;
            }
            session->Sent(sent);
            if (session->IsSubscribed()) {
                lastSent = Clock::now();
            }
        }
        if (session->Broken() || (inputEnded && !session->IsWorking())) {
            Close();
        } else {
            Receive();
        }
    }

private:
    /// Waits, then reads: while it waits, the session may move its received bytes.
    void Receive() {
        if (receiving || inputEnded || session->ReceiveSpace().empty()) {
            return;
        }
        receiving = true;
        socket.async_wait(tcp::socket::wait_read, [self = this->shared_from_this()](const error_code& error) {
            self->receiving = false;
            if (!self->socket.is_open()) {
                return;
            }
            if (error) {
                self->Close();
            } else {
                self->Read();
            }
        });
    }

    void Read() {
        const auto space = session->ReceiveSpace();
        if (!space.empty()) {
            error_code error;
            const std::size_t size = socket.read_some(asio::buffer(space.data(), space.size()), error);
            if (error == asio::error::eof) {
                inputEnded = true;
            } else if (error && error != asio::error::would_block) {
                Close();
                return;
            }
            session->Received(size);
        }
        Pump();
    }

    void WaitUntilSendable() {
        blocked = true;
        socket.async_wait(tcp::socket::wait_write, [self = this->shared_from_this()](const error_code& error) {
            self->blocked = false;
            if (!self->socket.is_open()) {
                return;
            }
            if (error) {
                self->Close();
            } else {
                self->Pump();
            }
        });
    }

    Impl& server;
    tcp::socket socket;
    const NetworkAddress peer;
    const std::unique_ptr<ITcpSession> session;
    Clock::time_point lastRequest;
    Clock::time_point lastSent;
    bool receiving = false;
    bool blocked = false;    ///< the socket's send buffer is full
    bool inputEnded = false; ///< the client has closed its side
    ConnectionList::iterator position;
};

TcpServer::Impl::Impl(const char* threadName, TcpCounters& counters, const TcpServerSettings& wanted, Hooks called,
                      Wakeup* wakeup)
    : settings(wanted)
    , counters(counters)
    , hooks(std::move(called))
    , wakeup(wakeup)
    , acceptor(Listen(io, wanted)) {
    StartAccept();
    if (wakeup != nullptr) {
        wakeupDescriptor.assign(dup(wakeup->Descriptor()));
        WaitForWakeup();
    }
    if (hooks.poll) {
        pollTimer.expires_at(Clock::now());
        Poll();
    }
    thread = Vor::NamedThread(threadName, [this] { return Run(io); });
}

TcpServer::Impl::~Impl() {
    io.stop();
    thread.Reset();
    counters.connected.store(0, std::memory_order_relaxed);
}

yStatus TcpServer::Impl::Run(asio::io_context& io) {
    const auto work = asio::make_work_guard(io);
    while (!io.stopped()) {
        try {
            io.run();
        } catch (const std::exception& e) {
            Vor::LogThrown(e, "EXCEPTION THROWN: ");
        }
    }
    return yOK;
}

template <typename Work>
auto TcpServer::Impl::OnThread(Work work) -> decltype(work()) {
    std::packaged_task<decltype(work())()> task(std::move(work));
    auto result = task.get_future();
    asio::post(io, [&task] { task(); });
    return result.get();
}

void TcpServer::Impl::Update(const TcpServerSettings& next, const std::function<void()>& applied) {
    OnThread([this, &next, &applied] {
        if (!IsAt(next)) {
            Move(next);
        }
        settings = next;
        applied();
        ApplyNetworks();
        ArmIdleTimer();
    });
}

bool TcpServer::Impl::IsAt(const TcpServerSettings& wanted) const {
    error_code ignored;
    return acceptor.is_open() && wanted.address == settings.address &&
           (wanted.port == settings.port || wanted.port == acceptor.local_endpoint(ignored).port());
}

// Stops listening at the former place first, since the new one may include it: the same port on all addresses.
void TcpServer::Impl::Move(const TcpServerSettings& next) {
    error_code ignored;
    // Port 0 would be another free port, should the server have to return.
    TcpServerSettings former = settings;
    former.port = acceptor.local_endpoint(ignored).port();
    const bool wasListening = acceptor.is_open();
    ++listenGeneration;
    acceptor.close(ignored);
    try {
        acceptor = Listen(io, next);
    } catch (const std::exception&) {
        if (wasListening) {
            acceptor = Listen(io, former);
            StartAccept();
        }
        throw;
    }
    while (!connections.empty()) {
        connections.front()->Close();
    }
    StartAccept();
}

void TcpServer::Impl::StartAccept() {
    acceptor.async_accept([this, generation = listenGeneration](const error_code& error, tcp::socket socket) {
        if (generation == listenGeneration) {
            Accepted(error, std::move(socket));
        }
    });
}

void TcpServer::Impl::Accepted(const error_code& error, tcp::socket socket) {
    if (error) { // too many open files, for instance: the connections that there are go on
        acceptRetryTimer.expires_after(AcceptRetryPeriod);
        acceptRetryTimer.async_wait([this, generation = listenGeneration](const error_code& cancelled) {
            if (!cancelled && generation == listenGeneration) {
                StartAccept();
            }
        });
        return;
    }
    StartAccept();
    const auto peer = PeerOf(socket);
    if (!peer) {
        return;
    }
    if (connections.size() >= settings.maxConnections || !Contain(settings.readers, *peer)) {
        counters.refused.fetch_add(1, std::memory_order_relaxed);
        return; // `socket` closes itself
    }
    connections.push_back(std::make_shared<Connection>(*this, std::move(socket), *peer));
    counters.connected.store(connections.size(), std::memory_order_relaxed);
    connections.back()->Start(std::prev(connections.end()));
    if (connections.size() == 1) {
        ArmIdleTimer();
    }
}

void TcpServer::Impl::ApplyNetworks() {
    for (auto next = connections.begin(); next != connections.end();) {
        const auto connection = *next++;
        connection->ApplyNetworks();
    }
}

void TcpServer::Impl::WaitForWakeup() {
    wakeupDescriptor.async_wait(asio::posix::stream_descriptor::wait_read, [this](const error_code& error) {
        if (error) {
            return;
        }
        wakeup->Clear();
        WaitForWakeup();
        PumpAll();
    });
}

void TcpServer::Impl::PumpAll() {
    for (auto next = connections.begin(); next != connections.end();) {
        const auto connection = *next++;
        connection->Pump();
    }
}

void TcpServer::Impl::Remove(ConnectionList::iterator position) {
    connections.erase(position);
    counters.connected.store(connections.size(), std::memory_order_relaxed);
}

// Polls at fixed times: a late poll doesn't delay the ones after it.
void TcpServer::Impl::Poll() {
    pollTimer.async_wait([this](const error_code& cancelled) {
        if (cancelled) {
            return;
        }
        pollTimer.expires_at(std::max(pollTimer.expiry() + PollPeriod, Clock::now()));
        Poll();
        hooks.poll();
    });
}

// The timer waits for the connection that has been idle longest. A request only moves its connection in the list.
void TcpServer::Impl::ArmIdleTimer() {
    if (settings.idleTimeOut.count() == 0 || connections.empty()) {
        idleTimer.cancel();
        return;
    }
    idleTimer.expires_at(connections.front()->LastRequest() + settings.idleTimeOut);
    idleTimer.async_wait([this](const error_code& cancelled) {
        if (!cancelled) {
            CloseIdle();
        }
    });
}

void TcpServer::Impl::CloseIdle() {
    const auto oldest = Clock::now() - settings.idleTimeOut;
    while (!connections.empty() && connections.front()->LastRequest() <= oldest) {
        const auto connection = connections.front();
        if (connection->MayBeSilent(oldest)) {
            connection->Touch();
        } else {
            connection->Close();
        }
    }
    ArmIdleTimer();
}

TcpServer::TcpServer(const char* threadName, TcpCounters& counters, const TcpServerSettings& settings, Hooks hooks,
                     Wakeup* wakeup)
    : impl(std::make_unique<Impl>(threadName, counters, settings, std::move(hooks), wakeup)) {}

TcpServer::~TcpServer() = default;

void TcpServer::Update(const TcpServerSettings& settings, const std::function<void()>& applied) {
    impl->Update(settings, applied);
}

bool TcpServer::IsListening() const {
    return impl->IsListening();
}

std::uint16_t TcpServer::Port() const {
    return impl->Endpoint().port();
}

std::string TcpServer::Url() const {
    const tcp::endpoint endpoint = impl->Endpoint();
    const std::string address = endpoint.address().to_string();
    return "tcp://" + (endpoint.address().is_v6() ? "[" + address + "]" : address) + ":" +
           std::to_string(endpoint.port());
}

} // namespace Services::Common
