#include "ProviderTest.h"
#include "Vor/Exception.h"
#include "yApi/yStatus.h"

#include <stdexcept>

namespace {

/// A service that keeps parameters of version "2" with the job.
class ProviderParamsTest : public Tests::ProviderTest {
protected:
    ProviderParamsTest() { provider.RegisterParams(Domain::Job); }

    const std::string loading = "Display encountered an error while loading parameters for domain job";
    const std::string updating = "Display encountered error updating parameters for domain job";
};

} // namespace

// Save

TEST_F(ProviderParamsTest, ParametersAreSavedWithTheirVersion) {
    service.params->port = 1502;
    service.params->name = "x y";
    EXPECT_EQ(Save(), Json::parse(R"({"parameters":{"name":"x y","port":1502},"parametersVersion":"2"})"));
}

TEST_F(ProviderParamsTest, ParametersWithoutObjectOrVersionFailTheSave) {
    const std::string text = "Display encountered an error while persisting parameters for domain job";
    service.paramsVersion = nullptr;
    Json section;
    EXPECT_TEXTLESS_FAILURE(provider.Save(Domain::Job, section), yERROR_NOT_FOUND);
    EXPECT_EQ(log.Count(Vor::LevelError, text), 1U);
    service.paramsVersion = "2";
    service.params = nullptr;
    EXPECT_TEXTLESS_FAILURE(provider.Save(Domain::Job, section), yERROR_NOT_FOUND);
    EXPECT_EQ(log.Count(Vor::LevelError, text), 2U);
    EXPECT_TRUE(section.is_null());
}

// Load: what there is to load

TEST_F(ProviderParamsTest, ASectionWithoutParametersChangesNothing) {
    service.params->port = 7;
    for (const char* section : {"{}", "null", "[]", "7", "\"parameters\"", R"(["parameters","parametersVersion"])",
                                R"({"parameters":{"port":8}})", R"({"parametersVersion":"2"})"}) {
        log.Clear();
        EXPECT_EQ(Load(section), Result::None) << section;
        EXPECT_EQ(log.Count(Vor::LevelInfo, "Display configuration has no parameters section to load for domain job"),
                  1U);
    }
    EXPECT_EQ(service.params->port.Get(), 7);
    EXPECT_TRUE(service.calls.empty());
}

TEST_F(ProviderParamsTest, EmptyParametersChangeNothing) {
    service.params->port = 7;
    for (const char* parameters : {"{}", "null", "[]"}) {
        log.Clear();
        EXPECT_EQ(Load(std::string(R"({"parametersVersion":"2","parameters":)") + parameters + "}"), Result::None);
        EXPECT_EQ(log.Count(Vor::LevelInfo, "Display configuration is missing parameters to load for domain job"), 1U);
    }
    EXPECT_EQ(service.params->port.Get(), 7);
    EXPECT_TRUE(service.calls.empty());
}

TEST_F(ProviderParamsTest, ParametersAreAppliedOverTheDefaultsInsideAnUpdate) {
    service.params->port = 7;
    service.params->name = "before";
    EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"2"})"), Result::None);
    EXPECT_EQ(service.calls, (Calls{"BeginUpdateParams job 2", "ParamsReset job", "UpdateDynamicParams job",
                                    "EndUpdateParams job 2"}));
    EXPECT_EQ(service.params->port.Get(), 1502);
    EXPECT_EQ(service.params->name.Get(), "");
    EXPECT_TRUE(log.Records().empty());
}

// Load: the versions

TEST_F(ProviderParamsTest, ASupportedVersionIsUpgraded) {
    service.supported = {"1"};
    EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"1"})"), Result::Upgraded);
    EXPECT_EQ(service.calls.front(), "BeginUpdateParams job 1");
    EXPECT_EQ(service.calls.back(), "EndUpdateParams job 1");
    EXPECT_EQ(service.params->port.Get(), 1502);
    ExpectForUser(Vor::UserInfo,
                  "Display parameters was upgraded from version \"1\" to \"2\". Please review the parameter details",
                  "%1$s parameters was upgraded from version \"%2$s\" to \"%3$s\". Please review the parameter "
                  "details");
    EXPECT_EQ(log.Count(Vor::LevelInfo, "Display parameters was upgraded from version \"1\" to \"2\"."), 1U);
}

