#include "Services/Ascii/AsciiSession.h"

namespace Services::Ascii {

AsciiSession::AsciiSession(RequestHandler& handler, bool mayWrite)
    : BufferedSession(2048, 2 * AnswerCapacity)
    , handler(handler)
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
        if (begin == Input().size() || client.hasQuit || !HasRoom()) {
            break;
        }
        const LineReader::Status status = reader.Feed(Input()[begin]);
        ++begin;
        if (status != LineReader::Status::Incomplete) {
            answer.clear();
            handler.Answer(status, reader.Line(), client, answer);
            AppendLine(answer);
            answered += client.pending == nullptr ? 1 : 0;
        }
    }
    Consume(begin);
    if (client.push != nullptr) {
        Produced(client.push->MoveTo(OutputSpace()));
    }
    return answered;
}

void AsciiSession::AppendLine(const std::string& line) {
    Append({reinterpret_cast<const unsigned char*>(line.data()), line.size()});
}

} // namespace Services::Ascii
