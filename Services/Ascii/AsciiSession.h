#pragma once

#include "Services/Ascii/LineReader.h"
#include "Services/Ascii/RequestHandler.h"
#include "Services/Common/ITcpSession.h"

#include <array>
#include <cstddef>
#include <span>
#include <string>

namespace Services::Ascii {

/// The lines of one connection. Answers are sent in the order of the requests, and lines of frames between them. While
/// a request waits for its answer, the requests behind it wait, too. The buffers of both directions are bounded.
class AsciiSession : public Common::ITcpSession {
public:
    /// `handler` must outlive the session.
    AsciiSession(RequestHandler& handler, bool mayWrite);
    ~AsciiSession() override;
    AsciiSession(const AsciiSession&) = delete;
    AsciiSession& operator=(const AsciiSession&) = delete;

    void SetMayWrite(bool value) override { client.mayWrite = value; }
    std::span<unsigned char> ReceiveSpace() override { return std::span(input).subspan(inputEnd); }
    void Received(std::size_t count) override { inputEnd += count; }
    std::size_t Process() override;
    std::span<const unsigned char> Replies() const override {
        return std::span(output).first(outputEnd).subspan(outputBegin);
    }
    void Sent(std::size_t count) override;
    bool Broken() const override { return client.hasQuit; }
    bool IsWorking() const override { return client.pending != nullptr; }
    bool IsSubscribed() const override { return client.push != nullptr; }

private:
    static constexpr std::size_t InputCapacity = 2048;
    /// Room for one line more than the longest.
    static constexpr std::size_t AnswerCapacity = Outputs::MaxLineSize + 64;
    static constexpr std::size_t OutputCapacity = 2 * AnswerCapacity;

    bool HasRoom() const { return OutputCapacity - outputEnd >= AnswerCapacity; }
    void AppendLine(const std::string& line);

    RequestHandler& handler;
    ClientState client;
    LineReader reader;
    std::string answer;
    std::size_t inputEnd = 0;
    std::size_t outputBegin = 0;
    std::size_t outputEnd = 0;
    std::array<unsigned char, InputCapacity> input;
    std::array<unsigned char, OutputCapacity> output;
};

} // namespace Services::Ascii
