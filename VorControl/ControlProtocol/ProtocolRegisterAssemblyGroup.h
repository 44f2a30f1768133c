#pragma once

#include "VorApi/Handle.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssemblyGroup.h"
#include "yApi/yLock.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VorControl::ControlProtocol {

class ProtocolRegisterAssemblyGroup : public IProtocolRegisterAssemblyGroup {
public:
    /// Throws the status of a lock that can't be made.
    ProtocolRegisterAssemblyGroup();
    ProtocolRegisterAssemblyGroup(const ProtocolRegisterAssemblyGroup&) = delete;
    ProtocolRegisterAssemblyGroup& operator=(const ProtocolRegisterAssemblyGroup&) = delete;

    void Add(std::shared_ptr<IProtocolRegisterAssembly> assembly) override;
    bool Empty() const override;
    std::vector<std::string> List() const override;
    bool HasRegisterAssembly(const char* id) const override;
    std::shared_ptr<IProtocolRegisterAssembly> RegisterAssembly(const char* id) const override;
    VorCommon::ICommandTarget& CommandTarget(const char* id) const override;
    std::vector<std::string> DataSourceList() const override;
    const char* DisplayName(const char* id) const override;

private:
    std::shared_ptr<IProtocolRegisterAssembly> FindRegisterAssembly(const char* id) const;

    /// Guards the map while it is filled and searched; Empty and DisplayName read the map without it. No assembly is
    /// called under it, since a thread that holds the lock of an assembly may search for assemblies here.
    Vor::Handle<yLock, yLock_Destroy> lock;
    std::map<std::string, std::shared_ptr<IProtocolRegisterAssembly>> assemblies;
};

} // namespace VorControl::ControlProtocol
