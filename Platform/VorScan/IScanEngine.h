#pragma once

#include <map>
#include <memory>
#include <typeinfo>

namespace VorScan {

/// A scan engine's service interfaces.
class IScanEngine {
public:
    /// By the type information of the interface. Each pointer was made from a shared pointer to exactly that interface.
    using ServiceRegistry = std::map<const std::type_info*, std::weak_ptr<void>>;

    virtual ~IScanEngine() = default;

    virtual const ServiceRegistry& Services() const = 0;
};

} // namespace VorScan
