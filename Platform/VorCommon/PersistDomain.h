#pragma once

namespace VorCommon {

/// A set of files that is initialised, loaded and saved as one.
enum class PersistDomain {
    Workspace = 1, ///< data of the sensor that stays when another job is loaded
    Job = 2,       ///< settings that follow the loaded job
};

/// "workspace", "job", or "unknown" for any other value.
inline const char* PersistDomain_Name(PersistDomain domain) {
    switch (domain) {
    case PersistDomain::Workspace:
        return "workspace";
    case PersistDomain::Job:
        return "job";
    }
    return "unknown";
}

} // namespace VorCommon