TEST_F(ProviderParamsTest, AnUnsupportedVersionIsAppliedAndTold) {
    EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"1"})"), Result::UnsupportedUpgrade);
    EXPECT_EQ(service.params->port.Get(), 1502);
    ExpectForUser(Vor::UserWarning,
                  "Display parameters was upgraded from version \"1\" to \"2\". This upgrade path is not supported. "
                  "Please review the parameter details.",
                  "%1$s parameters was upgraded from version \"%2$s\" to \"%3$s\". This upgrade path is not supported. "
                  "Please review the parameter details.");
    EXPECT_EQ(log.Count(Vor::LevelWarning,
                        "Display parameters was upgraded from version \"1\" to \"2\". This upgrade path is not "
                        "supported. Please review the parameter details."),
              1U);
}

TEST_F(ProviderParamsTest, AVersionThatIsNoTextLeavesTheDefaults) {
    for (const char* version : {"null", "2", "{}", "[\"2\"]", "true"}) {
        log.Clear();
        service.calls.clear();
        service.params->port = 7;
        EXPECT_EQ(Load(std::string(R"({"parameters":{"port":1502},"parametersVersion":)") + version + "}"),
                  Result::Failed);
        EXPECT_EQ(service.calls, (Calls{"BeginUpdateParams job ", "ParamsReset job", "UpdateDynamicParams job",
                                        "EndUpdateParams job ", "ParamsReset job"}));
        EXPECT_EQ(service.params->port.Get(), 502);
        ExpectThrown(loading, "Display configuration does not have version information in domain job");
    }
}

TEST_F(ProviderParamsTest, AServiceWithoutAVersionOfItsOwnHasTheDefaults) {
    service.paramsVersion = nullptr;
    EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"2"})"), Result::Failed);
    EXPECT_EQ(service.params->port.Get(), 502);
    ExpectThrown(loading, "Display does not have the service's parameter version information in domain job");
}

TEST_F(ProviderParamsTest, UserTextsAreTranslated) {
    const Tests::Translation translation(
        "VorControl",
        "%1$s parameters was upgraded from version \"%2$s\" to \"%3$s\". Please review the parameter details",
        "%3$s statt %2$s in %1$s");
    service.supported = {"1"};
    Load(R"({"parameters":{"port":1502},"parametersVersion":"1"})");
    EXPECT_EQ(log.Count(Vor::UserInfo, "2 statt 1 in Display"), 1U);
}

// Load: dynamic parameters

TEST_F(ProviderParamsTest, ParametersThatChangeTheSetAreAppliedAgain) {
    service.dynamicPasses = 2;
    int passes = 0;
    service.actions["UpdateDynamicParams job"] = [&] {
        ++passes;
        EXPECT_EQ(service.params->port.Get(), 1502);
        service.params->port = 1;
    };
    EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"2"})"), Result::None);
    EXPECT_EQ(passes, 3);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ProviderParamsTest, FourChangesOfTheSetAreNotTooMany) {
    service.dynamicPasses = 4;
    EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"2"})"), Result::None);
    EXPECT_EQ(std::count(service.calls.begin(), service.calls.end(), "UpdateDynamicParams job"), 5);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ProviderParamsTest, ParametersThatNeverSettleAreAppliedFiveTimes) {
    service.dynamicPasses = 1000;
    EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"2"})"), Result::None);
    EXPECT_EQ(service.calls, (Calls{"BeginUpdateParams job 2", "ParamsReset job", "UpdateDynamicParams job",
                                    "UpdateDynamicParams job", "UpdateDynamicParams job", "UpdateDynamicParams job",
                                    "UpdateDynamicParams job", "EndUpdateParams job 2"}));
    EXPECT_EQ(log.Count(Vor::LevelWarning,
                        "Display limit of 5 dynamic parameter update iterations has been reached. Dynamic parameter "
                        "updates will be stopped."),
              1U);
    EXPECT_EQ(log.Records().size(), 1U);
    EXPECT_EQ(service.params->port.Get(), 1502);
}

