#include "Services/Ascii/RequestHandler.h"

#include "Services/Ascii/ResourceReader.h"
#include "Services/Ascii/ServiceVersion.h"
#include "Vor/Exception.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace Services::Ascii {

using VorControl::ControlProtocol::ControlRegisterCommandData;

namespace {

constexpr std::size_t NoArguments = 0;
constexpr std::size_t ManyArguments = SIZE_MAX;

bool IsWord(std::string_view text, std::string_view word) {
    return std::ranges::equal(
        text, word, [](char left, char right) { return std::toupper(static_cast<unsigned char>(left)) == right; });
}

const char* TextOf(yStatus status) {
    const auto& failures = RequestHandler::Failures();
    const auto found = std::ranges::find(failures, status, &RequestHandler::Failure::status);
    return found == failures.end() ? "failed" : found->text;
}

/// Why the request has failed.
std::string TextOfFailure(const PendingAnswer& answer) {
    if (!answer.reason.empty()) {
        return answer.reason;
    }
    const bool isPlain = answer.status == yERROR && answer.failure != nullptr;
    return isPlain ? answer.failure : TextOf(answer.status);
}

const char* TextOfAlignment(std::uint8_t alignment) {
    return alignment == 1 ? "ALIGNED" : alignment == 2 ? "ALIGNING" : "UNALIGNED";
}

} // namespace

const std::vector<RequestHandler::Command>& RequestHandler::Commands() {
    using Self = RequestHandler;
    static const std::vector<Command> All = {
        {"START", &Self::Start, "START", "Starts the scan."},
        {"STOP", &Self::Stop, "STOP", "Stops the scan."},
        {"TRIGGER", &Self::Trigger, "TRIGGER [SCANNER]", "Makes one frame; the sensor has to be in triggered mode."},
        {"ALIGN", &Self::Align, "ALIGN [SCANNER]", "Aligns the sensor."},
        {"CLEARALIGN", &Self::ClearAlign, "CLEARALIGN [SCANNER]", "Clears the alignment."},
        {"LOADJOB", &Self::LoadJob, "LOADJOB NAME", "Loads a job."},
        {"USERDATA", &Self::UserData, "USERDATA TEXT", "Hands a text to the sensor's tools."},
        {"RESULT", &Self::Result, "RESULT [OUTPUT]...",
         "Returns values of the last frame: of these outputs, or of all numbers."},
        {"STAMP", &Self::Stamp, "STAMP", "Returns the stamp of the last frame: frame, time, encoder, index, inputs."},
        {"OUTPUTS", &Self::ListOutputs, "OUTPUTS", "Lists each output and its data source."},
        {"PUSH", &Self::Push, "PUSH [ON [OUTPUT]...|OFF]", "Sends a line a frame, or returns whether it does."},
        {"STATE", &Self::State, "STATE", "Returns whether the sensor scans, is aligned and is busy, and its job."},
        {"STATUS", &Self::State, "STATUS", "The same as STATE."},
        {"JOB", &Self::Job, "JOB", "Returns the loaded job."},
        {"READ", &Self::Read, "READ PATH[#/MEMBER]",
         "Returns a resource below /controls or /sensor/scan, or one member of it, as JSON."},
        {"COUNTERS", &Self::Counters, "COUNTERS",
         "Returns clients, refused clients, lines, errors and dropped frames of the service, and its seconds."},
        {"VERSION", &Self::Version, "VERSION", "Returns the versions of service and sensor."},
        {"HELP", &Self::Help, "HELP [COMMAND]", "Lists the commands, or explains one."},
        {"QUIT", &Self::Quit, "QUIT", "Closes the connection."}};
    return All;
}

