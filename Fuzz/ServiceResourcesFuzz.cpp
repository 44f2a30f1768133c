// Any requests for the resources of a service and of an open stream of events, each but the last with a byte 0 behind
// it: "METHOD TARGET", lines with fields, an empty line and the body. "STREAM" at the end of a target is the stream's
// name. What is refused changes nothing, and the service's revision rises when its configuration changes or it is
// started or stopped, which only an update does, perhaps again.

#include "FuzzedService.h"
#include "ResourceClient.h"
#include "Sensor/Http/EventStreams.h"
#include "Sensor/Http/ResourceGateway.h"
#include "Sensor/Resources/EventsResource.h"
#include "Sensor/Resources/Revisions.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/Params/Group.h"
#include "VorApi/ResourceRouter.h"
#include "VorApi/RoutedResource.h"
#include "VorCommon/CommandInfo.h"
#include "VorCommon/ICommandTarget.h"
#include "VorCommon/PlatformAttributes.h"
#include "VorCommon/ProblemsManager.h"
#include "VorCommon/RuntimeCache.h"
#include "VorCommon/UpdateGate.h"
#include "VorControl/Control/ControlInfo.h"
#include "VorControl/Control/ControlManager.h"
#include "VorControl/Control/ControlModuleEnviron.h"
#include "VorControl/Control/ControlPlugin.h"
#include "VorControl/Control/ControlRegistry.h"
#include "VorControl/Control/ControlScanResults.h"
#include "VorControl/Control/IControlFactory.h"
#include "VorControl/Control/IControlMetrics.h"
#include "VorControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "VorControl/Protocol/ControlDir.h"
#include "VorPlugin/PluginManager.h"
#include "VorRest/RequestProcessor.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace {

using namespace Fuzz;
using namespace Sensor::Http;
using nlohmann::json;

constexpr std::size_t MaxRequests = 8;

/// The command "echo", whose result are its arguments. It is refused without a name.
class EchoCommand : public VorCommon::ICommandTarget {
public:
    std::vector<VorCommon::CommandInfo> ListCommands() const override { return {{"echo", "Echo"}}; }
    std::shared_ptr<Vor::Params::Group> GetCommandParams(const std::string& id) const override {
        if (id != "echo") {
            Vor::Throw(yERROR_NOT_FOUND);
        }
        return std::make_shared<ClientSettings>();
    }
    std::shared_ptr<Vor::Params::Group> InvokeCommand(const std::string&, Vor::Params::Group& params) override {
        const auto& arguments = dynamic_cast<const ClientSettings&>(params);
        if (arguments.name.Get().empty()) {
            Vor::Throw(yERROR_STATE, "There is no name.");
        }
        auto result = std::make_shared<ClientSettings>();
        result->name = arguments.name.Get();
        result->ports = arguments.ports.Get();
        return result;
    }
    bool IsCommandSupported(const std::string& id) override { return id == "echo"; }
};

/// A service with an output map and a command, too.
class MapService : public Service {
public:
    using Service::Service;

    VorCommon::ICommandTarget* CommandTarget() override { return &command; }

    using ProtocolBase::Outputs;
    std::shared_ptr<VorControl::ControlProtocol::IProtocolOutput> Outputs(VorCommon::PersistDomain) override {
        return map;
    }

protected:
    std::shared_ptr<VorControl::ControlProtocol::IProtocolOutput> BeginUpdateOutputsMapImpl(VorCommon::PersistDomain,
                                                                                            const char*) override {
        return map;
    }

private:
    EchoCommand command;
    const std::shared_ptr<VorControl::ControlProtocol::IProtocolOutput> map =
        std::make_shared<VorControl::ControlProtocol::StandardProtocolOutputMap>(8, 0, 99);
};

class Factory : public VorControl::IControlFactory {
public:
    std::shared_ptr<VorControl::ControlProtocol::IProtocol>
    Create(const VorControl::ControlProtocol::ControlProtocolEnviron& environ) override {
        return std::make_shared<MapService>(environ);
    }
};