// Load: failures

TEST_F(ProviderParamsTest, ParametersThatCannotBeAppliedAreToldAndTheUpdateEnds) {
    for (const char* parameters : {R"({"port":"x"})", R"({"port":70000})", "7", "\"text\"", "[1]"}) {
        log.Clear();
        service.calls.clear();
        service.params->port = 7;
        EXPECT_EQ(Load(std::string(R"({"parametersVersion":"2","parameters":)") + parameters + "}"), Result::Failed);
        EXPECT_EQ(service.calls, (Calls{"BeginUpdateParams job 2", "ParamsReset job", "EndUpdateParams job 2"}));
        EXPECT_EQ(service.params->port.Get(), 502);
        ExpectThrown(updating, "");
        EXPECT_EQ(log.Count(Vor::LevelError, loading), 0U);
    }
}

TEST_F(ProviderParamsTest, AFailedUpdateIsStillCheckedForItsVersion) {
    service.supported = {"1"};
    EXPECT_EQ(Load(R"({"parameters":{"port":"x"},"parametersVersion":"1"})"), Result::Failed);
    EXPECT_EQ(log.Count(Vor::LevelInfo, "Display parameters was upgraded from version \"1\" to \"2\"."), 1U);
}

TEST_F(ProviderParamsTest, AServiceThatFailsWhileItSettlesIsTold) {
    service.actions["UpdateDynamicParams job"] = [] { throw std::runtime_error("cannot settle"); };
    EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"2"})"), Result::Failed);
    EXPECT_EQ(service.calls.back(), "EndUpdateParams job 2");
    ExpectThrown(updating, "cannot settle");
}

TEST_F(ProviderParamsTest, AServiceThatGivesNothingToChangeHasTheDefaults) {
    service.refusesUpdates = true;
    service.params->port = 7;
    EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"2"})"), Result::Failed);
    EXPECT_EQ(service.calls, (Calls{"BeginUpdateParams job 2", "ParamsReset job"}));
    EXPECT_EQ(service.params->port.Get(), 502);
    EXPECT_EQ(log.Count(Vor::LevelError, loading), 1U);
}

TEST_F(ProviderParamsTest, AnUpdateThatCannotBeginOrEndLeavesTheDefaults) {
    for (const char* call : {"BeginUpdateParams job 2", "EndUpdateParams job 2"}) {
        log.Clear();
        service.actions.clear();
        service.actions[call] = [] { Vor::Throw(yERROR_CONFLICT, "not now"); };
        service.params->port = 7;
        EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"2"})"), Result::Failed);
        EXPECT_EQ(service.calls.back(), "ParamsReset job");
        EXPECT_EQ(service.params->port.Get(), 502);
        ExpectThrown(loading, "not now");
    }
}

TEST_F(ProviderParamsTest, DefaultsThatCannotBeRestoredAreLoggedAndTheUpdateEnds) {
    service.actions["ParamsReset job"] = [] { Vor::Throw(yERROR_CONFLICT, "no defaults"); };
    EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"2"})"), Result::Failed);
    EXPECT_EQ(service.calls,
              (Calls{"BeginUpdateParams job 2", "ParamsReset job", "EndUpdateParams job 2", "ParamsReset job"}));
    EXPECT_EQ(log.Count(Vor::LevelError, "Display encountered an error while initializing parameters for domain job"),
              2U);
    ExpectThrown(loading, "no defaults");
    ExpectThrown("EXCEPTION THROWN: ", "no defaults");
}

TEST_F(ProviderParamsTest, AnUpdateEndsAlsoAfterAForeignException) {
    service.actions["UpdateDynamicParams job"] = [] { throw 7; };
    EXPECT_EQ(Load(R"({"parameters":{"port":1502},"parametersVersion":"2"})"), Result::Failed);
    EXPECT_EQ(service.calls, (Calls{"BeginUpdateParams job 2", "ParamsReset job", "UpdateDynamicParams job",
                                    "EndUpdateParams job 2", "ParamsReset job"}));
    EXPECT_EQ(service.params->port.Get(), 502);
    ExpectThrown("EXCEPTION THROWN: ", "unknown exception");
}
