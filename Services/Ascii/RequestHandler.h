#pragma once

#include "Services/Ascii/ISensor.h"
#include "Services/Ascii/LineFormat.h"
#include "Services/Ascii/LineReader.h"
#include "Services/Ascii/Outputs.h"
#include "Services/Ascii/Request.h"
#include "Services/Common/ServiceCounters.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "yApi/yStatus.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Services::Ascii {

/// The state of one client.
struct ClientState {
    bool mayWrite = false;
    bool hasQuit = false;
    std::shared_ptr<PushQueue> push = {};        ///< null while no frames are pushed
    std::shared_ptr<PendingAnswer> pending = {}; ///< answer of the last request, until it is sent
};

/// Answers one request at a time. For the network thread.
class RequestHandler {
public:
    /// Capacity in bytes of the queue of frames for one client.
    static constexpr std::size_t PushCapacity = 2 * Outputs::MaxLineSize;
    /// The longest text that the sensor's tools accept.
    static constexpr std::size_t MaxUserDataSize = sizeof(VorControl::ControlProtocol::DefaultUserDataInputData);

    /// The answer when the sensor returns a status without a text.
    struct Failure {
        yStatus status;
        const char* text;
    };
    /// Each status that has a text of its own.
    static const std::vector<Failure>& Failures();

    /// All but `format` must outlive the handler.
    RequestHandler(Outputs& outputs, ISensor& sensor, Common::ServiceCounters& counters, LineFormat format)
        : outputs(outputs)
        , sensor(sensor)
        , counters(counters)
        , format(std::move(format)) {}

    const LineFormat& Format() const { return format; }
    void SetFormat(const LineFormat& value) { format = value; }
    /// Whether clients that may command the sensor read its resources, too.
    void SetAllowsRead(bool value) { allowsRead = value; }

    /// Answers a line. The answer with its terminator is appended to `answer`, or `client.pending` is set and the
    /// answer comes later.
    void Answer(LineReader::Status status, std::string_view line, ClientState& client, std::string& answer);
    /// Appends the answer to the pending request of `client`, which has ended.
    void AnswerPending(ClientState& client, std::string& answer);
    /// Ends the pushing of frames to the client.
    void EndPush(ClientState& client);

private:
    /// The arguments of a command's function.
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
    /// `failure` is the text for the client when the sensor fails with yERROR.
    void RunCommand(const Call& call, const VorControl::ControlProtocol::ControlRegisterCommandData& command,
                    const char* failure);
    /// Runs a command with an optional scanner as its argument.
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
    void Read(const Call& call);
    void Counters(const Call& call);
    void Version(const Call& call);
    void Help(const Call& call);
    void Quit(const Call& call);

    Outputs& outputs;
    ISensor& sensor;
    Common::ServiceCounters& counters;
    LineFormat format;
    bool allowsRead = false;
};

} // namespace Services::Ascii
