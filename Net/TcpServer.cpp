#include "Net/TcpServer.h"

#include "Net/Asio/EndpointText.h"
#include "Net/Asio/Loop.h"
#include "Net/Asio/TcpConnection.h"
#include "Net/Asio/TcpListen.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"

#include <algorithm>
#include <cstddef>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/steady_timer.hpp>

namespace Net {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

namespace {

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

/// What the operations under way refer to. For the network thread.
class TcpServer::Impl : public std::enable_shared_from_this<Impl> {
public:
    Impl(NetThread& thread, TcpCounters& counters, const TcpServerSettings& wanted, SessionMaker makeSession,
         Wakeup* wakeup, RefusalMaker makeRefusal)
        : thread(thread)
        , io(thread.OwnLoop().io)
        , settings(wanted)
        , counters(counters)
        , makeSession(std::move(makeSession))
        , makeRefusal(std::move(makeRefusal))
        , wakeup(wakeup)
        , acceptor(Listen(io, wanted)) {}

    void Start();
    void End();
    void Update(const TcpServerSettings& next, const std::function<void()>& applied);
    bool IsListening() const { return acceptor.is_open(); }
    tcp::endpoint Endpoint() const {
        error_code ignored;
        return acceptor.local_endpoint(ignored);
    }

private:
    using ConnectionList = std::list<std::shared_ptr<TcpConnection>>;

    bool IsAt(const TcpServerSettings& wanted) const;
    void Move(const TcpServerSettings& next);
    void StartAccept();
    void Accepted(const error_code& error, tcp::socket socket);
    void Serve(tcp::socket socket);
    /// Makes a connection of the list, which leaves it when it is closed.
    void Open(ConnectionList& list, tcp::socket socket, const NetworkAddress& peer, const std::string& name,
              std::unique_ptr<ITcpSession> session);
    /// Why there is no place for a client; empty when there is one.
    std::string LackOfPlace(const NetworkAddress& peer);
    /// Closes a connection in favour of a client of another address, if it may.
    bool FreePlace();
    void ApplySettings();
    void CloseAll(const char* reason);
    /// Writes to the user's log when clients can't connect, and when they can again.
    void ReportAccept(const error_code& error);
    void WaitForWakeup();
    /// Calls `work` for each connection of a list, each of which may close itself meanwhile.
    template <typename Work>
    void ForEach(ConnectionList& list, const Work& work);

