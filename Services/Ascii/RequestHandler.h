#pragma once

#include "Services/Ascii/ISensor.h"
#include "Services/Ascii/LineFormat.h"
#include "Services/Ascii/LineReader.h"
#include "Services/Ascii/Outputs.h"
#include "Services/Ascii/Request.h"
#include "Services/Ascii/ServerCounters.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Services::Ascii {

/// What the handler knows of one client.
struct ClientState {
    bool mayWrite = false;
    bool hasQuit = false;
    std::shared_ptr<PushQueue> push = {};        ///< null while no frames are told
    std::shared_ptr<PendingAnswer> pending = {}; ///< of the last request, while it has no answer
};

/// Answers one request at a time. Used by the network thread only.
class RequestHandler {
public:
    /// Of what waits for one client while frames are told.
    static constexpr std::size_t PushCapacity = 2 * Outputs::MaxLineSize;
    /// The most that the tools take.
    static constexpr std::size_t MaxUserDataSize = sizeof(VorControl::ControlProtocol::DefaultUserDataInputData);

    /// All but `format` must outlive the handler.
    RequestHandler(Outputs& outputs, ISensor& sensor, ServerCounters& counters, LineFormat format)
        : outputs(outputs)
        , sensor(sensor)
        , counters(counters)
        , format(std::move(format)) {}

    const LineFormat& Format() const { return format; }
    void SetFormat(const LineFormat& value) { format = value; }

    /// Answers a line that has ended. The answer, with its terminator, is appended to `answer`, or comes later: then
    /// `client.pending` is set.
    void Answer(LineReader::Status status, std::string_view line, ClientState& client, std::string& answer);
    /// Appends the answer that `client` waits for, which has come.
    void AnswerPending(ClientState& client, std::string& answer);
    /// The client has gone.
    void EndPush(ClientState& client);

private:
    /// What a request's member function gets.
    struct Call {
        std::string_view rest;
        ClientState& client;
        std::string& answer;
    };
    struct Command {
        const char* name;
        void (RequestHandler::*run)(const Call& call);
        const char* usage;
        const char* help;
    };
    static const std::vector<Command>& Commands();
    static const Command* Find(std::string_view name);

    void AnswerLine(std::string_view line, ClientState& client, std::string& answer);
    void AnswerError(std::string& answer, int status, std::string_view text);
    void AddText(std::string& answer, std::string_view text) const;
    std::vector<Argument> ArgumentsOf(const Call& call, std::size_t max) const;
    /// `failure` is the text for a command that the sensor refuses or can't do.
    void RunCommand(const Call& call, const VorControl::ControlProtocol::ControlRegisterCommandData& command,
                    const char* failure);
    /// Runs a command whose argument may be a scanner.
    void RunOnScanner(const Call& call, std::uint8_t command, const char* failure);
    void RequestState(const Call& call, PendingAnswer::Kind kind);

    void Start(const Call& call);
    void Stop(const Call& call);
    void Trigger(const Call& call);
    void Align(const Call& call);
    void ClearAlign(const Call& call);
    void LoadJob(const Call& call);
    void UserData(const Call& call);
    void Result(const Call& call);
    void Stamp(const Call& call);
    void ListOutputs(const Call& call);
    void Push(const Call& call);
    void State(const Call& call);
    void Job(const Call& call);
    void Version(const Call& call);
    void Help(const Call& call);
    void Quit(const Call& call);

    Outputs& outputs;
    ISensor& sensor;
    ServerCounters& counters;
    LineFormat format;
};

} // namespace Services::Ascii
