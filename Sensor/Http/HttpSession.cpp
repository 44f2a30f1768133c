#include "Sensor/Http/HttpSession.h"

#include "Net/Network.h"
#include "Sensor/Http/Problem.h"
#include "Sensor/Http/ResponderTarget.h"
#include "Sensor/Http/ResponseHead.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cstring>
#include <exception>
#include <mutex>
#include <utility>
#include <vector>

namespace Sensor::Http {

namespace {

/// Longer bodies are sent from where they are; with shorter ones a packet less is worth the copy.
constexpr std::size_t MaxCopiedBody = 16384;
/// Smaller pieces of a body are collected.
constexpr std::size_t PieceSize = 65536;
/// No further answer is added to that many bytes that wait to be sent.
constexpr std::size_t MaxWaitingText = 65536;
/// A larger buffer isn't kept when its bytes are sent.
constexpr std::size_t MaxKeptText = 4 * MaxWaitingText;
/// The connection is closed when the client sends more after the last request.
constexpr std::size_t MaxDropped = std::size_t{4} << 20;

constexpr const char* ContinueHead = "HTTP/1.1 100 Continue\r\n\r\n";

HttpResponse RefusalResponse(const Refusal& refusal) {
    const ProblemType& type = refusal.type;
    return ProblemResponse(type.status, type.slug, type.title, refusal.detail);
}

void AppendChunk(std::string& out, std::string_view bytes) {
    std::array<char, 16> size{};
    const char* const end = std::to_chars(size.data(), size.data() + size.size(), bytes.size(), 16).ptr;
    out.append(size.data(), static_cast<std::size_t>(end - size.data())).append("\r\n").append(bytes).append("\r\n");
}

} // namespace

/// Wakes the network thread for one session, and says how its client is.
class HttpSession::Signal {
public:
    explicit Signal(std::shared_ptr<Net::Wakeup> wakeup)
        : wakeup(std::move(wakeup)) {}

    void Set() {
        if (!isSet.exchange(true)) {
            wakeup->Set();
        }
    }
    bool IsSet() const { return isSet; }
    void Clear() { isSet = false; }

    void SetClientWaits(bool value) { clientWaits = value; }
    bool ClientWaits() const { return clientWaits; }

private:
    const std::shared_ptr<Net::Wakeup> wakeup;
    std::atomic<bool> isSet = false;
    std::atomic<bool> clientWaits = true;
};

/// The answer to one request, which any thread sets. It is gone when the client is.
class HttpSession::Answer {
public:
    /// Only the first one counts.
    void Set(HttpResponse value) {
        const std::lock_guard guard(mutex);
        if (!isSet) {
            isSet = true;
            response = std::move(value);
        }
    }
    bool IsSet() const {
        const std::lock_guard guard(mutex);
        return isSet;
    }
    /// Once; empty before it is set.
    std::optional<HttpResponse> MoveOut() {
        const std::lock_guard guard(mutex);
        return std::exchange(response, std::nullopt);
    }

private:
    mutable std::mutex mutex; ///< guards the others
    std::optional<HttpResponse> response;
    bool isSet = false;
};

class HttpSession::AnswerTarget : public Responder::Target {
public:
    AnswerTarget(const std::shared_ptr<Answer>& answer, const std::shared_ptr<Signal>& signal)
        : answer(answer)
        , signal(signal) {}
    ~AnswerTarget() override {
        Vor::CleanUp([this] {
            if (IsOpen()) {
                Vor::LogError("a request was dropped without an answer");
                Respond(RefusalResponse({WireProblems::Failure, "The request wasn't answered."}));
            }
        });
    }
    AnswerTarget(const AnswerTarget&) = delete;
    AnswerTarget& operator=(const AnswerTarget&) = delete;

    void Respond(HttpResponse response) override {
        if (const auto open = answer.lock()) {
            open->Set(std::move(response));
            Wake();
        }
    }
    bool IsWanted() const override {
        const auto open = signal.lock();
        return open && open->ClientWaits() && IsOpen();
    }
    void Wake() override {
        if (const auto open = signal.lock()) {
            open->Set();
        }
    }

private:
    bool IsOpen() const {
        const auto open = answer.lock();
        return open && !open->IsSet();
    }

