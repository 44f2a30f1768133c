#pragma once

namespace VorControl::ControlProtocol {

/// What a block carries, for clients that choose among the block types of an assembly.
enum class RegisterBlockCategory : unsigned char {
    Unknown = 0,
    ControlInput = 1,
    ControlOutput = 2,
    System = 3,
    Scanner = 4,
    Stamp = 5,
    Measurement = 6,
    Image = 7,
    Spots = 8,
    String = 9,
    ProfilePointCloud = 10,
    UniformProfile = 11,
    SurfacePointCloud = 12,
    UniformSurface = 13,
    UserDataInput = 14,
};

} // namespace VorControl::ControlProtocol
