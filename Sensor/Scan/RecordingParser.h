#pragma once

#include "Sensor/Scan/Recording.h"
#include "Sensor/StartError.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>

namespace Sensor::Scan {

/// Reads a recording: comma-separated text with one header line, `frame,x,z` (a point a row, millimetres) or
/// `frame,name,value` (a named value a row). The rows of a frame are together, and frame numbers ascend, possibly with
/// gaps. Lines end with LF or CR LF, fields are unquoted, no value is named "stamp", a byte order mark is skipped.
/// Everything else is refused with a StartError of the form "FILE, line N: reason".
class RecordingParser {
public:
    /// A recording that exceeds one of these limits is refused.
    static constexpr std::size_t MaxFileBytes = 64U << 20;
    static constexpr std::size_t MaxFrames = 1000000;
    static constexpr std::size_t MaxLineBytes = 1024;
    static constexpr std::size_t MaxNameBytes = 128;
    static constexpr std::size_t MaxNames = 1024;

    static Recording ReadFile(const std::filesystem::path& file);

    /// `file` is the name of the text in errors.
    static Recording Parse(std::string_view text, const std::string& file);

private:
    RecordingParser(std::string_view text, const std::string& file);

    Recording Run();
    void ParseHeader();
    void ParseRow(std::string_view line);
    void BeginFrame(std::uint64_t number);
    void AddPoint(std::string_view x, std::string_view z);
    void AddValue(std::string_view name, std::string_view value);
    std::uint32_t NameIndex(std::string_view name);
    std::uint64_t FrameNumber(std::string_view field) const;
    double Number(std::string_view field, const char* column) const;

    bool AtEnd() const;
    std::string_view NextLine();
    [[noreturn]] void Refuse(const std::string& reason) const;

    std::string_view rest;
    const std::string& file;
    std::size_t lineNumber = 0;
    std::uint64_t frameNumber = 0;
    std::unordered_map<std::string_view, std::uint32_t> nameIndices;
    /// For each name the number of frames when it was read last, to find it twice in one frame.
    std::vector<std::size_t> lastSeen;
    Recording recording;
};

} // namespace Sensor::Scan
