#pragma once

#include <map>
#include <string>
#include <utility>

namespace VorApi {

/// What a resource gets of a request: the values of the parameters in its path, decoded.
class RequestInfo {
public:
    using Keys = std::map<std::string, std::string>;

    explicit RequestInfo(Keys keys)
        : keys(std::move(keys)) {}

    /// The value of a path's parameter such as "protocol"; null when the path ends before it.
    const std::string* FindKey(const std::string& name) const {
        const auto found = keys.find(name);
        return found == keys.end() ? nullptr : &found->second;
    }

private:
    Keys keys;
};

} // namespace VorApi