    const std::weak_ptr<Answer> answer;
    const std::weak_ptr<Signal> signal;
};

HttpSession::HttpSession(const HttpSessionSettings& settings, IHttpHandler& handler,
                         std::shared_ptr<Net::Wakeup> wakeup, Now now)
    : settings(settings)
    , handler(handler)
    , now(now)
    , signal(std::make_shared<Signal>(std::move(wakeup)))
    , inputCapacity(std::max(settings.limits.header, RequestParser::MaxFraming) + 1)
    , input(std::make_unique_for_overwrite<unsigned char[]>(inputCapacity))
    , phaseBegin(now()) {}

HttpSession::~HttpSession() = default;

void HttpSession::SetPeer(const Net::NetworkAddress& address) {
    peerAddress = Net::AddressText(address);
    peerIsLoopback = Net::IsLoopback(address);
}

std::span<unsigned char> HttpSession::ReceiveSpace() {
    if (dropped > MaxDropped) {
        return {};
    }
    return {input.get() + inputEnd, inputCapacity - inputEnd};
}

void HttpSession::Received(std::size_t count) {
    if (hasReadLast) {
        dropped += count;
    } else {
        inputEnd += count;
        if (step == Step::Pieces && count > 0) {
            lastReceived = now();
        }
    }
}

void HttpSession::InputEnded() {
    signal->SetClientWaits(false);
}

std::size_t HttpSession::Process() {
    signal->Clear(); // first, so that an answer that comes meanwhile isn't missed
    if (stream && stream->IsCut()) {
        Abort();
    }
    while (ReadOn() || WriteOn()) {
    }
    if (inputBegin > 0) {
        std::memmove(input.get(), input.get() + inputBegin, inputEnd - inputBegin);
        inputEnd -= std::exchange(inputBegin, 0);
    }
    UpdatePhase();
    return std::exchange(answered, 0);
}

bool HttpSession::WantsWakeup() const {
    return signal->IsSet();
}

bool HttpSession::ReadOn() {
    if (step == Step::Pieces) {
        return ReadPieces();
    }
    const bool isFull = exchanges.size() >= settings.maxPipelined || (!exchanges.empty() && exchanges.back().isAlone);
    if (hasReadLast || isFull) {
        return false;
    }
    if (step == Step::Check) {
        return CheckHeader();
    }
    if (inputBegin == inputEnd) {
        return false;
    }
    if (!parser) {
        parser = std::make_unique<RequestParser>(
            settings.limits, [this](const HttpRequest& request) { return handler.IsInPieces(request); });
    }
    const std::size_t used = parser->Read({input.get() + inputBegin, inputEnd - inputBegin});
    inputBegin += used;
    const RequestParser::State state = parser->GetState();
    if (state == RequestParser::State::Refused) {
        AnswerLast(RefusalResponse(parser->GetRefusal()));
        return true;
    }
    if (step == Step::Header && state != RequestParser::State::Header) {
        BeginCheck();
        return true;
    }
    if (state == RequestParser::State::Done) {
        Handle();
        return true;
    }
    return used > 0;
}

void HttpSession::BeginCheck() {
    HttpRequest& request = parser->Request();
    const bool isSafe = request.method == "GET" || request.method == "HEAD" || request.method == "OPTIONS";
    request.peerAddress = peerAddress;
    request.peerIsLoopback = peerIsLoopback;
    isAlone = !isSafe || parser->GetState() == RequestParser::State::Body;
    step = Step::Check;
}

bool HttpSession::CheckHeader() {
    if (isAlone && !(exchanges.empty() && Replies().empty())) {
        return false;
    }
    std::optional<HttpResponse> refusal;
    try {
        refusal = handler.CheckHeader(parser->Request());
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "EXCEPTION THROWN: ");
        refusal = RefusalResponse({WireProblems::Failure, "The request couldn't be checked."});
    }
    if (refusal) {
        AnswerLast(std::move(*refusal));
    } else if (parser->IsInPieces()) {
        BeginPieces();
    } else if (parser->GetState() == RequestParser::State::Done) {
        Handle();
    } else {
        if (parser->ExpectsContinue()) {
            text += ContinueHead;
        }
        step = Step::Body;
    }
    return true;
}

