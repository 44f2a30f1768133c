#include "Sensor/Jobs/Overlay.h"
#include "Sensor/Jobs/OverlayStore.h"
#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/Scan/RecordingParser.h"
#include "Sensor/ServiceHost.h"
#include "Sensor/VirtualSensor.h"
#include "Tests/Sensor/Jobs/MadeDemoJobs.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ArchiveFile.h"
#include "VorControl/Control/IControlInstance.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor {
namespace {

nlohmann::json StoredConfig(const std::string& file) {
    const auto entries = VorCommon::ArchiveFile(file).Read();
    const auto& bytes = *entries.at("controls/modbus/config.json");
    return nlohmann::json::parse(bytes.begin(), bytes.end());
}

/// The sensor's own jobs, with the real Modbus service.
class JobRoundTrip : public ::testing::TestWithParam<std::string> {
protected:
    static Scan::Recording Input() {
        return GetParam() == Jobs::DemoJobs::Demo
                   ? Scan::GeneratePart()
                   : Scan::RecordingParser::Parse("frame,name,value\n0,b,1\n0,a,1\n", "values.csv");
    }

    JobRoundTrip()
        : host({.dataFolder = folder.Path(),
                .job = GetParam(),
                .decorateStore = [this](VorCommon::IPersistStore& store,
                                        VorCommon::PersistDomain) -> std::unique_ptr<VorCommon::IPersistStore> {
                    return std::make_unique<Jobs::OverlayStore>(store, overlay);
                }},
               sensor) {}

    Tests::TempFolder folder;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    Jobs::Overlay overlay;
    const Scan::Recording recording = Input();
    VirtualSensor sensor{recording, {}};
    ServiceHost host;
};

TEST_P(JobRoundTrip, IsSavedAsItIsMade) {
    const std::string file = host.Persistence().FilePath(VorCommon::PersistDomain::Job);
    Jobs::MadeDemoJobs(recording).Write(GetParam(), file);
    const nlohmann::json made = StoredConfig(file);
    host.LoadPlugins(Tests::BuiltFile("plugins"));
    host.CreateServices();
    overlay.Add(Jobs::ServiceSetting::Parse("modbus.port=0", "--set"), host.Services());
    host.Persistence().Load();
    EXPECT_EQ(host.Services().GetInstance("modbus").GetProtocolStatus(),
              VorControl::ControlProtocol::ProtocolStatus::Running);
    EXPECT_FALSE(host.Persistence().IsModified(VorCommon::PersistDomain::Job));

    host.Persistence().Save(VorCommon::PersistDomain::Job).get();
    EXPECT_EQ(StoredConfig(file), made);
}

TEST_P(JobRoundTrip, IsTheSameBytesWhenItIsLoadedAndSavedAgain) {
    const std::string file = host.Persistence().FilePath(VorCommon::PersistDomain::Job);
    Jobs::MadeDemoJobs(recording).Write(GetParam(), file);
    host.LoadPlugins(Tests::BuiltFile("plugins"));
    host.CreateServices();
    overlay.Add(Jobs::ServiceSetting::Parse("modbus.port=0", "--set"), host.Services());
    host.Persistence().Load();
    host.Persistence().Save(VorCommon::PersistDomain::Job).get().ThrowIfFailed();
    const auto saved = VorCommon::ArchiveFile(file).Read();
    EXPECT_FALSE(saved.empty());
    host.Persistence().LoadJob(GetParam());
    host.Persistence().Save(VorCommon::PersistDomain::Job).get().ThrowIfFailed();
    const auto again = VorCommon::ArchiveFile(file).Read();
    ASSERT_EQ(again.size(), saved.size());
    for (const auto& [name, bytes] : saved) {
        EXPECT_EQ(*again.at(name), *bytes) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(OwnJobs, JobRoundTrip, ::testing::Values(Jobs::DemoJobs::Demo, Jobs::DemoJobs::DemoValues),
                         [](const auto& job) { return job.param == Jobs::DemoJobs::Demo ? "Demo" : "DemoValues"; });

} // namespace
} // namespace Sensor