class NoMetrics : public VorControl::IControlMetrics {
public:
    const VorCommon::IMetricsSource& LastReport(const VorControl::ControlMetricsKey&) override {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    ReportEvent::CallbackId AddReportHandler(std::function<void(const VorCommon::IMetricsSource&)>,
                                             const VorControl::ControlMetricsKey&) override {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    void RemoveReportHandler(ReportEvent::CallbackId, const VorControl::ControlMetricsKey&) override {}
};

std::unique_ptr<VorPlugin::PluginLib> MakeLib() {
    const auto plugin = VorControl::ControlPlugin::Create();
    VorControl::ControlInfo info;
    info.SetTypeName("fuzzed").SetDisplayName("Fuzzed");
    plugin->Add(info, std::make_shared<Factory>());
    auto lib = std::make_unique<VorPlugin::PluginLib>("");
    lib->Add(plugin);
    return lib;
}

/// The service "fuzzed" behind a gateway, with a stream of its notices.
class Bench {
public:
    Bench() {
        gateway = std::make_unique<ResourceGateway>(ResourceGateway::Settings{}, router, requests, revisions, streams);
        const HttpResponse opened = Ask(
            *gateway, loop, {"GET", "/events?topic=notice", {{"Host", "localhost"}, {"Accept", "text/event-stream"}}});
        stream = opened.stream;
        Require(stream != nullptr);
        std::string hello;
        stream->Read(hello);
        const std::size_t begin = hello.find("data: ") + 6;
        name = json::parse(hello.substr(begin, hello.find('\n', begin) - begin))["stream"];
    }

    HttpResponse Send(HttpRequest request) {
        const std::string placeholder = "STREAM";
        if (request.target.ends_with(placeholder)) {
            request.target.replace(request.target.size() - placeholder.size(), placeholder.size(), name);
        }
        HttpResponse response = Ask(*gateway, loop, std::move(request));
        Require(gate.Depth() == 0);
        return response;
    }

    json Get(const std::string& path) {
        const HttpResponse response = Send({"GET", path, {{"Host", "localhost"}}});
        Require(response.status == 200);
        return json::parse(*response.body);
    }

    struct State {
        json configuration;
        bool enabled;
        json topics;
        std::string tag;
    };
    State GetState() {
        const json service = Get("/controls/fuzzed");
        return {{service["parameters"], Get("/controls/fuzzed/outputs")["map"],
                 Get("/controls/fuzzed/registerAssemblies/registerAssembly-0")["blocks"]},
                service["enabled"],
                Get("/events/" + name)["topics"],
                revisions.TagOf("/controls/fuzzed").value()};
    }

private:
    static inline Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};

    VorControl::ControlModuleEnviron Record() {
        VorControl::ControlModuleEnviron record;
        record.platformAttributes = &platform;
        record.runtimeCache = &runtimeCache;
        record.problemsManager = &problems;
        record.updateGate = &gate;
        record.requestProcessor = &requests;
        return record;
    }

    VorPlugin::PluginManager plugins;
    const VorPlugin::PluginLib& lib = plugins.Add(MakeLib());
    VorCommon::PlatformAttributes platform{VorCommon::PlatformKind::VirtualSensor};
    VorCommon::RuntimeCache runtimeCache;
    VorCommon::ProblemsManager problems;
    VorCommon::UpdateGate gate;
    VorControl::ControlScanResults scanResults{nullptr, nullptr};
    VorApi::ResourceRouter router;
    VorRest::RequestProcessor requests{router};
    NoMetrics metrics;
    VorControl::ControlRegistry registry{plugins};
    VorControl::ControlManager manager{registry, scanResults, Record()};
    VorControl::ControlDir directory{router, manager, metrics};
    Sensor::Resources::Revisions revisions{"b0", manager};
    EventStreams streams{
        {.boot = "b0", .router = router, .requests = requests, .revisions = revisions, .services = {"fuzzed"}}};
    VorApi::RoutedResource<Sensor::Resources::EventsResource> events{router, "/events/:stream", streams};
    std::unique_ptr<ResourceGateway> gateway;
    std::shared_ptr<IBodyStream> stream;
    std::string name;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Vor::Logging::SetMinimumLevel(Vor::LevelError);
    std::string_view requests(reinterpret_cast<const char*>(data), size);
    Bench bench;
    Bench::State before = bench.GetState();
    for (std::size_t i = 0; i < MaxRequests && !requests.empty(); ++i) {
        const HttpRequest request = ParseRequest(SplitOff(requests, '\0'));
        const HttpResponse response = bench.Send(request);
        Bench::State after = bench.GetState();
        const bool hasChanged = before.configuration != after.configuration || before.enabled != after.enabled;
        const bool isRevised = before.tag != after.tag;
        const bool isStartedAnew = request.method == "PATCH" && after.enabled;
        Require(hasChanged ? isRevised : !isRevised || isStartedAnew);
        if (response.status >= 400) {
            Require(!hasChanged && !isRevised && before.topics == after.topics);
        }
        before = std::move(after);
    }
    return 0;
}
