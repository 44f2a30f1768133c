#pragma once

#include <string>
#include <utility>

namespace VorScan {

class ScanEngineInfo {
public:
    explicit ScanEngineInfo(std::string typeName)
        : typeName(std::move(typeName)) {}

    const std::string& TypeName() const { return typeName; }

private:
    std::string typeName;
};

} // namespace VorScan
