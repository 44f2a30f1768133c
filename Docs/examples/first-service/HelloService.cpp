#include "Services/Common/PluginEntry.h"
#include "Vor/Logging.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"

#include <memory>
#include <string>

namespace {

using namespace VorControl::ControlProtocol;

/// The settings, which are saved with the job.
class HelloParams : public Vor::Params::Group {
public:
    HelloParams() {
        Register("greeting", greeting, "Greeting");
        Reset();
    }

    void Reset() { greeting = "Hello"; }

    Vor::Params::Value<std::string> greeting;
};

class HelloService : public ProtocolBase {
public:
    explicit HelloService(const ControlProtocolEnviron& environ)
        : ProtocolBase(environ) {
        Init({.params = &params});
    }

    void Start() override {
        Vor::LogUser(Vor::UserInfo, "Hello", "%s", params.greeting.Get());
        UpdateProtocolStatus(ProtocolStatus::Running);
    }
    void Stop() override { UpdateProtocolStatus(ProtocolStatus::Stopped); }
    void ParamsReset() override { params.Reset(); }

private:
    HelloParams params;
};

} // namespace

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    VorControl::ControlInfo info;
    info.SetTypeName("hello").SetDisplayName("Hello");
    plugin.Add(info, std::make_shared<ServiceFactory<HelloService>>());
}