Responder HttpSession::BeginExchange() {
    exchanges.push_back({.answer = std::make_shared<Answer>(),
                         .method = parser->Request().method,
                         .isHead = parser->IsHead(),
                         .isHttp11 = parser->IsHttp11(),
                         .closes = !parser->KeepsAlive(),
                         .isAlone = isAlone});
    return Responder(std::make_shared<AnswerTarget>(exchanges.back().answer, signal));
}

void HttpSession::Handle() {
    const Responder responder = BeginExchange();
    const auto handled = std::exchange(parser, nullptr);
    step = Step::Header;
    if (exchanges.back().closes) {
        StopReading();
    }
    try {
        handler.Handle(std::move(handled->Request()), responder);
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "EXCEPTION THROWN: ");
        responder.Respond(RefusalResponse({WireProblems::Failure, "The request couldn't be handled."}));
    }
}

void HttpSession::BeginPieces() {
    step = Step::Pieces;
    waitsForRoom = true;
    hasAsked = false;
    piecesTime = {};
    lastReceived = now();
    const Responder responder = BeginExchange();
    try {
        receiver = handler.Receive(parser->Request(), responder);
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "EXCEPTION THROWN: ");
        responder.Respond(RefusalResponse({WireProblems::Failure, "The body couldn't be received."}));
    }
}

bool HttpSession::ReadPieces() {
    waitsForRoom = !receiver || exchanges.back().answer->IsSet() || !receiver->HasRoom();
    if (waitsForRoom) {
        return false;
    }
    if (!std::exchange(hasAsked, true) && parser->ExpectsContinue()) {
        text += ContinueHead;
    }
    std::size_t used = 0;
    if (parser->GetState() == RequestParser::State::Body && inputBegin < inputEnd) {
        used = parser->Read({input.get() + inputBegin, inputEnd - inputBegin});
        inputBegin += used;
    }
    if (parser->GetState() == RequestParser::State::Refused) {
        exchanges.back().answer->Set(RefusalResponse(parser->GetRefusal()));
        return true;
    }
    const bool isWhole = parser->GetState() == RequestParser::State::Done;
    if (isWhole || parser->Request().body.size() >= PieceSize) {
        if (std::string piece = parser->TakeBody(); !piece.empty()) {
            receiver->Take(std::move(piece));
        }
    }
    if (isWhole) {
        EndPieces();
    }
    return isWhole || used > 0;
}

void HttpSession::EndPieces() {
    const auto ended = std::exchange(receiver, nullptr);
    parser.reset();
    step = Step::Header;
    if (exchanges.back().closes) {
        StopReading();
    }
    ended->End();
}

void HttpSession::AnswerLast(HttpResponse response) {
    exchanges.push_back({.answer = std::make_shared<Answer>(),
                         .method = parser ? parser->Request().method : std::string(),
                         .isHead = parser && parser->IsHead()});
    exchanges.back().answer->Set(std::move(response));
    StopReading();
}

void HttpSession::StopReading() {
    hasReadLast = true;
    parser.reset();
    receiver.reset();
    step = Step::Header;
    inputBegin = inputEnd = 0;
}

bool HttpSession::WriteOn() {
    if (stream) {
        return ReadStream();
    }
    if (exchanges.empty() || body || text.size() >= MaxWaitingText) {
        return false;
    }
    std::optional<HttpResponse> response = exchanges.front().answer->MoveOut();
    if (!response) {
        return false;
    }
    Exchange exchange = std::move(exchanges.front());
    exchanges.pop_front();
    if (step == Step::Pieces) { // before the body was whole
        exchange.closes = true;
        StopReading();
    }
    Write(exchange, std::move(*response));
    ++answered;
    return true;
}

void HttpSession::Write(const Exchange& exchange, HttpResponse response) {
    if (settings.counts != nullptr) {
        settings.counts->Add(exchange.method, response.status);
    }
    const bool isStreamed = response.stream && !exchange.isHead;
    AppendHead(text, response, {.isHttp11 = exchange.isHttp11, .closes = exchange.closes || isStreamed});
    if (isStreamed) {
        stream = std::move(response.stream);
        isChunked = exchange.isHttp11;
        exchanges.clear();
        StopReading();
    } else if (response.body && !exchange.isHead && response.status != 204 && response.status != 304) {
        if (response.body->size() <= MaxCopiedBody) {
            text += *response.body;
        } else {
            body = std::move(response.body);
        }
    }
}

