#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Sensor::Scan {

/// A point of a profile, in millimetres.
struct Point {
    double x;
    double z;
};

/// The value of a named measurement; `name` is an index into `Recording::names`.
struct NamedValue {
    std::uint32_t name;
    double value;
};

/// One scan. In a recording of profiles it has at least one point; in a recording of named values it has values, each
/// name at most once.
struct Frame {
    std::vector<Point> points;
    std::vector<NamedValue> values;
};

enum class RecordingKind { Profiles, Values };

/// The input of a scan.
struct Recording {
    RecordingKind kind = RecordingKind::Profiles;
    /// The names of a recording of named values, in order of first appearance.
    std::vector<std::string> names;
    /// At least one.
    std::vector<Frame> frames;

    /// Points or values of all frames.
    std::size_t RowCount() const {
        std::size_t count = 0;
        for (const Frame& frame : frames) {
            count += frame.points.size() + frame.values.size();
        }
        return count;
    }
};

} // namespace Sensor::Scan