const std::vector<RequestHandler::Failure>& RequestHandler::Failures() {
    static const std::vector<Failure> All = {{yERROR, "failed; the sensor's log says why"},
                                             {yERROR_STATE, "the sensor's state doesn't allow this"},
                                             {yERROR_NOT_FOUND, "not found"},
                                             {yERROR_COMMAND, "the sensor doesn't know this command"},
                                             {yERROR_PARAMETER, "bad argument"},
                                             {yERROR_UNIMPLEMENTED, "the sensor can't do this"},
                                             {yERROR_TIMEOUT, "the sensor didn't answer in time"},
                                             {yERROR_FORMAT, "bad format"},
                                             {yERROR_VERSION, "unsupported version"},
                                             {yERROR_BUSY, "busy: another operation of the sensor is in progress"}};
    return All;
}

const RequestHandler::Command* RequestHandler::Find(std::string_view name) {
    const auto found = std::ranges::find_if(Commands(), [&](const Command& each) { return IsWord(name, each.name); });
    return found == Commands().end() ? nullptr : &*found;
}

void RequestHandler::Answer(LineReader::Status status, std::string_view line, ClientState& client,
                            std::string& answer) {
    counters.requests.fetch_add(1, std::memory_order_relaxed);
    const std::size_t begin = answer.size();
    try {
        if (status == LineReader::Status::TooLong) {
            Vor::Throw(yERROR_SIZE, "the line is longer than %u bytes", static_cast<unsigned>(LineReader::MaxLineSize));
        }
        if (status == LineReader::Status::Invalid) {
            Vor::Throw(yERROR_FORMAT, "the line has characters that aren't text");
        }
        AnswerLine(line, client, answer);
    } catch (const Vor::Exception& e) {
        answer.resize(begin);
        AnswerError(answer, e.Status(), e.HasText() ? e.what() : TextOf(e.Status()));
    }
    if (client.pending == nullptr) {
        answer += format.terminator;
    } else {
        answer.resize(begin);
    }
}

void RequestHandler::AnswerLine(std::string_view line, ClientState& client, std::string& answer) {
    const Request request = Request::Parse(line, format.delimiter);
    const Command* const command = Find(request.command);
    if (command == nullptr) {
        Vor::Throw(yERROR_COMMAND, "unknown command; HELP lists the commands");
    }
    answer += "OK";
    (this->*command->run)({request.rest, client, answer});
}

void RequestHandler::AnswerPending(ClientState& client, std::string& answer) {
    const std::shared_ptr<PendingAnswer> pending = std::move(client.pending);
    client.pending = nullptr;
    if (pending->status != yOK) {
        AnswerError(answer, pending->status, TextOfFailure(*pending));
    } else {
        answer += "OK";
        if (pending->kind == PendingAnswer::Kind::State) {
            for (const char* word : {pending->isScanning ? "SCANNING" : "READY", TextOfAlignment(pending->alignment),
                                     pending->isBusy ? "BUSY" : "IDLE"}) {
                answer += format.delimiter;
                answer += word;
            }
        }
        if (pending->kind == PendingAnswer::Kind::State || pending->kind == PendingAnswer::Kind::Job) {
            AddText(answer, pending->job);
        }
        if (pending->kind == PendingAnswer::Kind::Document) {
            answer += format.delimiter;
            answer += pending->document;
        }
    }
    answer += format.terminator;
}

void RequestHandler::EndPush(ClientState& client) {
    if (client.push != nullptr) {
        outputs.Unsubscribe(client.push.get());
        client.push = nullptr;
    }
}

void RequestHandler::AnswerError(std::string& answer, int status, std::string_view text) {
    counters.failed.fetch_add(1, std::memory_order_relaxed);
    answer += "ERROR";
    answer += format.delimiter;
    answer += std::to_string(status);
    AddText(answer, text);
}

void RequestHandler::AddText(std::string& answer, std::string_view text) const {
    answer += format.delimiter;
    AppendQuoted(answer, text);
}

