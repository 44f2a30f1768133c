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

/// What one scan saw: points in a recording of profiles, at least one; values in a recording of named values, each
/// name at most once.
struct Frame {
    std::vector<Point> points;
    std::vector<NamedValue> values;
};

enum class RecordingKind { Profiles, Values };

/// The input of a scan, unchanged once it is made.
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
