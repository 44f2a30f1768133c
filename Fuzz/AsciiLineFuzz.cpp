// Any stream of bytes. The answers must be whole lines, and must not depend on the sizes of the pieces in which the
// stream arrives.

#include "Services/Ascii/AsciiSession.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace {

using namespace Services::Ascii;

/// Each command ends at once; its argument selects how: "b" refused as busy, "f" failed, else done.
class Sensor : public ISensor {
public:
    bool Run(const VorControl::ControlProtocol::ControlRegisterCommandData& command,
             const std::shared_ptr<PendingAnswer>& answer) override {
        if (command.commandArgs.back() != '\0' || command.commandArgsSize > command.commandArgs.size()) {
            std::abort();
        }
        if (command.commandArgs[0] == 'b') {
            return false;
        }
        answer->End(command.commandArgs[0] == 'f' ? yERROR : yOK);
        return true;
    }
    void ReadState(const std::shared_ptr<PendingAnswer>& answer) override {
        answer->job = "demo.vrjob";
        answer->End(yOK);
    }
    bool ReadResource(ReadTarget target, const std::shared_ptr<PendingAnswer>& answer) override {
        answer->document = "\"" + std::to_string(target.path.size()) + "\"";
        answer->End(target.pointer.empty() ? yOK : yERROR_NOT_FOUND);
        return target.path.back() != '/';
    }
};

std::string Feed(std::span<const unsigned char> stream, std::size_t step, std::size_t maxSentSize,
                 const LineFormat& format) {
    Services::Common::ServiceCounters counters;
    Outputs outputs(counters);
    outputs.SetFormat(format);
    outputs.Replace({{.id = "0", .isBlock = true, .kind = ValueKind::Measurement, .dataSource = "a"},
                     {.id = "height", .dataSource = "a"},
                     {.id = "my height", .dataSource = "b"}});
    Sensor sensor;
    RequestHandler handler(outputs, sensor, counters, format);
    handler.SetAllowsRead(true);
    const auto session = std::make_unique<AsciiSession>(handler, true);
    std::string answers;
    while (!stream.empty() && !session->Broken()) {
        const auto space = session->ReceiveSpace();
        const std::size_t size = std::min({step, space.size(), stream.size()});
        std::copy_n(stream.begin(), size, space.begin());
        session->Received(size);
        stream = stream.subspan(size);
        while (session->Process() > 0 || !session->Replies().empty()) {
            const auto replies = session->Replies().first(std::min(maxSentSize, session->Replies().size()));
            answers.append(replies.begin(), replies.end());
            session->Sent(replies.size());
        }
    }
    return answers;
}

void CheckLines(std::string_view answers, const LineFormat& format) {
    while (!answers.empty()) {
        const std::size_t end = answers.find(format.terminator);
        if (end == std::string_view::npos) {
            std::abort();
        }
        const std::string_view line = answers.substr(0, end);
        const bool isKnown =
            line == "OK" || line.starts_with("OK" + format.delimiter) || line.starts_with("ERROR" + format.delimiter);
        if (!isKnown || std::ranges::any_of(line, [](char each) { return each >= '\0' && each < ' '; })) {
            std::abort();
        }
        answers.remove_prefix(end + format.terminator.size());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const unsigned char> stream(data, size);
    const std::size_t odd = size == 0 ? 1 : 1 + data[size - 1] % 23;
    for (const LineFormat& format : {LineFormat(), LineFormat{.delimiter = ";", .terminator = "\x03\n"}}) {
        const std::string whole = Feed(stream, SIZE_MAX, SIZE_MAX, format);
        CheckLines(whole, format);
        if (Feed(stream, 1, SIZE_MAX, format) != whole || Feed(stream, odd, 100, format) != whole ||
            Feed(stream, 12, 37, format) != whole) {
            std::abort();
        }
    }
    return 0;
}
