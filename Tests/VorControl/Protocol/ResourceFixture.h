#pragma once

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/DomainService.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/RecordingScanResults.h"
#include "Tests/Support/TestService.h"
#include "Tests/VorControl/Protocol/FakeReporter.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorApi/ResourceRouter.h"
#include "VorControl/Control/ControlManager.h"
#include "VorControl/Control/ControlRegistry.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Protocol/ControlDir.h"
#include "VorRest/RequestProcessor.h"

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {

/// The commands "greet", with parameters and a result, "quiet", which returns nothing, and "fail".
class Commands : public VorCommon::ICommandTarget {
public:
    struct Greeting : Vor::Params::Group {
        Greeting() {
            Register("name", name);
            Register("times", times);
        }
        Vor::Params::Value<std::string> name{"nobody"};
        Vor::Params::Value<unsigned short> times{1};
    };
    struct Result : Vor::Params::Group {
        Result() { Register("text", text); }
        Vor::Params::Value<std::string> text;
    };

    std::vector<VorCommon::CommandInfo> ListCommands() const override {
        return {{"greet", "Greet"}, {"quiet", "Quiet"}, {"fail", "Fail"}};
    }
    std::shared_ptr<Vor::Params::Group> GetCommandParams(const std::string& id) const override {
        if (id != "greet" && id != "quiet" && id != "fail") {
            Vor::Throw(yERROR_NOT_FOUND, "no command %s", id);
        }
        return std::make_shared<Greeting>();
    }
    std::shared_ptr<Vor::Params::Group> InvokeCommand(const std::string& id, Vor::Params::Group& params) override {
        if (id == "fail") {
            Vor::Throw(yERROR_CONFLICT, "it failed");
        }
        const auto& greeting = dynamic_cast<const Greeting&>(params);
        auto result = std::make_shared<Result>();
        result->text = greeting.name.Get() + " " + std::to_string(greeting.times.Get());
        return id == "quiet" ? nullptr : result;
    }
    bool IsCommandSupported(const std::string&) override { return true; }
};

/// A service with everything: parameters, an output map, the assembly "a1" and commands.
class FullService : public DomainService {
public:
    explicit FullService(const VorControl::ControlProtocol::ControlProtocolEnviron& environ)
        : DomainService(environ) {
        AddAssembly("a1");
    }

    VorCommon::ICommandTarget* CommandTarget() override { return &commands; }
    void ParamsUpdate() override {
        calls.push_back("ParamsUpdate");
        if (onParamsUpdate) {
            onParamsUpdate();
        }
    }

    Commands commands;
    std::function<void()> onParamsUpdate;
};

/// A service without anything.
class BareService : public VorControl::ControlProtocol::ProtocolBase {
public:
    using ProtocolBase::ProtocolBase;

    void Start() override {}
    void Stop() override {}
};

/// The resources of the services "bare" and "full". The test's thread is the main loop's.
class ResourceFixture : public testing::Test {
protected:
    using Texts = std::vector<std::string>;

    ResourceFixture()
        : ResourceFixture([](TestPlugin&) {}) {}
    /// With further types, which `addTypes` adds to the plug-in.
    explicit ResourceFixture(const std::function<void(TestPlugin&)>& addTypes) {
        VorControl::ControlInfo info = TestPlugin::Info("full");
        info.SetDescription("All of it").AddCategory("c1").AddCategory("c2");
        info.SetHelpHtml("<b>h</b>").SetHelpUrl("http://h").SetIcon("image/png", {1, 2, 255});
        TestPlugin plugin;
        addTypes(plugin);
        plugin
            .Add(info,
                 [this](const VorControl::ControlProtocol::ControlProtocolEnviron& ofService) {
                     auto made = std::make_shared<FullService>(ofService);
                     service = made.get();
                     return made;
                 })
            .Add(TestPlugin::Info("bare"),
                 [](const VorControl::ControlProtocol::ControlProtocolEnviron& ofService) {
                     return std::make_shared<BareService>(ofService);
                 })
            .Publish(plugins);
        registry = std::make_unique<VorControl::ControlRegistry>(plugins);
        manager = std::make_unique<VorControl::ControlManager>(*registry, scanResults, environ.Record());
        directory = std::make_unique<VorControl::ControlDir>(router, *manager, reporter);
        service->calls.clear();
    }

    VorControl::IControlInstance& Instance(const std::string& id = "full") { return manager->GetInstance(id); }

    VorRest::Answer Ask(VorRest::Verb verb, const std::string& path, const nlohmann::json& body = nullptr,
                        bool wantsSchema = false) {
        std::optional<VorRest::Answer> answer;
        requests.Process({verb, path, VorApi::VorDataTree::FromJson(body), wantsSchema},
                         [&](const VorRest::Answer& given) { answer = given; });
        loop.RunReady();
        return answer.value();
    }

    /// The document of a success; what the resource throws otherwise.
    VorApi::VorDataTree Document(VorRest::Verb verb, const std::string& path, const nlohmann::json& body = nullptr,
                                 bool wantsSchema = false) {
        const VorRest::Answer answer = Ask(verb, path, body, wantsSchema);
        if (answer.failure != nullptr) {
            std::rethrow_exception(answer.failure);
        }
        return answer.document;
    }
    VorApi::VorDataTree Read(const std::string& path) { return Document(VorRest::Verb::Read, path); }
    VorApi::VorDataTree ReadWithSchema(const std::string& path) {
        return Document(VorRest::Verb::Read, path, nullptr, true);
    }
    void Update(const std::string& path, const nlohmann::json& body) { Document(VorRest::Verb::Update, path, body); }
    VorApi::VorDataTree Invoke(const std::string& path, const nlohmann::json& body = nullptr) {
        return Document(VorRest::Verb::Invoke, path, body);
    }

    /// Relations as "embed item[] /controls/a", in their order.
    Texts RelationsOf(const std::string& path) {
        Texts texts;
        for (const auto& relation : Ask(VorRest::Verb::Read, path).relations) {
            const bool isEmbed = relation.kind == VorApi::ResponseInfoEx::Relation::Kind::Embed;
            texts.push_back((isEmbed ? "embed " : "link ") + relation.name + (relation.asArray ? "[] " : " ") +
                            relation.path);
            EXPECT_TRUE(relation.properties.IsNull());
        }
        return texts;
    }

    /// Records the notifications of the resource at the path as "2 /controls/a".
    void Listen(const std::string& path) {
        router.Find(path)->resource.NotificationEvent().Add(
            [this](VorApi::Notification code, VorApi::IResource&, const std::string& changed) {
                notifications.push_back(std::to_string(static_cast<int>(code)) + " " + changed);
            });
    }
    Texts NewNotifications() { return std::exchange(notifications, {}); }

    /// A resource called without a router, with these values in the path.
    template <class Resource>
    static Resource& As(VorApi::IResource& resource) {
        return dynamic_cast<Resource&>(resource);
    }
    VorApi::IResource& ResourceAt(const std::string& path) { return router.Find(path)->resource; }

    Vor::LogCapture log;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    VorPlugin::PluginManager plugins;
    ControlEnviron environ;
    VorApi::ResourceRouter router;
    VorRest::RequestProcessor requests{router};
    FakeReporter reporter;
    FullService* service = nullptr;
    RecordingScanResults scanResults;
    std::unique_ptr<VorControl::ControlRegistry> registry;
    std::unique_ptr<VorControl::ControlManager> manager;
    std::unique_ptr<VorControl::ControlDir> directory;
    Texts notifications;
};

} // namespace Tests
