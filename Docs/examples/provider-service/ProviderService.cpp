#include "Services/Common/PluginEntry.h"
#include "Vor/Logging.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"

#include <memory>
#include <string>

namespace {

using namespace VorControl::ControlProtocol;
using VorCommon::PersistDomain;

class ProviderParams : public Vor::Params::Group {
public:
    ProviderParams() {
        Register("greeting", greeting, "Greeting");
        Reset();
    }

    void Reset() { greeting = "Hello"; }

    Vor::Params::Value<std::string> greeting;
};

class ProviderService : public ProtocolBase {
public:
    explicit ProviderService(const ControlProtocolEnviron& environ)
        : ProtocolBase(environ)
        , provider(std::make_shared<VorControl::Providers::ControlPersistenceProvider>(*this)) {
        Init({.params = params.get()});
        provider->RegisterParams(PersistDomain::Job);
    }

    void Start() override {
        Greet();
        UpdateProtocolStatus(ProtocolStatus::Running);
    }
    void Stop() override { UpdateProtocolStatus(ProtocolStatus::Stopped); }

    /// What the service keeps, and where. It keeps nothing in other domains.
    std::shared_ptr<VorControl::Providers::IControlPersistenceProvider> PersistenceProvider() override {
        return provider;
    }
    std::shared_ptr<Vor::Params::Group> Params(PersistDomain domain) const override {
        return domain == PersistDomain::Job ? params : nullptr;
    }
    const char* ParamsVersion(PersistDomain domain) const override {
        return domain == PersistDomain::Job ? "1.0" : nullptr;
    }

protected:
    void ParamsResetImpl(PersistDomain /*domain*/) override { params->Reset(); }
    /// What a job holds is written to what Begin returns; at End it is whole.
    std::shared_ptr<Vor::Params::Group> BeginUpdateParamsImpl(PersistDomain domain, const char* /*version*/) override {
        return Params(domain);
    }
    void EndUpdateParamsImpl(PersistDomain /*domain*/, const char* /*version*/) override { Greet(); }

private:
    void Greet() const { Vor::LogUser(Vor::UserInfo, "Provider", "%s", params->greeting.Get()); }

    const std::shared_ptr<ProviderParams> params = std::make_shared<ProviderParams>();
    const std::shared_ptr<VorControl::Providers::ControlPersistenceProvider> provider;
};

} // namespace

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    VorControl::ControlInfo info;
    info.SetTypeName("provider").SetDisplayName("Provider");
    plugin.Add(info, std::make_shared<ServiceFactory<ProviderService>>());
}
