#pragma once

#include "Sensor/Http/EventStreams.h"
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
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorScan/Internal/ScanEngineInstance.h"
#include "VorScan/Internal/ScannerInstance.h"

#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace Sensor::Resources {

/// A sensor with the services "a" and "b" and its resources. The test's thread is the main loop's.
class SensorFixture : public ::testing::Test {
protected:
    SensorFixture() {
        Tests::TestPlugin().Add("a", service).Add("b", other).Publish(host.Plugins());
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
        revisions = std::make_unique<Revisions>("b0", host.Services());
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
                .log = logHistory};
    }

    VorRest::Answer Ask(VorRest::Request request) {
        VorRest::Answer answer;
        host.Requests().Process(std::move(request), [&](const VorRest::Answer& given) { answer = given; });
        loop.RunReady();
        return answer;
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
    VirtualSensor sensor{recording, {.scan = {.trigger = Scan::TriggerMode::Software}}};
    ServiceHost host{{.dataFolder = folder.Path(), .job = "test"}, sensor};
    std::unique_ptr<Revisions> revisions;
    std::unique_ptr<Http::EventStreams> streams;
    std::unique_ptr<SensorDir> directory;
};

} // namespace Sensor::Resources
