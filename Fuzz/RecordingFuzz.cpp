#include "Sensor/Scan/RecordingParser.h"
#include "Sensor/StartError.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/// Any text is refused, or is a recording with consistent frames.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const Sensor::Scan::Recording recording = Sensor::Scan::RecordingParser::Parse(
            std::string_view(reinterpret_cast<const char*>(data), size), "input.csv");
        if (recording.frames.empty()) {
            std::abort();
        }
        for (const Sensor::Scan::Frame& frame : recording.frames) {
            const bool profiles = recording.kind == Sensor::Scan::RecordingKind::Profiles;
            if (frame.points.empty() == profiles || frame.values.empty() != profiles) {
                std::abort();
            }
            for (const Sensor::Scan::NamedValue& value : frame.values) {
                if (value.name >= recording.names.size()) {
                    std::abort();
                }
            }
        }
    } catch (const Sensor::StartError&) {
    }
    return 0;
}
