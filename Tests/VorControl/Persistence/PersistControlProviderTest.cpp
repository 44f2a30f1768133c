#include "PersistControlFixture.h"
#include "Tests/Support/Failure.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "yApi/yStatus.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using VorCommon::PersistDomain;
using VorControl::Persistence::PersistLoadResult;

namespace {

using Calls = std::vector<std::string>;

/// Records its calls.
class FakeProvider : public VorControl::Providers::IControlPersistenceProvider {
public:
    explicit FakeProvider(Calls& calls)
        : calls(calls) {}

    void Init(PersistDomain domain) override { Note("Init", domain); }
    PersistLoadResult Load(PersistDomain domain, const json& section) override {
        Note("Load", domain);
        loaded = section;
        return result;
    }
    void Save(PersistDomain domain, json& section) override {
        Note("Save", domain);
        if (!saved.is_null()) {
            section = saved;
        }
    }
    void RegisterParams(PersistDomain) override {}
    void RegisterOutputsMap(PersistDomain) override {}
    void RegisterRegisterAssemblyGroup(PersistDomain) override {}

    PersistLoadResult result = PersistLoadResult::None;
    json loaded;
    json saved;

private:
    void Note(const std::string& call, PersistDomain domain) {
        calls.push_back(call + " " + VorCommon::PersistDomain_Name(domain));
    }

    Calls& calls;
};

/// A service that has its configuration in a provider.
class PersistControlProviderTest : public Tests::PersistControlFixture {
protected:
    PersistControlProviderTest() { instance.provider = provider; }

    static std::string File(const std::string& section) {
        return "{\"version\":\"1\",\"vor:control\":" + section + "}";
    }
    std::string Saved() const {
        const auto found = store.files.find(Tests::FakeControlInstance::Path);
        return found == store.files.end() ? "" : found->second;
    }

    const std::shared_ptr<FakeProvider> provider = std::make_shared<FakeProvider>(instance.calls);
};

} // namespace

TEST_F(PersistControlProviderTest, InitOfTheJobResetsWhetherTheServiceIsEnabled) {
    control.Init(instance, PersistDomain::Job, store);
    EXPECT_EQ(instance.calls, (Calls{"ResetProtocolToDefaultEnabledState", "Init job"}));
    instance.calls.clear();
    control.Init(instance, PersistDomain::Workspace, store);
    EXPECT_EQ(instance.calls, (Calls{"Init workspace"}));
}

TEST_F(PersistControlProviderTest, AnEnabledServiceIsLoadedAndStarted) {
    provider->result = PersistLoadResult::Upgraded;
    Load(File(R"({"enabled":true,"parameters":{"port":7}})"));
    EXPECT_EQ(instance.calls, (Calls{"Load job", "Enable true"}));
    EXPECT_EQ(provider->loaded, json::parse(R"({"enabled":true,"parameters":{"port":7}})"));
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::Upgraded);
    EXPECT_EQ(log.CountLevel(Vor::LevelWarning), 0U);
}

TEST_F(PersistControlProviderTest, ADisabledServiceGetsItsDefaultsAndIsStopped) {
    provider->result = PersistLoadResult::Upgraded;
    instance.enabled = true;
    Load(File(R"({"enabled":false,"parameters":{"port":7}})"));
    EXPECT_EQ(instance.calls, (Calls{"Init job", "Enable false"}));
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
}

TEST_F(PersistControlProviderTest, AMissingEnableSettingIsTheDefaultOne) {
    for (const bool autoEnable : {false, true}) {
        for (const char* section : {"{}", "[]", "null", "\"enabled\"", R"({"parameters":{}})"}) {
            log.Clear();
            instance.calls.clear();
            instance.enabled = !autoEnable;
            instance.autoEnable = autoEnable;
            Load(File(section));
            EXPECT_EQ(instance.calls,
                      autoEnable ? (Calls{"Load job", "Enable true"}) : (Calls{"Init job", "Enable false"}))
                << section;
            EXPECT_GE(log.Count(Vor::LevelWarning,
                                "Missing enable/disable setting in configuration file for service 'Fake Service'. "
                                "Using default setting."),
                      1U);
            EXPECT_EQ(log.CountLevel(Vor::UserWarning), 0U);
        }
    }
}

TEST_F(PersistControlProviderTest, AnEnableSettingThatIsNoBooleanFailsTheLoad) {
    EXPECT_THROW(Load(File(R"({"enabled":"true"})")), json::exception);
    EXPECT_EQ(instance.calls, Calls());
}

TEST_F(PersistControlProviderTest, AMissingFileOrAnEmptyDocumentChangesNothing) {
    control.Load(instance, PersistDomain::Job, store);
    for (const char* content : {"{}", "[]", "null"}) {
        Load(content);
    }
    EXPECT_EQ(instance.calls, Calls());
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(PersistControlProviderTest, AFileOfAnotherFormatIsRefused) {
    EXPECT_FAILURE(Load(R"({"version":"1"})"), yERROR_FORMAT,
                   "No saved information found in service 'Fake Service' configuration file.");
    EXPECT_FAILURE(Load(R"({"version":"2","vor:control":{"enabled":true}})"), yERROR_VERSION,
                   "Unsupported configuration file version for service 'Fake Service'. expected: 1 actual: 2");
    EXPECT_EQ(instance.calls, Calls());
}

TEST_F(PersistControlProviderTest, OtherDomainsHaveNoEnableSetting) {
    Load(File(R"({"enabled":false})"), PersistDomain::Workspace);
    EXPECT_EQ(instance.calls, (Calls{"Load workspace"}));
}

TEST_F(PersistControlProviderTest, TheJobIsSavedWithWhetherTheServiceIsEnabled) {
    instance.enabled = true;
    provider->saved = json::parse(R"({"parameters":{"port":7}})");
    control.Save(instance, PersistDomain::Job, store);
    EXPECT_EQ(json::parse(Saved()), json::parse(File(R"({"enabled":true,"parameters":{"port":7}})")));
    EXPECT_EQ(instance.calls, (Calls{"Save job"}));
}

TEST_F(PersistControlProviderTest, OtherDomainsAreSavedUnlessTheyAreEmpty) {
    control.Save(instance, PersistDomain::Workspace, store);
    provider->saved = json::object();
    control.Save(instance, PersistDomain::Workspace, store);
    EXPECT_EQ(Saved(), "");
    provider->saved = json::parse(R"({"parameters":{"port":7}})");
    control.Save(instance, PersistDomain::Workspace, store);
    EXPECT_EQ(json::parse(Saved()), json::parse(File(R"({"parameters":{"port":7}})")));
}
