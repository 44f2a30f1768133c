#pragma once

#include <map>
#include <memory>
#include <string>

namespace VorCommon {

/// The providers of one kind that a scan engine offers. An engine's registry holds it under the type information of
/// this very class, so that all libraries must share one: it has default visibility.
template <class T>
class __attribute__((visibility("default"))) IProviderManager {
public:
    virtual ~IProviderManager() = default;

    /// By provider id. A provider may be gone.
    virtual std::map<std::string, std::weak_ptr<T>> Providers() const = 0;
};

} // namespace VorCommon
