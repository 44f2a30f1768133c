#include "Sensor/Scan/RecordingParser.h"

#include "Vor/Utf8.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <system_error>

namespace Sensor::Scan {

namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view ProfilesHeader = "frame,x,z";
constexpr std::string_view ValuesHeader = "frame,name,value";
constexpr std::string_view ReservedName = "stamp";
constexpr std::size_t MaxQuotedBytes = 40;

/// `field` for an error message: shortened, and without characters that a terminal would interpret.
std::string Quoted(std::string_view field) {
    std::string text = "\"";
    for (const char character : field.substr(0, MaxQuotedBytes)) {
        text += character >= ' ' && character <= '~' ? character : '?';
    }
    return text + (field.size() > MaxQuotedBytes ? "...\"" : "\"");
}

bool HasControlCharacter(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte < 0x20 || byte == 0x7F;
    });
}

} // namespace

Recording RecordingParser::ReadFile(const std::filesystem::path& file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        throw StartError(file.string() + ": is a folder, not a recording.");
    }
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw StartError(file.string() + ": the recording can't be opened (" + std::strerror(errno) + ").");
    }
    std::string text;
    std::array<char, 65536> part{};
    while (stream.read(part.data(), part.size()) || stream.gcount() > 0) {
        text.append(part.data(), static_cast<std::size_t>(stream.gcount()));
        if (text.size() > MaxFileBytes) {
            throw StartError(file.string() + ": is larger than the " + std::to_string(MaxFileBytes >> 20) +
                             " MiB that a recording may have.");
        }
    }
    if (stream.bad()) {
        throw StartError(file.string() + ": the recording can't be read (" + std::strerror(errno) + ").");
    }
    return Parse(text, file.string());
}

Recording RecordingParser::Parse(std::string_view text, const std::string& file) {
    return RecordingParser(text, file).Run();
}

RecordingParser::RecordingParser(std::string_view text, const std::string& file)
    : rest(text)
    , file(file) {
    if (rest.substr(0, ByteOrderMark.size()) == ByteOrderMark) {
        rest.remove_prefix(ByteOrderMark.size());
    }
}

Recording RecordingParser::Run() {
    ParseHeader();
    while (!AtEnd()) {
        ParseRow(NextLine());
    }
    if (recording.frames.empty()) {
        Refuse("the recording holds no frame");
    }
    return std::move(recording);
}

void RecordingParser::ParseHeader() {
    const std::string_view header = NextLine();
    if (header == ProfilesHeader) {
        recording.kind = RecordingKind::Profiles;
    } else if (header == ValuesHeader) {
        recording.kind = RecordingKind::Values;
    } else {
        Refuse("unknown header " + Quoted(header) + ", expected \"" + std::string(ProfilesHeader) + "\" or \"" +
               std::string(ValuesHeader) + "\"");
    }
}

void RecordingParser::ParseRow(std::string_view line) {
    std::array<std::string_view, 3> fields;
    for (std::size_t field = 0; field < fields.size(); ++field) {
        const std::size_t comma = line.find(',');
        const bool last = field + 1 == fields.size();
        if ((comma == std::string_view::npos) != last) {
            Refuse("a row has three fields");
        }
        fields[field] = line.substr(0, comma);
        line.remove_prefix(last ? line.size() : comma + 1);
    }
    BeginFrame(FrameNumber(fields[0]));
    if (recording.kind == RecordingKind::Profiles) {
        AddPoint(fields[1], fields[2]);
    } else {
        AddValue(fields[1], fields[2]);
    }
}

void RecordingParser::BeginFrame(std::uint64_t number) {
    if (!recording.frames.empty() && number < frameNumber) {
        Refuse("frame " + std::to_string(number) + " goes backwards, the row before has frame " +
               std::to_string(frameNumber));
    }
    if (recording.frames.empty() || number > frameNumber) {
        if (recording.frames.size() == MaxFrames) {
            Refuse("more than " + std::to_string(MaxFrames) + " frames");
        }
        recording.frames.emplace_back();
    }
    frameNumber = number;
}

void RecordingParser::AddPoint(std::string_view x, std::string_view z) {
    recording.frames.back().points.push_back({Number(x, "x"), Number(z, "z")});
}

void RecordingParser::AddValue(std::string_view name, std::string_view value) {
    const std::uint32_t index = NameIndex(name);
    if (lastSeen[index] == recording.frames.size()) {
        Refuse("name " + Quoted(name) + " stands twice in frame " + std::to_string(frameNumber));
    }
    lastSeen[index] = recording.frames.size();
    recording.frames.back().values.push_back({index, Number(value, "value")});
}

std::uint32_t RecordingParser::NameIndex(std::string_view name) {
    if (const auto known = nameIndices.find(name); known != nameIndices.end()) {
        return known->second;
    }
    if (name.empty()) {
        Refuse("the name is empty");
    }
    if (name == ReservedName) {
        Refuse("the name \"" + std::string(name) + "\" is taken, each frame has a stamp of its own");
    }
    if (name.size() > MaxNameBytes) {
        Refuse("name " + Quoted(name) + " is longer than " + std::to_string(MaxNameBytes) + " bytes");
    }
    if (!Vor::IsUtf8(name) || HasControlCharacter(name)) {
        Refuse("name " + Quoted(name) + " isn't text in UTF-8");
    }
    if (recording.names.size() == MaxNames) {
        Refuse("more than " + std::to_string(MaxNames) + " different names");
    }
    const auto index = static_cast<std::uint32_t>(recording.names.size());
    recording.names.emplace_back(name);
    nameIndices.emplace(name, index);
    lastSeen.push_back(0);
    return index;
}

std::uint64_t RecordingParser::FrameNumber(std::string_view field) const {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), number);
    if (error != std::errc() || end != field.data() + field.size()) {
        Refuse("frame " + Quoted(field) + " isn't a whole number from 0");
    }
    return number;
}

double RecordingParser::Number(std::string_view field, const char* column) const {
    double number = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), number);
    if (error != std::errc() || end != field.data() + field.size() || !std::isfinite(number)) {
        Refuse(std::string(column) + " " + Quoted(field) + " isn't a number");
    }
    return number;
}

bool RecordingParser::AtEnd() const {
    return rest.empty();
}

std::string_view RecordingParser::NextLine() {
    ++lineNumber;
    const std::size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    if (line.size() > MaxLineBytes) {
        Refuse("the line is longer than " + std::to_string(MaxLineBytes) + " bytes");
    }
    return line;
}

void RecordingParser::Refuse(const std::string& reason) const {
    throw StartError(file + ", line " + std::to_string(lineNumber) + ": " + reason + ".");
}

} // namespace Sensor::Scan
