#pragma once

#include "VorApi/ICallableResource.h"
#include "VorControl/Protocol/ControlResourceBase.h"

namespace VorControl::Protocol {

/// The commands that change a register assembly.
class ControlRegisterAssemblyCommandResource : public ControlResourceBase, public VorApi::ICallableResource {
public:
    using ControlResourceBase::ControlResourceBase;

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    using ICallableResource::Invoke;
    VorApi::VorDataTree Invoke(const VorApi::RequestInfoEx& request, const VorApi::VorDataTree& data) override;

private:
    struct Tokens {
        const std::string& service;
        const std::string& assembly;
    };

    static Tokens ParseTokensFromPath(const VorApi::RequestInfo& request);
    /// Fails with yERROR_NOT_FOUND for a service without register assemblies.
    static VorCommon::ICommandTarget& CommandTarget(const IControlInstance& instance, const std::string& assemblyId);
};

} // namespace VorControl::Protocol