std::vector<Argument> RequestHandler::ArgumentsOf(const Call& call, std::size_t max) const {
    auto words = ParseArguments(call.rest, format.delimiter);
    if (!words) {
        Vor::Throw(yERROR_FORMAT, "a quotation mark is missing, or stands within a word");
    }
    if (words->size() > max) {
        Vor::Throw(yERROR_PARAMETER, "too many arguments");
    }
    return std::move(*words);
}

void RequestHandler::RunCommand(const Call& call, const ControlRegisterCommandData& command, const char* failure) {
    if (!call.client.mayWrite) {
        Vor::Throw(yERROR_READ_ONLY, "clients of your network may not command the sensor");
    }
    call.client.pending = std::make_shared<PendingAnswer>(PendingAnswer::Kind::Command);
    call.client.pending->failure = failure;
    if (!sensor.Run(command, call.client.pending)) {
        call.client.pending = nullptr;
        Vor::Throw(yERROR_BUSY, "busy: another command is in progress");
    }
}

void RequestHandler::RunOnScanner(const Call& call, std::uint8_t id, const char* failure) {
    const auto arguments = ArgumentsOf(call, 1);
    ControlRegisterCommandData command;
    command.commandId = id;
    if (!arguments.empty()) {
        const std::string& scanner = arguments.front().text;
        if (scanner.size() >= command.commandArgs.size()) {
            Vor::Throw(yERROR_PARAMETER, "the name is too long");
        }
        std::ranges::copy(scanner, command.commandArgs.begin());
    }
    RunCommand(call, command, failure);
}

void RequestHandler::RequestState(const Call& call, PendingAnswer::Kind kind) {
    ArgumentsOf(call, NoArguments);
    call.client.pending = std::make_shared<PendingAnswer>(kind);
    sensor.ReadState(call.client.pending);
}

void RequestHandler::Start(const Call& call) {
    ArgumentsOf(call, NoArguments);
    ControlRegisterCommandData command;
    command.commandId = ControlRegisterCommandData::Start;
    RunCommand(call, command, "the sensor couldn't start to scan");
}

void RequestHandler::Stop(const Call& call) {
    ArgumentsOf(call, NoArguments);
    ControlRegisterCommandData command;
    command.commandId = ControlRegisterCommandData::Stop;
    RunCommand(call, command, "the sensor couldn't stop");
}

void RequestHandler::Trigger(const Call& call) {
    RunOnScanner(call, ControlRegisterCommandData::SoftwareTrigger,
                 "the trigger wasn't taken; the sensor has to scan in triggered mode");
}

void RequestHandler::Align(const Call& call) {
    RunOnScanner(call, ControlRegisterCommandData::Align, "the sensor couldn't be aligned");
}

void RequestHandler::ClearAlign(const Call& call) {
    RunOnScanner(call, ControlRegisterCommandData::ClearAlign, "the alignment couldn't be cleared");
}

void RequestHandler::LoadJob(const Call& call) {
    const auto name = ParseText(call.rest);
    ControlRegisterCommandData command;
    if (!name || name->empty()) {
        Vor::Throw(yERROR_PARAMETER, "the name of the job is missing: LOADJOB NAME");
    }
    if (name->size() >= command.commandArgs.size()) {
        Vor::Throw(yERROR_PARAMETER, "the name is too long");
    }
    command.commandId = ControlRegisterCommandData::LoadJob;
    std::ranges::copy(*name, command.commandArgs.begin());
    RunCommand(call, command, "the job couldn't be loaded; the former one goes on");
}

void RequestHandler::UserData(const Call& call) {
    const auto text = ParseText(call.rest);
    ControlRegisterCommandData command;
    if (!text || text->empty()) {
        Vor::Throw(yERROR_PARAMETER, "the text is missing: USERDATA TEXT");
    }
    if (text->size() > MaxUserDataSize) {
        Vor::Throw(yERROR_PARAMETER, "the text is longer than %u bytes", static_cast<unsigned>(MaxUserDataSize));
    }
    command.commandId = ControlRegisterCommandData::SetUserData;
    std::ranges::copy(*text, command.commandArgs.begin());
    command.SetCommandArgsSize(text->size());
    RunCommand(call, command, "the text couldn't be handed over");
}

