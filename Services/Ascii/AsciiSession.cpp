#include "Services/Ascii/AsciiSession.h"

#include <cstring>

namespace Services::Ascii {

AsciiSession::AsciiSession(RequestHandler& handler, bool mayWrite)
    : handler(handler)
    , client{.mayWrite = mayWrite}
    , reader(handler.Format().terminator) {}

AsciiSession::~AsciiSession() {
    handler.EndPush(client);
}

std::size_t AsciiSession::Process() {
    reader.SetTerminator(handler.Format().terminator);
    std::size_t answered = 0;
    std::size_t begin = 0;
    for (;;) {
        if (client.pending != nullptr) {
            if (!client.pending->HasEnded() || !HasRoom()) {
                break;
            }
            answer.clear();
            handler.AnswerPending(client, answer);
            AppendLine(answer);
            ++answered;
        }
        if (begin == inputEnd || client.hasQuit || !HasRoom()) {
            break;
        }
        const LineReader::Status status = reader.Feed(input[begin]);
        ++begin;
        if (status != LineReader::Status::Incomplete) {
            answer.clear();
            handler.Answer(status, reader.Line(), client, answer);
            AppendLine(answer);
            answered += client.pending == nullptr ? 1 : 0;
        }
    }
    if (begin > 0) {
        inputEnd -= begin;
        std::memmove(input.data(), input.data() + begin, inputEnd);
    }
    if (client.push != nullptr) {
        outputEnd += client.push->MoveTo(std::span(output).subspan(outputEnd));
    }
    return answered;
}

void AsciiSession::AppendLine(const std::string& line) {
    std::memcpy(output.data() + outputEnd, line.data(), line.size());
    outputEnd += line.size();
}

void AsciiSession::Sent(std::size_t count) {
    outputBegin += count;
    if (outputBegin == outputEnd) {
        outputBegin = outputEnd = 0;
    }
}

} // namespace Services::Ascii
