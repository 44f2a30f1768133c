#include "VorControl/Providers/ControlPersistenceProvider.h"

#include "ProviderTest.h"
#include "Tests/Support/Threads.h"
#include "Vor/Exception.h"
#include "yApi/yFault.h"
#include "yApi/yStatus.h"

#include <atomic>
#include <stdexcept>
#include <thread>

using VorControl::Providers::ControlPersistenceProvider;
using VorControl::Providers::IControlPersistenceProvider;

namespace {

using ControlPersistenceProviderTest = Tests::ProviderTest;

/// Records the calls of the categories, which fail or return as a test sets.
class NotingProvider : public ControlPersistenceProvider {
public:
    using Domain = VorCommon::PersistDomain;
    using Result = VorControl::Persistence::PersistLoadResult;
    using ControlPersistenceProvider::ControlPersistenceProvider;

    std::vector<std::string> calls;
    Result params = Result::None;
    Result outputs = Result::None;
    Result assemblies = Result::None;
    bool paramsThrow = false;

protected:
    void InitParameters(Domain) override { calls.emplace_back("init parameters"); }
    void InitOutputsMap(Domain) override { calls.emplace_back("init outputs"); }
    void InitRegisterAssemblyGroup(Domain) override { calls.emplace_back("init assemblies"); }
    void SaveParameters(Domain, nlohmann::json&) override { calls.emplace_back("save parameters"); }
    void SaveOutputsMap(Domain, nlohmann::json&) override { calls.emplace_back("save outputs"); }
    void SaveRegisterAssemblyGroup(Domain, nlohmann::json&) override { calls.emplace_back("save assemblies"); }
    Result LoadParameters(Domain, const nlohmann::json&) override {
        calls.emplace_back("load parameters");
        if (paramsThrow) {
            throw std::runtime_error("no parameters today");
        }
        return params;
    }
    Result LoadOutputsMap(Domain, const nlohmann::json&) override {
        calls.emplace_back("load outputs");
        return outputs;
    }
    Result LoadRegisterAssemblyGroup(Domain, const nlohmann::json&) override {
        calls.emplace_back("load assemblies");
        return assemblies;
    }
};

} // namespace

TEST(IControlPersistenceProviderTest, CategoriesHaveTheirNumbersAndNames) {
    using Category = IControlPersistenceProvider::PersistenceDataCategory;
    EXPECT_EQ(static_cast<int>(Category::Params), 0);
    EXPECT_EQ(static_cast<int>(Category::OutputsMap), 1);
    EXPECT_EQ(static_cast<int>(Category::RegisterAssemblyGroup), 2);
    EXPECT_STREQ(IControlPersistenceProvider::PersistenceCategoryName(Category::Params), "parameter");
    EXPECT_STREQ(IControlPersistenceProvider::PersistenceCategoryName(Category::OutputsMap), "outputs map");
    EXPECT_STREQ(IControlPersistenceProvider::PersistenceCategoryName(Category::RegisterAssemblyGroup),
                 "register assembly group");
    EXPECT_STREQ(IControlPersistenceProvider::PersistenceCategoryName(static_cast<Category>(3)), "unknown");
}

TEST_F(ControlPersistenceProviderTest, ALockThatCannotBeMadeThrowsItsStatus) {
    yFault_SetHere("yLock_Construct", yERROR_FULL, 0, 1);
    EXPECT_TEXTLESS_FAILURE(ControlPersistenceProvider{service}, yERROR_FULL);
}

TEST_F(ControlPersistenceProviderTest, EachDomainHasItsOwnRegistrations) {
    EXPECT_FALSE(provider.HasParamsRegistration(Domain::Job));
    provider.RegisterParams(Domain::Job);
    provider.RegisterRegisterAssemblyGroup(Domain::Job);
    provider.RegisterOutputsMap(Domain::Workspace);
    EXPECT_TRUE(provider.HasParamsRegistration(Domain::Job));
    EXPECT_FALSE(provider.HasOutputsMapRegistration(Domain::Job));
    EXPECT_TRUE(provider.HasRegisterAssemblyGroupRegistration(Domain::Job));
    EXPECT_FALSE(provider.HasParamsRegistration(Domain::Workspace));
    EXPECT_TRUE(provider.HasOutputsMapRegistration(Domain::Workspace));
    EXPECT_FALSE(provider.HasRegisterAssemblyGroupRegistration(Domain::Workspace));
    EXPECT_EQ(provider.GetPersistenceDataTable(Domain::Job), (std::array{true, false, true}));
    EXPECT_EQ(provider.GetPersistenceDataTable(Domain::Workspace), (std::array{false, true, false}));
}