void RequestHandler::Result(const Call& call) {
    outputs.AppendValues(call.answer, ArgumentsOf(call, ManyArguments));
}

void RequestHandler::Stamp(const Call& call) {
    ArgumentsOf(call, NoArguments);
    outputs.AppendStamp(call.answer);
}

void RequestHandler::ListOutputs(const Call& call) {
    ArgumentsOf(call, NoArguments);
    outputs.AppendList(call.answer);
}

void RequestHandler::Push(const Call& call) {
    auto words = ArgumentsOf(call, ManyArguments);
    if (words.empty()) {
        call.answer += format.delimiter;
        call.answer += call.client.push == nullptr ? "OFF" : "ON";
        call.answer += format.delimiter;
        call.answer += std::to_string(call.client.push == nullptr ? 0 : call.client.push->Dropped());
        return;
    }
    if (IsWord(words.front().text, "ON")) {
        words.erase(words.begin());
        const auto queue = std::make_shared<PushQueue>(PushCapacity);
        outputs.Subscribe(queue, words);
        EndPush(call.client);
        call.client.push = queue;
    } else if (IsWord(words.front().text, "OFF") && words.size() == 1) {
        EndPush(call.client);
    } else {
        Vor::Throw(yERROR_PARAMETER, "PUSH takes ON, with outputs if you like, or OFF");
    }
}

void RequestHandler::State(const Call& call) {
    RequestState(call, PendingAnswer::Kind::State);
}

void RequestHandler::Job(const Call& call) {
    RequestState(call, PendingAnswer::Kind::Job);
}

void RequestHandler::Read(const Call& call) {
    if (!allowsRead) {
        Vor::Throw(yERROR_UNIMPLEMENTED, "READ is off; the parameter allowRead turns it on");
    }
    if (!call.client.mayWrite) {
        Vor::Throw(yERROR_READ_ONLY, "clients of your network may not read resources");
    }
    const auto text = ParseText(call.rest);
    if (!text) {
        Vor::Throw(yERROR_FORMAT, "a quotation mark is missing, or stands within a word");
    }
    const auto pending = std::make_shared<PendingAnswer>(PendingAnswer::Kind::Document);
    if (!sensor.ReadResource(ReadTarget::Parse(*text), pending)) {
        Vor::Throw(yERROR_BUSY, "busy: %zu reads wait already", ResourceReader::MaxWaiting);
    }
    call.client.pending = pending;
}

void RequestHandler::Counters(const Call& call) {
    ArgumentsOf(call, NoArguments);
    for (const std::uint64_t count :
         {counters.connected.load(std::memory_order_relaxed), counters.refused.load(std::memory_order_relaxed),
          counters.requests.load(std::memory_order_relaxed), counters.failed.load(std::memory_order_relaxed),
          counters.Dropped(), counters.Uptime()}) {
        call.answer += format.delimiter;
        call.answer += std::to_string(count);
    }
}

void RequestHandler::Version(const Call& call) {
    ArgumentsOf(call, NoArguments);
    AddText(call.answer, ServiceVersion);
    AddText(call.answer, VOR_VERSION);
}

void RequestHandler::Help(const Call& call) {
    const auto words = ArgumentsOf(call, 1);
    if (words.empty()) {
        for (const Command& each : Commands()) {
            call.answer += format.delimiter;
            call.answer += each.name;
        }
        return;
    }
    const Command* const command = Find(words.front().text);
    if (command == nullptr) {
        Vor::Throw(yERROR_COMMAND, "unknown command; HELP lists the commands");
    }
    AddText(call.answer, command->usage);
    AddText(call.answer, command->help);
}

void RequestHandler::Quit(const Call& call) {
    ArgumentsOf(call, NoArguments);
    EndPush(call.client);
    call.client.hasQuit = true;
}

} // namespace Services::Ascii
