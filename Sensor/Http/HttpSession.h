#pragma once

#include "Net/ITcpSession.h"
#include "Net/Wakeup.h"
#include "Sensor/Http/IHttpHandler.h"
#include "Sensor/Http/RequestCounts.h"
#include "Sensor/Http/RequestParser.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace Sensor::Http {

struct HttpSessionSettings {
    RequestLimits limits;
    std::size_t maxPipelined = 8; ///< requests of one client that wait for their answers; the next one isn't read
    std::chrono::milliseconds headerTimeOut{10000}; ///< from the first byte of a request to the end of its header
    std::chrono::milliseconds bodyTimeOut{30000};   ///< from there to the end of its body
    /// Of a body that is taken in pieces: how long nothing of it may come. Its `bodyTimeOut` is longer by a second for
    /// each `bodyRate` bytes. The time for which it isn't read doesn't count.
    std::chrono::milliseconds pieceTimeOut{10000};
    std::size_t bodyRate = std::size_t{256} * 1024;
    std::chrono::milliseconds idleTimeOut{60000};  ///< between requests, and for a client that doesn't read its answer
    std::chrono::milliseconds lingerTimeOut{2000}; ///< for the client to close its side after the last answer
    RequestCounts* counts = nullptr;               ///< counts the answers, unless it is null; outlives the session
};

/// The server's side of one connection of HTTP/1.1 or HTTP/1.0 (RFC 9112).
///
/// GET, HEAD and OPTIONS without a body are handled while earlier requests are. Any other request is handled when those
/// before it are answered, and those after it when it is answered itself (RFC 9112, 9.3.2).
///
/// A request is the last one of its connection when it says so, when it is refused on the wire or by
/// IHttpHandler::CheckHeader, and when it is answered with a stream. Whatever the client sends after the last one is
/// dropped, requests as well.
class HttpSession : public Net::ITcpSession {
public:
    using Now = Clock::time_point (*)();

    /// `handler` must outlive the session. `wakeup` is the server's.
    HttpSession(const HttpSessionSettings& settings, IHttpHandler& handler, std::shared_ptr<Net::Wakeup> wakeup,
                Now now = &Clock::now);
    ~HttpSession() override;
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    /// Before the first Process: answers without a request, and reads none.
    void Refuse(HttpResponse response) { AnswerLast(std::move(response)); }

    void SetPeer(const Net::NetworkAddress& address) override;
    void SetMayWrite(bool) override {}
    std::span<unsigned char> ReceiveSpace() override;
    void Received(std::size_t count) override;
    void InputEnded() override;
    std::size_t Process() override;
    bool WantsWakeup() const override;
    std::span<const unsigned char> Replies() const override;
    void Sent(std::size_t count) override;
    bool Broken() const override;
    bool IsAborted() const override { return isAborted; }
    std::string EndReason() const override;
    bool HasFinished() const override;
    bool IsWorking() const override { return !exchanges.empty() && !ReadsPieces(); }
    bool IsSubscribed() const override { return stream != nullptr; }
    // So that a stream whose client doesn't read is looked after.
    bool ReadsAhead() const override { return stream != nullptr; }
    std::optional<Clock::time_point> Deadline() const override;
    bool Expire() override;

private:
    class Signal;
    class Answer;
    class AnswerTarget;

    /// A request that was handled, until its answer is sent.
    struct Exchange {
        std::shared_ptr<Answer> answer;
        std::string method = std::string(); ///< empty for what isn't a request
        bool isHead = false;
        bool isHttp11 = true;
        bool closes = true;
        bool isAlone = true; ///< no further request is handled before it is answered
    };

    /// What is read of the next request.
    enum class Step {
        Header,
        Check, ///< the header is whole, and the handler hasn't seen it
        Body,
        Pieces, ///< of the body, for `receiver`; the exchange has begun
    };

    /// What the connection waits for.
    enum class Phase { Request, Header, Body, Pieces, Answer, Reader, Stream, End };

    /// Reads on in what was received; false when nothing changed.
    bool ReadOn();
    void BeginCheck();
    bool CheckHeader();
    Responder BeginExchange();
    void Handle();
    void BeginPieces();
    bool ReadPieces();
    void EndPieces();
    /// Whether the client is read from for `receiver`. It changes within Process only.
    bool ReadsPieces() const { return step == Step::Pieces && !waitsForRoom; }
    void AnswerLast(HttpResponse response);
    void StopReading();
    /// Makes Replies of an answer, or of the stream; false when there is nothing, or no room.
    bool WriteOn();
    void Write(const Exchange& exchange, HttpResponse response);
    bool ReadStream();
    void Abort();
    Phase CurrentPhase() const;
    void UpdatePhase();
    Clock::time_point PiecesDeadline() const;

    const HttpSessionSettings settings;
    IHttpHandler& handler;
    const Now now;
    const std::shared_ptr<Signal> signal;
    std::string peerAddress;
    bool peerIsLoopback = false;

    const std::size_t inputCapacity;
    const std::unique_ptr<unsigned char[]> input;
    std::size_t inputBegin = 0;
    std::size_t inputEnd = 0;
    bool hasReadLast = false; ///< what is received is dropped
    std::size_t dropped = 0;  ///< bytes
    std::unique_ptr<RequestParser> parser;
    Step step = Step::Header;
    bool isAlone = false; ///< what `parser` reads must be handled alone

    std::shared_ptr<IBodyReceiver> receiver; ///< null unless the step is Pieces
    bool waitsForRoom = false;               ///< of `receiver`, or for the answer without one
    bool hasAsked = false;                   ///< the client for the body
    Clock::duration piecesTime{};            ///< that the client has had for the body in earlier phases
    Clock::time_point lastReceived;

    std::deque<Exchange> exchanges; ///< in the order of the requests

    std::string text; ///< heads, short bodies, pieces of the stream; sent before `body`
    std::size_t textBegin = 0;
    std::shared_ptr<const std::string> body;
    std::size_t bodyBegin = 0;
    std::shared_ptr<IBodyStream> stream;
    bool isChunked = false; ///< of the stream
    bool isAborted = false;
    std::size_t answered = 0;

    Phase phase = Phase::Request;
    Clock::time_point phaseBegin; ///< or when the client has read something
};

} // namespace Sensor::Http