TEST_F(ControlPersistenceProviderTest, ADomainWithoutRegistrationsHasNoTable) {
    EXPECT_FAILURE(provider.GetPersistenceDataTable(Domain::Job), yERROR_NOT_FOUND,
                   "Display has no persistence registered for domain job");
    EXPECT_FAILURE(provider.GetPersistenceDataTable(Domain::Workspace), yERROR_NOT_FOUND,
                   "Display has no persistence registered for domain workspace");
}

TEST_F(ControlPersistenceProviderTest, ADomainWithoutRegistrationsIsLeftAlone) {
    provider.RegisterParams(Domain::Workspace);
    provider.Init(Domain::Job);
    EXPECT_EQ(Load(R"({"parameters":{"port":7},"parametersVersion":"2","registerAssemblyList":7})"), Result::None);
    EXPECT_TRUE(Save().is_null());
    EXPECT_TRUE(service.calls.empty());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ControlPersistenceProviderTest, TheCategoriesComeInTheirOrder) {
    NotingProvider noting(service);
    noting.RegisterRegisterAssemblyGroup(Domain::Job);
    noting.RegisterOutputsMap(Domain::Job);
    noting.RegisterParams(Domain::Job);
    Json section;
    noting.Init(Domain::Job);
    noting.Load(Domain::Job, section);
    noting.Save(Domain::Job, section);
    EXPECT_EQ(noting.calls,
              (Calls{"init parameters", "init outputs", "init assemblies", "load parameters", "load outputs",
                     "load assemblies", "save parameters", "save outputs", "save assemblies"}));
}

TEST_F(ControlPersistenceProviderTest, OnlyTheRegisteredCategoriesAreAskedFor) {
    NotingProvider noting(service);
    noting.RegisterOutputsMap(Domain::Job);
    Json section;
    noting.Init(Domain::Job);
    noting.Load(Domain::Job, section);
    noting.Save(Domain::Job, section);
    EXPECT_EQ(noting.calls, (Calls{"init outputs", "load outputs", "save outputs"}));
}

TEST_F(ControlPersistenceProviderTest, TheResultIsOfTheFirstCategoryThatReportsAndAllAreLoaded) {
    NotingProvider noting(service);
    noting.RegisterParams(Domain::Job);
    noting.RegisterOutputsMap(Domain::Job);
    noting.RegisterRegisterAssemblyGroup(Domain::Job);
    EXPECT_EQ(noting.Load(Domain::Job, Json()), Result::None);
    noting.assemblies = Result::PartMissing;
    EXPECT_EQ(noting.Load(Domain::Job, Json()), Result::PartMissing);
    noting.params = Result::Upgraded;
    EXPECT_EQ(noting.Load(Domain::Job, Json()), Result::Upgraded);
    noting.params = Result::Failed;
    noting.outputs = Result::Upgraded;
    noting.calls.clear();
    EXPECT_EQ(noting.Load(Domain::Job, Json()), Result::Failed);
    EXPECT_EQ(noting.calls, (Calls{"load parameters", "load outputs", "load assemblies"}));
}

TEST_F(ControlPersistenceProviderTest, ACategoryThatThrowsIsLoggedAndTheNextIsLoaded) {
    NotingProvider noting(service);
    noting.RegisterParams(Domain::Job);
    noting.RegisterRegisterAssemblyGroup(Domain::Job);
    noting.paramsThrow = true;
    noting.assemblies = Result::PartMissing;
    EXPECT_EQ(noting.Load(Domain::Job, Json()), Result::Failed);
    EXPECT_EQ(noting.calls, (Calls{"load parameters", "load assemblies"}));
    ExpectThrown("EXCEPTION THROWN: ", "no parameters today");
}