bool HttpSession::ReadStream() {
    if (!Replies().empty()) {
        return false;
    }
    // In this order: it may end, with something left to read, after it was asked.
    const bool hasEnded = stream->Ended();
    std::string piece;
    stream->Read(piece);
    if (piece.empty()) {
        if (hasEnded) {
            stream.reset();
            text += isChunked ? "0\r\n\r\n" : "";
        }
    } else if (isChunked) {
        AppendChunk(text, piece);
    } else {
        text = std::move(piece);
    }
    return !text.empty();
}

void HttpSession::Abort() {
    isAborted = true;
    stream.reset();
    text.clear();
    textBegin = 0;
}

std::string HttpSession::EndReason() const {
    return isAborted ? "it hasn't read what it was sent" : ITcpSession::EndReason();
}

std::span<const unsigned char> HttpSession::Replies() const {
    const auto bytes = [](const std::string& from, std::size_t begin) -> std::span<const unsigned char> {
        return {reinterpret_cast<const unsigned char*>(from.data()) + begin, from.size() - begin};
    };
    if (!text.empty()) {
        return bytes(text, textBegin);
    }
    return body ? bytes(*body, bodyBegin) : std::span<const unsigned char>();
}

void HttpSession::Sent(std::size_t count) {
    if (!text.empty()) {
        textBegin += count;
        if (textBegin == text.size()) {
            textBegin = 0;
            text.clear();
            if (text.capacity() > MaxKeptText) {
                text.shrink_to_fit();
            }
        }
    } else {
        bodyBegin += count;
        if (bodyBegin == body->size()) {
            bodyBegin = 0;
            body.reset();
        }
    }
    phaseBegin = now();
    UpdatePhase();
}

bool HttpSession::HasFinished() const {
    return hasReadLast && exchanges.empty() && !stream;
}

bool HttpSession::Broken() const {
    return HasFinished() && dropped > MaxDropped;
}

HttpSession::Phase HttpSession::CurrentPhase() const {
    if (!Replies().empty()) {
        return Phase::Reader;
    }
    if (stream) {
        return Phase::Stream;
    }
    if (!exchanges.empty()) {
        return ReadsPieces() ? Phase::Pieces : Phase::Answer;
    }
    if (hasReadLast) {
        return Phase::End;
    }
    if (step == Step::Body) {
        return Phase::Body;
    }
    return inputBegin == inputEnd ? Phase::Request : Phase::Header;
}

void HttpSession::UpdatePhase() {
    if (phase != CurrentPhase()) {
        const Clock::time_point time = now();
        if (phase == Phase::Pieces) {
            piecesTime += time - phaseBegin;
        }
        phase = CurrentPhase();
        phaseBegin = time;
    }
}

Net::ITcpSession::Clock::time_point HttpSession::PiecesDeadline() const {
    const std::chrono::seconds further(static_cast<std::chrono::seconds::rep>(parser->BodySize() / settings.bodyRate));
    return std::min(phaseBegin - piecesTime + settings.bodyTimeOut + further,
                    std::max(phaseBegin, lastReceived) + settings.pieceTimeOut);
}

std::optional<Net::ITcpSession::Clock::time_point> HttpSession::Deadline() const {
    switch (phase) {
    case Phase::Answer:
    case Phase::Stream:
        return std::nullopt;
    case Phase::Header:
        return phaseBegin + settings.headerTimeOut;
    case Phase::Body:
        return phaseBegin + settings.bodyTimeOut;
    case Phase::Pieces:
        return PiecesDeadline();
    case Phase::End:
        return phaseBegin + settings.lingerTimeOut;
    case Phase::Request:
    case Phase::Reader:
        break;
    }
    return phaseBegin + settings.idleTimeOut;
}

bool HttpSession::Expire() {
    if (phase != Phase::Header && phase != Phase::Body && phase != Phase::Pieces) {
        return false;
    }
    HttpResponse refusal =
        RefusalResponse({WireProblems::TooSlow, phase == Phase::Header ? "The header wasn't received in time."
                                                                       : "The body wasn't received in time."});
    if (phase == Phase::Pieces) {
        exchanges.back().answer->Set(std::move(refusal));
    } else {
        AnswerLast(std::move(refusal));
    }
    Process();
    return true;
}

} // namespace Sensor::Http
