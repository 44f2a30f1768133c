#pragma once

#include "Vor/AsyncTimer.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace VorCommon {
class ProblemsManager;
}

namespace Sensor::Resources {

/// A problem from when it was first seen on. One that is removed and added again meanwhile, as by a service that is
/// started again and again, is the same.
struct ListedProblem {
    std::uint64_t id = 0;
    std::string since = {}; ///< UTC
    std::string severity;
    std::string source; ///< the path of what has the problem; empty when that isn't known
    std::string title;
    std::string text;
    std::string help; ///< what to do; may be empty

    /// Whether it says the same.
    bool IsLike(const ListedProblem& other) const;
};

/// The problems of the sensor, and who wants to hear of them. Main loop only.
class ProblemList {
public:
    static constexpr unsigned long long Period = 250'000;

    /// `changed` gets {"op":"raised", ...} with the members of a new problem, and {"op":"cleared","id":...}. The
    /// manager outlives this.
    ProblemList(const VorCommon::ProblemsManager& manager, std::function<void(const nlohmann::json& change)> changed);

    /// The present ones, in order of their ids.
    const std::vector<ListedProblem>& Update();

private:
    const VorCommon::ProblemsManager& manager;
    const std::function<void(const nlohmann::json& change)> changed;
    std::vector<ListedProblem> problems;
    std::uint64_t lastId = 0;
    Vor::AsyncTimer timer;
};

} // namespace Sensor::Resources
