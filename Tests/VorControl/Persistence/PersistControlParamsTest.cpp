#include "PersistControlFixture.h"
#include "Tests/Support/Failure.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/Persistence/PersistControl.h"
#include "yApi/yStatus.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using Tests::FakeControlInstance;
using VorCommon::PersistDomain;
using VorControl::Persistence::PersistLoadResult;

namespace {

using Calls = std::vector<std::string>;
using Options = FakeControlInstance::Options;
using PersistControlParamsTest = Tests::PersistControlFixture;

constexpr const char* LoadingForUser =
    "Error loading parameters for service 'Fake Service'. Parameters may require manual configuration.";
constexpr const char* LoadingFormat =
    "Error loading parameters for service '%s'. Parameters may require manual configuration.";
constexpr const char* UpdatingForUser =
    "Error updating parameters for service 'Fake Service'. Parameters may require manual configuration.";
constexpr const char* UpdatingFormat =
    "Error updating parameters for service '%s'. Parameters may require manual configuration.";

/// Position of the entry, or one past the end.
std::size_t Place(const Vor::LogCapture& log, std::uint64_t level, const std::string& text) {
    const auto records = log.Records();
    std::size_t place = 0;
    while (place < records.size() && (records[place].level != level || records[place].text != text)) {
        ++place;
    }
    return place;
}

std::string WithParameters(const std::string& parameters, const std::string& version) {
    return "{\"version\":\"1\",\"vor:control\":{\"enabled\":true,\"parameters\":" + parameters + version + "}}";
}

} // namespace

TEST_F(PersistControlParamsTest, WithoutStoredParametersNothingIsUpdated) {
    Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":true,\"parametersVersion\":\"9\"}}");
    EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 4", "Enable true", "OnPersistDomainLoaded job"}));
}

TEST_F(PersistControlParamsTest, WithoutTheParametersOptionNothingIsUpdated) {
    instance.options = Options::RegisterAssemblies;
    Load(WithParameters("{\"port\":7}", ",\"parametersVersion\":\"1\""));
    EXPECT_EQ(instance.params->port.Get(), 502);
}

TEST_F(PersistControlParamsTest, AMissingParametersVersionIsToldTwice) {
    EXPECT_TEXTLESS_FAILURE(Load(WithParameters("{\"port\":7}", "")), yERROR);
    ExpectForUser(Vor::UserWarning,
                  "Missing parameters version for service 'Fake Service'. Parameters may require manual configuration.",
                  "Missing parameters version for service '%s'. Parameters may require manual configuration.");
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Missing parameters version for service 'Fake Service'"), 1U);
    ExpectForUser(Vor::UserError, LoadingForUser, LoadingFormat);
    EXPECT_EQ(log.Count(Vor::LevelError, "EXCEPTION THROWN: "), 1U);
    EXPECT_EQ(instance.params->port.Get(), 502);
    EXPECT_EQ(instance.gateDepth, 0);
}

TEST_F(PersistControlParamsTest, AnotherParametersVersionIsToldTwice) {
    EXPECT_TEXTLESS_FAILURE(Load(WithParameters("{\"port\":7}", ",\"parametersVersion\":\"2\"")), yERROR);
    ExpectForUser(
        Vor::UserWarning,
        "Unsupported parameters version for service 'Fake Service'. Parameters may require manual configuration.",
        "Unsupported parameters version for service '%s'. Parameters may require manual configuration.");
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Unsupported parameters version for service 'Fake Service'. Expected: 1, "
                                           "version in config: 2"),
              1U);
    ExpectForUser(Vor::UserError, LoadingForUser, LoadingFormat);
    EXPECT_EQ(instance.params->port.Get(), 502);
}

TEST_F(PersistControlParamsTest, AParametersVersionThatIsNoTextFailsTheLoad) {
    EXPECT_TEXTLESS_FAILURE(Load(WithParameters("{\"port\":7}", ",\"parametersVersion\":1")), yERROR);
    ExpectForUser(Vor::UserError, LoadingForUser, LoadingFormat);
    EXPECT_EQ(instance.params->port.Get(), 502);
}

