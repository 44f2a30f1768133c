#include "Sensor/Scan/PartGenerator.h"

#include <cmath>

namespace Sensor::Scan {

namespace {

constexpr int FrameCount = 120;
constexpr int PointCount = 161;

/// Lengths are whole micrometres, so that the result doesn't depend on the machine's rounding.
constexpr int Left = -20000;
constexpr int Pitch = 250;
constexpr int Belt = -1500;
constexpr int PartLeft = -14000;
constexpr int PartRight = 12000;
constexpr int StepAt = -4000;
constexpr int LowHeight = 5000;
constexpr int HighHeight = 8000;
constexpr int RidgeHalfWidth = 1500;
constexpr int RidgeHeight = 2000;
constexpr int RidgeStart = -2000;
constexpr int RidgeTravel = 100;
constexpr int NoiseAmplitude = 20;

/// SplitMix64 (Steele, Lea and Flood, 2014).
class Noise {
public:
    int Next() {
        state += 0x9E3779B97F4A7C15;
        std::uint64_t mixed = state;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
        mixed ^= mixed >> 31;
        return static_cast<int>(mixed % (2 * NoiseAmplitude + 1)) - NoiseAmplitude;
    }

private:
    std::uint64_t state = 1;
};

int Height(int x, int frame) {
    if (x < PartLeft || x > PartRight) {
        return Belt;
    }
    const int ridgeAt = RidgeStart + RidgeTravel * frame;
    const int fromRidge = std::abs(x - ridgeAt);
    const int ridge = fromRidge < RidgeHalfWidth ? RidgeHeight - RidgeHeight * fromRidge / RidgeHalfWidth : 0;
    return (x < StepAt ? LowHeight : HighHeight) + ridge;
}

} // namespace

Recording GeneratePart() {
    Recording recording;
    Noise noise;
    for (int index = 0; index < FrameCount; ++index) {
        Frame frame;
        frame.points.reserve(PointCount);
        for (int point = 0; point < PointCount; ++point) {
            const int x = Left + Pitch * point;
            const int z = Height(x, index) + noise.Next();
            frame.points.push_back({x / 1000.0, z / 1000.0});
        }
        recording.frames.push_back(std::move(frame));
    }
    return recording;
}

} // namespace Sensor::Scan
