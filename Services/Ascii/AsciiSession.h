#pragma once

#include "Net/BufferedSession.h"
#include "Services/Ascii/LineReader.h"
#include "Services/Ascii/RequestHandler.h"
#include "Services/Ascii/ResourceReader.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace Services::Ascii {

/// The lines of one connection. Answers are sent in the order of the requests, and lines of frames between them. While
/// a request waits for its answer, the requests after it wait, too.
class AsciiSession : public Net::BufferedSession {
public:
    /// `handler` must outlive the session.
    AsciiSession(RequestHandler& handler, bool mayWrite);
    ~AsciiSession() override;

    void SetMayWrite(bool value) override { client.mayWrite = value; }
    std::size_t Process() override;
    bool Broken() const override { return client.hasQuit; }
    std::string EndReason() const override { return "it has quit"; }
    bool IsWorking() const override { return client.pending != nullptr; }
    bool IsSubscribed() const override { return client.push != nullptr; }

private:
    /// Room for one line more than the longest.
    static constexpr std::size_t AnswerCapacity = std::max(Outputs::MaxLineSize, ResourceReader::MaxAnswerSize) + 64;

    bool HasRoom() { return OutputSpace().size() >= AnswerCapacity; }
    void AppendLine(const std::string& line);

    RequestHandler& handler;
    ClientState client;
    LineReader reader;
    std::string answer;
};

} // namespace Services::Ascii
