#pragma once

#include "Sensor/Http/EventStreams.h"
#include "Sensor/Http/RequestCounts.h"
#include "Sensor/Http/ResponderTarget.h"
#include "Sensor/LogHistory.h"
#include "Sensor/Resources/Revisions.h"
#include "Sensor/Resources/SensorDir.h"
#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/Scan/VirtualScanEngine.h"
#include "Sensor/ServiceHost.h"
#include "Sensor/VirtualSensor.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/TestService.h"
#include "Vor/DocumentErrors.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorScan/Internal/ScanEngineInstance.h"
#include "VorScan/Internal/ScannerInstance.h"

#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Resources {

/// The way to a client of a stream whose text the test reads itself.
class NoConnection : public Http::Responder::Target {
public:
    void Respond(Http::HttpResponse) override {}
    bool IsWanted() const override { return false; }
    void Wake() override {}
};

/// A sensor with the services "a" and "b" and its resources. The test's thread is the main loop's.
class SensorFixture : public ::testing::Test {
protected:
    SensorFixture() {
        Tests::TestPlugin().Add("a", service).Add("b", other).Publish(host.Plugins());
        Build();
    }
    /// With the services of a plug-in instead.
    explicit SensorFixture(Tests::TestPlugin plugin) {
        plugin.Publish(host.Plugins());
        Build();
    }
    /// With the services of a folder of plug-ins instead.
    explicit SensorFixture(const std::filesystem::path& plugins) {
        host.LoadPlugins(plugins);
        Build();
    }

    void Build() {
        host.CreateServices();
        host.LoadDomains();
        revisions = std::make_unique<Revisions>("b0", host.Services(), &host.Tools());
        streams = std::make_unique<Http::EventStreams>(Http::EventStreams::Environ{.boot = "b0",
                                                                                   .router = host.Router(),
                                                                                   .requests = host.Requests(),
                                                                                   .revisions = *revisions,
                                                                                   .services = host.Services().List()});
        directory = std::make_unique<SensorDir>(host.Router(), Environ(), *streams);
    }

    SensorEnviron Environ() {
        return {.boot = "b0",
                .services = host.Services(),
                .persistence = host.Persistence(),
                .problems = host.Problems(),
                .sensor = sensor,
                .log = logHistory,
                .module = host.Module(),
                .requests = requests,
                .jobLoadedEvent = host.JobLoadedEvent(),
                .tools = host.Tools()};
    }

    /// Also waits for an answer that is given later.
    VorRest::Answer Ask(VorRest::Request request) { return AnswerTo(Begin(std::move(request))); }

    using Pending = std::shared_ptr<std::optional<VorRest::Answer>>;
    /// Begins a request, without waiting for an answer that is given later.
    Pending Begin(VorRest::Request request) {
        auto pending = std::make_shared<std::optional<VorRest::Answer>>();
        host.Requests().Process(std::move(request), [pending](const VorRest::Answer& given) { *pending = given; });
        loop.RunReady();
        return pending;
    }
    VorRest::Answer AnswerTo(const Pending& pending) {
        WaitFor([&] { return pending->has_value(); });
        return pending->value_or(VorRest::Answer());
    }
    /// Runs the loop until the condition holds.
    template <class Condition>
    void WaitFor(const Condition& condition) {
        while (!condition()) {
            if (!loop.WaitReady()) {
                ADD_FAILURE() << "It didn't come in time.";
                return;
            }
            loop.RunReady();
        }
    }

    /// The document of an operation once it has ended.
    nlohmann::json WaitForEnd(const std::string& path) {
        // Read in place: the loop doesn't run between a look at the state and the wait for the next event.
        const auto read = [&] { return host.Requests().Read(path, VorApi::VorDataTree(), "").ToJson(); };
        WaitFor([&] { return read().at("state") != "running"; });
        return read();
    }

    /// Posts to a command, with its arguments unless these are null.
    VorRest::Answer Invoke(const std::string& path, const nlohmann::json& arguments = nullptr) {
        return Ask({.verb = VorRest::Verb::Invoke, .path = path, .body = VorApi::VorDataTree::FromJson(arguments)});
    }
    static std::optional<Tests::Failure> FailureIn(const VorRest::Answer& answer) {
        return Tests::FailureOf([&] {
            if (answer.failure != nullptr) {
                std::rethrow_exception(answer.failure);
            }
        });
    }
    static yStatus StatusIn(const VorRest::Answer& answer) {
        const auto failure = FailureIn(answer);
        return failure ? failure->status : yOK;
    }
    static std::string TextIn(const VorRest::Answer& answer) {
        const auto failure = FailureIn(answer);
        return failure ? failure->text : "";
    }
    /// The places in the document that was refused.
    static std::vector<std::string> PlacesIn(const VorRest::Answer& answer) {
        std::vector<std::string> places;
        try {
            if (answer.failure != nullptr) {
                std::rethrow_exception(answer.failure);
            }
        } catch (const Vor::DocumentException& e) {
            for (const Vor::DocumentError& error : e.Errors()) {
                places.push_back(error.pointer);
            }
        }
        return places;
    }
    VorApi::VorDataTree Read(const std::string& path, bool withSchema = false) {
        const VorRest::Answer answer = Ask({VorRest::Verb::Read, path, {}, withSchema});
        if (answer.failure != nullptr) {
            std::rethrow_exception(answer.failure);
        }
        return answer.document;
    }

    VorScan::IScanner& Scanner() {
        return sensor.ScanEngines()
            .GetInstance(Scan::VirtualScanEngine::Id)
            .FindScanner(Scan::VirtualScanEngine::ScannerId)
            .Scanner();
    }

    /// Starts the scan unless it runs, makes frames, and waits until they are published.
    void MakeFrames(int count) {
        sensor.Core().Start(true, false);
        for (int i = 0; i < count; ++i) {
            Scanner().ActionTarget()->ExecuteAction("trigger", nullptr);
        }
        ASSERT_TRUE(sensor.Hub().Drain(20'000'000));
    }

    Tests::TempFolder folder;
    Vor::LogCapture log;
    LogHistory logHistory;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    std::weak_ptr<Tests::TestService> service;
    std::weak_ptr<Tests::TestService> other;
    const Scan::Recording recording = Scan::GeneratePart();
    std::vector<std::string> acts; ///< what the sensor has done with the whole program
    VirtualSensor sensor{recording,
                         {.scan = {.trigger = Scan::TriggerMode::Software},
                          .print = [this](const std::string& line) { acts.push_back(line); },
                          .factoryRestore = [this] { acts.emplace_back("restored"); },
                          .restart = [this] { acts.emplace_back("restarted"); }}};
    ServiceHost host{{.dataFolder = folder.Path(), .job = "test"}, sensor};
    Http::RequestCounts requests;
    std::unique_ptr<Revisions> revisions;
    std::unique_ptr<Http::EventStreams> streams;
    std::unique_ptr<SensorDir> directory;
};

} // namespace Sensor::Resources
