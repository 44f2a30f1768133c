#include "Net/BufferedSession.h"
#include "Services/Common/PluginEntry.h"
#include "Services/Common/TcpService.h"

#include <algorithm>
#include <memory>

namespace {

using namespace Services::Common;

/// Answers each byte with itself.
class EchoSession : public Net::BufferedSession {
public:
    explicit EchoSession(ServiceCounters& counters)
        : BufferedSession(1024, 1024)
        , counters(counters) {}

    void SetMayWrite(bool /*value*/) override {}
    std::size_t Process() override {
        const std::size_t size = std::min(Input().size(), OutputSpace().size());
        Append(Input().first(size));
        Consume(size);
        counters.requests += size;
        return size;
    }
    bool Broken() const override { return false; }

private:
    ServiceCounters& counters;
};

class EchoParams : public TcpServerParams {
public:
    EchoParams() {
        RegisterPlace();
        RegisterLimits("A client that sends nothing in this time is closed. 0 leaves it open.",
                       "Without a meaning here: there is nothing to write.");
        EchoParams::Reset();
    }

    void Reset() override {
        ResetPlace(7007);
        ResetLimits(60);
    }
};

class EchoService : public TcpService {
public:
    explicit EchoService(const VorControl::ControlProtocol::ControlProtocolEnviron& environ)
        : TcpService(environ) {
        Init({}, {.threadName = "EchoNet", .params = std::make_shared<EchoParams>(), .properties = properties});
    }
    ~EchoService() override { CloseServer(); }

protected:
    std::unique_ptr<Net::ITcpSession> MakeSession(bool /*mayWrite*/) override {
        return std::make_unique<EchoSession>(Counters());
    }

private:
    TcpServerProperties properties{"failed", "Failed"};
};

} // namespace

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    VorControl::ControlInfo info;
    info.SetTypeName("echo").SetDisplayName("Echo");
    plugin.Add(info, std::make_shared<ServiceFactory<EchoService>>());
}
