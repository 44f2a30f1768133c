#include "Services/Ascii/ResourceReader.h"

#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Path.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace Services::Ascii {

using nlohmann::ordered_json;

namespace {

/// Whether clients read the resource. A step that another reader of the path could understand as a way out is refused,
/// also one that is percent-coded.
bool IsReadable(const std::string& path) {
    std::vector<std::string> steps;
    for (const std::string_view step : VorApi::Path::Split(path)) {
        steps.push_back(VorApi::Path::Decode(step));
        if (steps.back().empty() || steps.back() == "." || steps.back() == ".." ||
            steps.back().find('/') != std::string::npos) {
            return false;
        }
    }
    const auto beginsWith = [&](const std::vector<std::string>& place) {
        return steps.size() >= place.size() && std::equal(place.begin(), place.end(), steps.begin());
    };
    return beginsWith({"controls"}) || beginsWith({"sensor", "scan"});
}

void CheckPointer(const std::string& pointer) {
    try {
        const ordered_json::json_pointer parsed(pointer);
    } catch (const nlohmann::json::exception&) {
        Vor::Throw(yERROR_PARAMETER, "%s isn't a member: expected #/MEMBER, with ~0 for ~ and ~1 for / in a name",
                   '#' + pointer);
    }
}

/// The text of a document, or of the member at the pointer, for a line: characters that aren't of ASCII are escaped.
std::string AnswerOf(const std::string& text, const std::string& pointer) {
    if (text.size() > ResourceReader::MaxDocumentSize) {
        Vor::Throw(yERROR_SIZE, "the document is longer than %zu bytes, and too long for this service",
                   ResourceReader::MaxDocumentSize);
    }
    const ordered_json document = ordered_json::parse(text);
    const ordered_json* member = &document;
    try {
        member = &document.at(ordered_json::json_pointer(pointer));
    } catch (const nlohmann::json::exception&) {
        Vor::Throw(yERROR_NOT_FOUND, "the document has no member %s", pointer);
    }
    std::string answer = member->dump(-1, ' ', true, ordered_json::error_handler_t::replace);
    if (answer.size() > ResourceReader::MaxAnswerSize) {
        Vor::Throw(yERROR_SIZE, "the answer would be longer than %zu bytes; read a member of it: READ PATH#/MEMBER",
                   ResourceReader::MaxAnswerSize);
    }
    return answer;
}

} // namespace

ReadTarget ReadTarget::Parse(const std::string& text) {
    const std::size_t fragment = text.find('#');
    ReadTarget target{.path = text.substr(0, fragment),
                      .pointer = fragment == std::string::npos ? "" : text.substr(fragment + 1)};
    if (target.path.empty()) {
        Vor::Throw(yERROR_PARAMETER, "the path is missing: READ PATH[#/MEMBER]");
    }
    if (!IsReadable(target.path)) {
        Vor::Throw(yERROR_PARAMETER, "READ reads /controls, /sensor/scan and what is below them, and nothing else");
    }
    CheckPointer(target.pointer);
    return target;
}

/// What the main loop reads. It may come when nobody waits for it any more.
struct ResourceReader::Document {
    bool isAbandoned = false;
    bool hasEnded = false;
    yStatus status = yOK;
    std::string text; ///< of the document, or of the failure
};

ResourceReader::ResourceReader(Read read, std::function<void()> ended, std::chrono::milliseconds timeLimit)
    : read(std::move(read))
    , ended(std::move(ended))
    , timeLimit(timeLimit) {}

ResourceReader::~ResourceReader() {
    Stop();
}

bool ResourceReader::Add(ReadTarget target, const std::shared_ptr<PendingAnswer>& answer) {
    if (!thread) {
        thread = Vor::NamedThread("AsciiRead", [this] { return Run(); });
    }
    const std::lock_guard lock(mutex);
    std::erase_if(waiting, [](const Waiting& each) { return each.answer.expired(); });
    if (waiting.size() + (isReading ? 1 : 0) > MaxWaiting) {
        return false;
    }
    waiting.push_back({std::move(target), answer});
    changed.notify_all();
    return true;
}

void ResourceReader::Stop() {
    {
        const std::lock_guard lock(mutex);
        isStopping = true;
        waiting.clear();
        changed.notify_all();
    }
    thread.Reset();
    const std::lock_guard lock(mutex);
    isStopping = false;
}

yStatus ResourceReader::Run() {
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return isStopping || !waiting.empty(); });
        if (isStopping) {
            return yOK;
        }
        const Waiting next = std::move(waiting.front());
        waiting.pop_front();
        if (const auto answer = next.answer.lock()) {
            isReading = true;
            lock.unlock();
            Serve(next.target, *answer);
            ended();
            lock.lock();
            isReading = false;
        }
    }
}

void ResourceReader::Serve(const ReadTarget& target, PendingAnswer& answer) {
    yStatus status = yOK;
    try {
        answer.document = AnswerOf(DocumentOf(target.path), target.pointer);
    } catch (const Vor::Exception& e) {
        status = e.Status();
        answer.reason = e.what();
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "A resource can't be read.");
        status = yERROR;
    }
    answer.End(status);
}

std::string ResourceReader::DocumentOf(const std::string& path) {
    const auto document = std::make_shared<Document>();
    mainLoop.Run([this, path, document] { ReadOnMainLoop(path, *document); });
    std::unique_lock lock(mutex);
    changed.wait_for(lock, timeLimit, [&] { return isStopping || document->hasEnded; });
    if (!document->hasEnded) {
        document->isAbandoned = true;
        if (isStopping) {
            Vor::Throw(yERROR_STATE, "the service stops");
        }
        Vor::Throw(yERROR_TIMEOUT, "the sensor didn't read this within %lld ms",
                   static_cast<long long>(timeLimit.count()));
    }
    if (document->status != yOK) {
        Vor::Throw(document->status, "%s", document->text);
    }
    return std::move(document->text);
}

void ResourceReader::ReadOnMainLoop(const std::string& path, Document& document) {
    {
        const std::lock_guard lock(mutex);
        if (document.isAbandoned) {
            return;
        }
    }
    std::string text;
    yStatus status = yOK;
    try {
        text = read(path);
    } catch (const std::exception& e) {
        text = e.what();
        status = Vor::Exception::StatusOf(e);
    }
    const std::lock_guard lock(mutex);
    document.text = std::move(text);
    document.status = status;
    document.hasEnded = true;
    changed.notify_all();
}

} // namespace Services::Ascii