TEST_F(ControlPersistenceProviderTest, ALoadReturnsItsNotesBesideItsResult) {
    provider.RegisterParams(Domain::Job);
    service.actions["UpdateDynamicParams job"] = [] {
        std::thread([] { Vor::LogUser(Vor::UserInfo, "Test", "of another thread"); }).join();
        for (int i = 0; i < 2; ++i) {
            Vor::LogUser(Vor::UserInfo, "Test", "port %d is low", 7);
        }
        Vor::LogWarning("not for users");
        try {
            Vor::Throw(yERROR_CONFLICT, "the cause");
        } catch (const Vor::Exception&) {
            Vor::ThrowNested(yERROR, "the failure");
        }
    };
    const Json section = Json::parse(R"({"parameters":{"port":7},"parametersVersion":"2"})");
    const auto failed = provider.LoadWithNotes(Domain::Job, section);
    EXPECT_EQ(failed.result, Result::Failed);
    EXPECT_EQ(failed.notes, (Calls{"port 7 is low", "Display encountered error updating parameters for domain job",
                                   "the failure", "the cause"}));
    service.actions.clear();
    const auto loaded = provider.LoadWithNotes(Domain::Job, section);
    EXPECT_EQ(loaded.result, Result::None);
    EXPECT_TRUE(loaded.notes.empty());
}

TEST_F(ControlPersistenceProviderTest, ALockThatCannotBeEnteredFailsTheOperation) {
    provider.RegisterParams(Domain::Job);
    const auto fault = [] { yFault_SetHere("yLock_Enter", yERROR_BUSY, 0, 1); };
    Json section;
    fault();
    EXPECT_TEXTLESS_FAILURE(provider.Init(Domain::Job), yERROR_BUSY);
    fault();
    EXPECT_TEXTLESS_FAILURE(provider.Load(Domain::Job, section), yERROR_BUSY);
    fault();
    EXPECT_TEXTLESS_FAILURE(provider.Save(Domain::Job, section), yERROR_BUSY);
    fault();
    EXPECT_TEXTLESS_FAILURE(provider.RegisterOutputsMap(Domain::Job), yERROR_BUSY);
    EXPECT_TRUE(service.calls.empty());
    EXPECT_FALSE(provider.HasOutputsMapRegistration(Domain::Job));
}

TEST_F(ControlPersistenceProviderTest, OneOperationRunsAtATime) {
    provider.RegisterParams(Domain::Job);
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    const auto visit = [&] {
        most = std::max(most.load(), ++inside);
        std::this_thread::yield();
        --inside;
    };
    service.actions["ParamsReset job"] = visit;
    service.actions["UpdateDynamicParams job"] = visit;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                provider.Init(Domain::Job);
                Load(R"({"parameters":{"port":7},"parametersVersion":"2"})");
                Save();
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(most, 1);
}

// Init

TEST_F(ControlPersistenceProviderTest, InitResetsWhatIsRegistered) {
    provider.RegisterParams(Domain::Job);
    provider.RegisterOutputsMap(Domain::Job);
    provider.RegisterRegisterAssemblyGroup(Domain::Job);
    provider.Init(Domain::Job);
    EXPECT_EQ(service.Changes(), (Calls{"ParamsReset job", "OutputsReset job", "AssembliesReset job"}));
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ControlPersistenceProviderTest, AFailingResetIsLoggedAndThrownOn) {
    const auto fail = [](yStatus status) { return [status] { Vor::Throw(status); }; };
    service.domains.insert(Domain::Workspace);
    service.actions["ParamsReset job"] = fail(-5);
    service.actions["OutputsReset workspace"] = fail(-6);
    provider.RegisterParams(Domain::Job);
    provider.RegisterRegisterAssemblyGroup(Domain::Job);
    provider.RegisterOutputsMap(Domain::Workspace);
    EXPECT_TEXTLESS_FAILURE(provider.Init(Domain::Job), -5);
    EXPECT_EQ(service.calls, Calls{"ParamsReset job"}) << "what follows isn't reset";
    EXPECT_EQ(log.Count(Vor::LevelError, "Display encountered an error while initializing parameters for domain job"),
              1U);
    EXPECT_TEXTLESS_FAILURE(provider.Init(Domain::Workspace), -6);
    EXPECT_EQ(
        log.Count(Vor::LevelError, "Display encountered an error while initializing outputs map for domain workspace"),
        1U);
    service.actions["AssembliesReset job"] = fail(-7);
    service.actions.erase("ParamsReset job");
    EXPECT_TEXTLESS_FAILURE(provider.Init(Domain::Job), -7);
    EXPECT_EQ(
        log.Count(Vor::LevelError, "Display encountered an error while initializing connection map for domain job"),
        1U);
}
