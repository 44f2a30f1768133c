#pragma once

#include <string>
#include <utility>

namespace VorCommon {

class ActionInfo {
public:
    ActionInfo(std::string id, std::string displayName)
        : id(std::move(id))
        , displayName(std::move(displayName)) {}

    const std::string& Id() const { return id; }
    const std::string& DisplayName() const { return displayName; }

private:
    std::string id;
    std::string displayName;
};

} // namespace VorCommon
