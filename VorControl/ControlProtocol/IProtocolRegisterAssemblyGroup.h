#pragma once

#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"

#include <memory>
#include <string>
#include <vector>

namespace VorControl::ControlProtocol {

/// The assemblies of a service, by id. All of them are added before the group is used.
class IProtocolRegisterAssemblyGroup {
public:
    virtual ~IProtocolRegisterAssemblyGroup() = default;

    /// Throws yERROR_PARAMETER when the group has an assembly of this id.
    virtual void Add(std::shared_ptr<IProtocolRegisterAssembly> assembly) = 0;
    virtual bool Empty() const = 0;
    /// The ids in ascending order.
    virtual std::vector<std::string> List() const = 0;
    virtual bool HasRegisterAssembly(const char* id) const = 0;
    /// Throws yERROR_PARAMETER without an id, yERROR_NOT_FOUND when there is no such assembly.
    virtual std::shared_ptr<IProtocolRegisterAssembly> RegisterAssembly(const char* id) const = 0;
    /// The commands of that assembly, valid as long as the group. Throws as RegisterAssembly does.
    virtual VorCommon::ICommandTarget& CommandTarget(const char* id) const = 0;
    /// The data sources of all assemblies, in order of their first use, without duplicates.
    virtual std::vector<std::string> DataSourceList() const = 0;
    /// Owned by the assembly. Empty for an unknown id. The id must not be null.
    virtual const char* DisplayName(const char* id) const = 0;
};

} // namespace VorControl::ControlProtocol
