#pragma once

#include "SampleParams.h"
#include "SampleProperties.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "VorMsg/ResultSet.h"

#include <memory>
#include <vector>

namespace Services::Sample {

/// The smallest useful service: it keeps the last value of each measurement in its registers, as a client would read
/// them, and publishes them in its property `registers`. A real service serves them over its protocol instead.
class SampleService : public VorControl::ControlProtocol::ProtocolBase {
public:
    explicit SampleService(const VorControl::ControlProtocol::ControlProtocolEnviron& environ);

    /// Required of every service.
    void Start() override;
    void Stop() override;

    /// Required of a service with parameters: without it a reset leaves them as they are.
    void ParamsReset() override;
    /// Optional: without it changed parameters apply from the next Start on.
    void ParamsUpdate() override;

    /// Required of a service with register assemblies: in the base class both throw.
    void ConfigureDefaultRegisterAssembly() override;
    void RegisterAssemblyUpdate(const char* assemblyId) override;

    /// Required of a service that uses scan results. Called on the service's own thread.
    void ProcessResultSets(void* resultSets) override;

private:
    /// Sizes the registers for the blocks, and writes each block without a value.
    void Rebuild();
    void Process(ResultSet set);
    void SetProperties(std::vector<unsigned char> bytes, unsigned long long addedResults);

    SampleProperties properties;
    SampleParams params;
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterAssemblyBase> assembly;
    VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup assemblies;

    /// The rest is guarded by the assembly's lock.
    std::vector<unsigned char> registers;
    unsigned int everyNth = 1;
    unsigned int skipped = 0;
};

} // namespace Services::Sample