    NetThread& thread;
    asio::io_context& io;
    TcpServerSettings settings;
    TcpCounters& counters;
    SessionMaker makeSession;
    RefusalMaker makeRefusal;
    Wakeup* const wakeup;
    asio::posix::stream_descriptor wakeupDescriptor{io};
    tcp::acceptor acceptor;
    unsigned listenGeneration = 0; ///< an accept of a former acceptor is ignored
    asio::steady_timer acceptRetryTimer{io};
    error_code acceptFailure; ///< of the last accept
    ConnectionList connections;
    ConnectionList refused; ///< that are answered before they are closed
};

void TcpServer::Impl::Start() {
    if (wakeup != nullptr) {
        const int descriptor = dup(wakeup->Descriptor());
        if (descriptor < 0) {
            Vor::Throw(yERROR, "there are too many open files");
        }
        wakeupDescriptor.assign(descriptor);
        WaitForWakeup();
    }
    StartAccept();
}

void TcpServer::Impl::End() {
    error_code ignored;
    ++listenGeneration;
    acceptor.close(ignored);
    acceptRetryTimer.cancel();
    wakeupDescriptor.close(ignored);
    CloseAll("the server ends");
}

void TcpServer::Impl::Update(const TcpServerSettings& next, const std::function<void()>& applied) {
    if (!IsAt(next)) {
        Move(next);
    }
    settings = next;
    applied();
    ApplySettings();
}

bool TcpServer::Impl::IsAt(const TcpServerSettings& wanted) const {
    return acceptor.is_open() && wanted.address == settings.address &&
           (wanted.port == settings.port || wanted.port == Endpoint().port());
}

// Stops listening at the former place first, since the new one may include it: the same port on all addresses.
void TcpServer::Impl::Move(const TcpServerSettings& next) {
    error_code ignored;
    // Port 0 would be another free port, should the server have to return.
    TcpServerSettings former = settings;
    former.port = Endpoint().port();
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
    CloseAll("the server moves");
    StartAccept();
}

void TcpServer::Impl::StartAccept() {
    acceptor.async_accept(
        [self = shared_from_this(), generation = listenGeneration](const error_code& error, tcp::socket socket) {
            if (generation == self->listenGeneration) {
                self->Accepted(error, std::move(socket));
            }
        });
}

void TcpServer::Impl::Accepted(const error_code& error, tcp::socket socket) {
    ReportAccept(error);
    if (error) { // the connections that there are go on
        acceptRetryTimer.expires_after(AcceptRetryPeriod);
        acceptRetryTimer.async_wait(
            [self = shared_from_this(), generation = listenGeneration](const error_code& cancelled) {
                if (!cancelled && generation == self->listenGeneration) {
                    self->StartAccept();
                }
            });
        return;
    }
    StartAccept();
    Serve(std::move(socket));
}

// A socket that isn't served closes itself.
void TcpServer::Impl::Serve(tcp::socket socket) {
    const auto peer = PeerOf(socket);
    if (!peer) {
        return;
    }
    error_code ignored;
    const std::string name = EndpointText(socket.remote_endpoint(ignored));
    const bool mayRead = Contain(settings.readers, *peer);
    const std::string lack = mayRead ? LackOfPlace(*peer) : "";
    if (mayRead && lack.empty()) {
        if (auto session = makeSession(Contain(settings.writers, *peer))) {
            Open(connections, std::move(socket), *peer, name, std::move(session));
            return;
        }
    }
    counters.refused.fetch_add(1, std::memory_order_relaxed);
    // Without the port: a flood of clients gives equal entries.
    const std::string address = name.substr(0, name.rfind(':'));
    const char* const reason = mayRead ? "the service has no session for it" : "its network may not read";
    Vor::LogInfo("A client from %s is refused: %s", address, lack.empty() ? reason : lack);
    if (!lack.empty() && makeRefusal && refused.size() < MaxRefused) {
        Open(refused, std::move(socket), *peer, address + " (refused)", makeRefusal());
    }
}

void TcpServer::Impl::Open(ConnectionList& list, tcp::socket socket, const NetworkAddress& peer,
                           const std::string& name, std::unique_ptr<ITcpSession> session) {
    session->SetPeer(peer);
    list.push_back(std::make_shared<TcpConnection>(std::move(socket), peer, name, counters, std::move(session),
                                                   settings.idleTimeOut));
    counters.connected.store(connections.size(), std::memory_order_relaxed);
    const auto position = std::prev(list.end());
    const auto connection = *position; // stays if it closes itself in Start
    connection->Start([this, &list, position] {
        list.erase(position);
        counters.connected.store(connections.size(), std::memory_order_relaxed);
    });
}

std::string TcpServer::Impl::LackOfPlace(const NetworkAddress& peer) {
    const auto own = static_cast<std::size_t>(std::ranges::count(connections, peer, &TcpConnection::Peer));
    const std::size_t most = Contain(settings.uncounted, peer) ? 0 : settings.maxConnectionsPerAddress;
    if (most > 0 && own >= most) {
        return "its address has " + std::to_string(own) + " connections, as many as one address may have";
    }
    const std::size_t all = connections.size();
    if (all >= settings.maxConnections && (own > 0 || !FreePlace())) {
        return "there are " + std::to_string(all) + " connections, as many as there may be";
    }
    return "";
}

bool TcpServer::Impl::FreePlace() {
    std::map<NetworkAddress, std::vector<std::shared_ptr<TcpConnection>>> byAddress;
    for (const auto& connection : connections) {
        if (!Contain(settings.uncounted, connection->Peer())) {
            byAddress[connection->Peer()].push_back(connection);
        }
    }
    const auto most = std::ranges::max_element(byAddress, {}, [](const auto& entry) { return entry.second.size(); });
    if (most == byAddress.end() || most->second.size() < 2) {
        return false;
    }
    (*std::ranges::min_element(most->second, {}, &TcpConnection::LastActive))
        ->Close("a client of another address gets its place");
    return true;
}

template <typename Work>
void TcpServer::Impl::ForEach(ConnectionList& list, const Work& work) {
    thread.AssertCurrent();
    for (auto next = list.begin(); next != list.end();) {
        const auto connection = *next++;
        work(*connection);
    }
}

void TcpServer::Impl::ApplySettings() {
    ForEach(connections, [this](TcpConnection& connection) {
        if (Contain(settings.readers, connection.Peer())) {
            connection.SetMayWrite(Contain(settings.writers, connection.Peer()));
            connection.SetIdleTimeOut(settings.idleTimeOut);
        } else {
            connection.Close("its network may no longer read");
        }
    });
}

void TcpServer::Impl::CloseAll(const char* reason) {
    for (ConnectionList* const list : {&connections, &refused}) {
        ForEach(*list, [reason](TcpConnection& connection) { connection.Close(reason); });
    }
}

// A client that has left before it was accepted is no failure of the server.
void TcpServer::Impl::ReportAccept(const error_code& error) {
    if (error == acceptFailure || error == asio::error::connection_aborted) {
        return;
    }
    acceptFailure = error;
    if (error) {
        Vor::LogUser(Vor::UserError, "VorControl", "Clients can't connect to %1$s: %2$s.", EndpointText(Endpoint()),
                     error.message());
    } else {
        Vor::LogUser(Vor::UserInfo, "VorControl", "Clients can connect to %1$s again.", EndpointText(Endpoint()));
    }
}

void TcpServer::Impl::WaitForWakeup() {
    wakeupDescriptor.async_wait(
        asio::posix::stream_descriptor::wait_read, [self = shared_from_this()](const error_code& error) {
            if (!error && self->wakeupDescriptor.is_open()) {
                self->wakeup->Clear();
                self->WaitForWakeup();
                self->ForEach(self->connections, [](TcpConnection& connection) { connection.Wake(); });
            }
        });
}

TcpServer::TcpServer(NetThread& thread, TcpCounters& counters, const TcpServerSettings& settings,
                     SessionMaker makeSession, Wakeup* wakeup, RefusalMaker makeRefusal)
    : thread(thread)
    , impl(thread.Call([&] {
        auto made =
            std::make_shared<Impl>(thread, counters, settings, std::move(makeSession), wakeup, std::move(makeRefusal));
        made->Start();
        return made;
    })) {}

TcpServer::~TcpServer() {
    thread.Call([this] { impl->End(); });
}

void TcpServer::Update(const TcpServerSettings& settings, const std::function<void()>& applied) {
    thread.Call([&] { impl->Update(settings, applied); });
}

bool TcpServer::IsListening() const {
    return thread.Call([this] { return impl->IsListening(); });
}

std::uint16_t TcpServer::Port() const {
    return thread.Call([this] { return impl->Endpoint().port(); });
}

std::string TcpServer::Url() const {
    return "tcp://" + EndpointText(thread.Call([this] { return impl->Endpoint(); }));
}

} // namespace Net