TEST_F(PersistControlParamsTest, ParametersThatCannotBeReadAreToldAndTheUpdateEnds) {
    EXPECT_TEXTLESS_FAILURE(Load(WithParameters("{\"port\":\"x\"}", ",\"parametersVersion\":\"1\"")), yERROR);
    EXPECT_EQ(instance.calls,
              (Calls{"ResetInstance true 4", "BeginUpdateParameters", "EndUpdateParameters", "Enable true"}));
    EXPECT_EQ(instance.gateDepth, 0);
    ExpectForUser(Vor::UserError, UpdatingForUser, UpdatingFormat);
    EXPECT_EQ(log.Count(Vor::LevelError, "Error updating parameters for service 'Fake Service'"), 1U);
    ExpectForUser(Vor::UserError, LoadingForUser, LoadingFormat);
}

TEST_F(PersistControlParamsTest, AServiceThatRefusesItsParametersIsToldAndTheUpdateEnds) {
    instance.actions["ParamsUpdate"] = [] { Vor::Throw(yERROR_CONFLICT, "the port is taken"); };
    instance.actions["EndUpdateParameters"] = [&] {
        EXPECT_EQ(log.Count(Vor::LevelError, "Error updating parameters for service 'Fake Service'"), 1U);
    };
    EXPECT_TEXTLESS_FAILURE(Load(WithParameters("{\"port\":7}", ",\"parametersVersion\":\"1\"")), yERROR);
    EXPECT_EQ(instance.gateDepth, 0);
    const std::size_t forUser = Place(log, Vor::UserError, UpdatingForUser);
    const std::size_t forLog = Place(log, Vor::LevelError, "Error updating parameters for service 'Fake Service'");
    const std::size_t outerForUser = Place(log, Vor::UserError, LoadingForUser);
    const std::size_t thrown = Place(log, Vor::LevelError, "EXCEPTION THROWN: ");
    EXPECT_LT(forUser, forLog);
    EXPECT_LT(forLog, outerForUser);
    EXPECT_LT(outerForUser, thrown);
    ASSERT_LT(thrown, log.Records().size());
}

TEST_F(PersistControlParamsTest, AnUpdateThatCannotBeginIsNotEnded) {
    instance.actions["BeginUpdateParameters"] = [] { Vor::Throw(yERROR_NOT_FOUND); };
    EXPECT_TEXTLESS_FAILURE(Load(WithParameters("{\"port\":7}", ",\"parametersVersion\":\"1\"")), yERROR);
    EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 4", "BeginUpdateParameters", "Enable true"}));
    EXPECT_EQ(log.Count(Vor::UserError, UpdatingForUser), 0U);
    EXPECT_EQ(log.Count(Vor::UserError, LoadingForUser), 1U);
}

TEST_F(PersistControlParamsTest, AnUpdateEndsAlsoAfterAForeignException) {
    instance.actions["ParamsUpdate"] = [] { throw 7; };
    EXPECT_THROW(Load(WithParameters("{\"port\":7}", ",\"parametersVersion\":\"1\"")), int);
    EXPECT_EQ(instance.gateDepth, 0);
}

TEST_F(PersistControlParamsTest, ParametersThatCannotBeSavedAreToldAndFailTheSave) {
    instance.actions["Params"] = [] { Vor::Throw(yERROR_NOT_FOUND); };
    EXPECT_FAILURE(control.Save(instance, PersistDomain::Job, store), yERROR_NOT_FOUND,
                   "Error saving parameters for service 'Fake Service'");
    ExpectForUser(Vor::UserError,
                  "Error saving parameters for service 'Fake Service'. Please check the parameter settings.",
                  "Error saving parameters for service '%s'. Please check the parameter settings.");
    EXPECT_EQ(log.Count(Vor::LevelError, "EXCEPTION THROWN: "), 1U);
    EXPECT_TRUE(store.files.empty());
    instance.actions["Params"] = [] { throw std::runtime_error("other"); };
    EXPECT_FAILURE(control.Save(instance, PersistDomain::Job, store), yERROR,
                   "Error saving parameters for service 'Fake Service'");
}

TEST_F(PersistControlParamsTest, AServiceWithoutParametersThatDoesNotPersistThemIsSaved) {
    instance.actions["Params"] = [] { Vor::Throw(yERROR_NOT_FOUND); };
    instance.options = Options::RegisterAssemblies;
    instance.hasGroup = false;
    control.Save(instance, PersistDomain::Job, store);
    EXPECT_EQ(store.files[FakeControlInstance::Path], "{\"version\":\"1\",\"vor:control\":{\"enabled\":false}}");
}

TEST_F(PersistControlParamsTest, TheLoadResultIsOfTheLatestLoad) {
    EXPECT_THROW(Load("{}"), Vor::Exception);
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
}
