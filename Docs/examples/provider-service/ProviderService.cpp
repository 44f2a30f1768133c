#include "Services/Common/JobProtocol.h"
#include "Services/Common/PluginEntry.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <memory>
#include <string>

namespace {

using namespace VorControl::ControlProtocol;

class ProviderParams : public Vor::Params::Group {
public:
    ProviderParams() {
        Register("greeting", greeting, "Greeting");
        Reset();
    }

    void Reset() { greeting = "Hello"; }

    Vor::Params::Value<std::string> greeting;
};

class ProviderService : public Services::Common::JobProtocol {
public:
    explicit ProviderService(const ControlProtocolEnviron& environ)
        : JobProtocol(environ) {
        Init({.params = params});
    }

    void Start() override {
        Greet();
        SetIsRunning(true);
        UpdateProtocolStatus(ProtocolStatus::Running);
    }
    void Stop() override {
        SetIsRunning(false);
        UpdateProtocolStatus(ProtocolStatus::Stopped);
    }
    void ParamsReset() override { params->Reset(); }

protected:
    /// Called once for each job and each change, with whole parameters.
    void ApplyParams() override {
        if (IsRunning()) {
            Greet();
        }
    }

private:
    void Greet() const {
        if (params->greeting.Get().empty()) {
            Vor::Throw(yERROR_PARAMETER, "the greeting is empty");
        }
        Vor::LogUser(Vor::UserInfo, "Provider", "%s", params->greeting.Get());
    }

    const std::shared_ptr<ProviderParams> params = std::make_shared<ProviderParams>();
};

} // namespace

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    VorControl::ControlInfo info;
    info.SetTypeName("provider").SetDisplayName("Provider");
    plugin.Add(info, std::make_shared<ServiceFactory<ProviderService>>());
}
