#include "Services/Common/JobProtocol.h"

#include "Tests/Services/Common/ServiceModule.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Services::Common {
namespace {

using nlohmann::json;
using VorCommon::PersistDomain;
using namespace VorControl::ControlProtocol;
using Texts = std::vector<std::string>;

constexpr const char* AssemblyId = "registerAssembly-0";

class TestParams : public Vor::Params::Group {
public:
    TestParams() { Register("speed", speed); }

    Vor::Params::Value<unsigned> speed{1};
};

std::shared_ptr<ProtocolRegisterAssemblyBase> MakeAssembly() {
    auto assembly = std::make_shared<ProtocolRegisterAssemblyBase>(true, 0, 255, AssemblyId, "Registers");
    assembly->AddSupportedBlockType(std::make_unique<DefaultMeasurementValueRegisterBlockInfo>());
    return assembly;
}

/// Accepts speeds up to 10.
class JobService : public JobProtocol {
public:
    explicit JobService(const ControlProtocolEnviron& environ)
        : JobProtocol(environ) {
        Init({.params = params, .assemblies = {MakeAssembly()}, .outputs = map, .assemblyVersion = "3"});
    }

    void Start() override { UpdateProtocolStatus(ProtocolStatus::Running); }
    void Stop() override { UpdateProtocolStatus(ProtocolStatus::Stopped); }
    using JobProtocol::ParamsReset;
    void ParamsReset() override { params->speed = 1; }
    const char* ParamsVersion() const override { return "2"; }
    using JobProtocol::ParamsVersion;

    const std::shared_ptr<TestParams> params = std::make_shared<TestParams>();
    const std::shared_ptr<TextIdStandardProtocolOutputMap> map = std::make_shared<TextIdStandardProtocolOutputMap>(10);
    std::vector<unsigned> applied; ///< the speeds that were tried
    unsigned mapChanges = 0;
    unsigned loads = 0;
    std::function<void()> onLoad;

    void OnLoadBegin() override {
        ++loads;
        if (onLoad) {
            onLoad();
        }
    }

protected:
    void ApplyParams() override {
        applied.push_back(params->speed.Get());
        if (params->speed.Get() > 10) {
            Vor::Throw(yERROR_PARAMETER, "too fast");
        }
    }
    void MapChanged() override { ++mapChanges; }
    void ResetOutputs() override {
        JobProtocol::ResetOutputs();
        TextIdStandardOutputItemArgs item;
        item.outputId = "own";
        item.source = "d";
        map->Add(item);
    }
};

json Section(const json& params, const json& outputs, const json& blocks) {
    return {{"enabled", true},
            {"parameters", params},
            {"parametersVersion", "2"},
            {"outputs", {{"map", outputs}}},
            {"registerAssemblyList", {{{"properties", {{"id", AssemblyId}}}, {"blocks", blocks}}}},
            {"registerAssemblyVersionList", {{{"id", AssemblyId}, {"version", "3"}}}}};
}

const json Outputs = {{{"outputId", "depth"}, {"source", "b"}}, {{"outputId", "height"}, {"source", "a"}}};
const json Blocks = {{{"type", "MeasurementValue"}, {"dataSource", "a"}, {"outputId", 0}}};
const std::string Refusal = UnusableParams("test service", "too fast");

class JobProtocolTest : public testing::Test {
protected:
    JobService& Own() { return module.Own(); }

    ServiceModule<JobService> module;
};

TEST_F(JobProtocolTest, SavesWhatItLoaded) {
    module.Load(Section({{"speed", 7}}, Outputs, Blocks));
    EXPECT_EQ(Own().params->speed.Get(), 7u);
    const json saved = module.Save();
    EXPECT_EQ(saved["parameters"], json({{"speed", 7}}));
    EXPECT_EQ(saved["parametersVersion"], "2");
    EXPECT_EQ(saved["outputs"]["map"].size(), 2u);
    EXPECT_EQ(saved["registerAssemblyList"][0]["blocks"].size(), 1u);
    EXPECT_EQ(saved["registerAssemblyVersionList"], json({{{"id", AssemblyId}, {"version", "3"}}}));
    module.Load(saved);
    EXPECT_EQ(module.Save(), saved);
}

TEST_F(JobProtocolTest, KeepsNothingInOtherDomains) {
    module.Load(Section({{"speed", 7}}, Outputs, Blocks));
    JobService& own = Own();
    constexpr PersistDomain Other = PersistDomain::Workspace;
    EXPECT_EQ(own.Params(Other), nullptr);
    EXPECT_EQ(own.ParamsVersion(Other), nullptr);
    EXPECT_EQ(own.Outputs(Other), nullptr);
    EXPECT_EQ(own.RegisterAssemblyGroup(Other), nullptr);
    EXPECT_EQ(own.RegisterAssemblyVersion(Other, AssemblyId), nullptr);
    EXPECT_EQ(own.DataSourceList(Other), Texts());
    EXPECT_EQ(own.BeginUpdateParams(Other, "2"), nullptr);
    EXPECT_EQ(own.BeginUpdateOutputsMap(Other, ""), nullptr);
    EXPECT_EQ(own.BeginUpdateRegisterAssembly(Other, AssemblyId, "3"), nullptr);
    const unsigned changes = own.mapChanges;
    const std::size_t applied = own.applied.size();
    own.EndUpdateParams(Other, "2");
    own.EndUpdateOutputsMap(Other, "");
    own.EndUpdateRegisterAssembly(Other, AssemblyId, "3");
    own.ParamsReset(Other);
    own.OutputsMapReset(Other);
    own.RegisterAssemblyGroupReset(Other);
    EXPECT_EQ(own.mapChanges, changes);
    EXPECT_EQ(own.applied.size(), applied);
    EXPECT_EQ(own.params->speed.Get(), 7u);
    EXPECT_EQ(own.map->Count(), 2u);
    json section;
    own.PersistenceProvider()->Save(Other, section);
    EXPECT_TRUE(section.is_null());
}

TEST_F(JobProtocolTest, IsNotifiedOfEachLoadBeforeItIsChanged) {
    Own().onLoad = [this] { EXPECT_EQ(Own().params->speed.Get(), 1u); };
    module.Load(Section({{"speed", 7}}, Outputs, Blocks));
    EXPECT_EQ(Own().loads, 1u);
    Own().onLoad = nullptr;
    module.LoadWithoutSection();
    EXPECT_EQ(Own().loads, 2u) << "also when the job has nothing for it";
    module.Reset();
    EXPECT_EQ(Own().loads, 3u);
    module.Save();
    EXPECT_EQ(Own().loads, 3u);
}

TEST_F(JobProtocolTest, IsLoadedAlsoWhenItThrowsWhileItIsNotified) {
    const Vor::LogCapture log;
    Own().onLoad = [] { throw std::runtime_error("no"); };
    module.Load(Section({{"speed", 7}}, Outputs, Blocks));
    EXPECT_EQ(Own().params->speed.Get(), 7u);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "EXCEPTION THROWN: "));
}

TEST_F(JobProtocolTest, FindsItsAssembliesByTheirIds) {
    EXPECT_STREQ(Own().RegisterAssemblyVersion(PersistDomain::Job, AssemblyId), "3");
    EXPECT_EQ(Own().RegisterAssemblyVersion(PersistDomain::Job, "another"), nullptr);
    EXPECT_NE(Own().BeginUpdateRegisterAssembly(PersistDomain::Job, AssemblyId, "3"), nullptr);
    EXPECT_EQ(Own().BeginUpdateRegisterAssembly(PersistDomain::Job, "another", "3"), nullptr);
}

TEST_F(JobProtocolTest, AppliesTheParametersOfAJobOnce) {
    module.Load(Section({{"speed", 7}}, Outputs, Blocks));
    EXPECT_EQ(Own().applied, (std::vector<unsigned>{7}));
}

TEST_F(JobProtocolTest, ReportsAJobWhoseParametersItRefusesAndTriesThemOnce) {
    const Vor::LogCapture log;
    module.Load(Section({{"speed", 11}}, Outputs, Blocks));
    EXPECT_EQ(Own().applied, (std::vector<unsigned>{11}));
    EXPECT_EQ(log.Count(Vor::UserError, Refusal), 1u);
    EXPECT_EQ(module.Save()["parameters"], json({{"speed", 11}})) << "they stay for the user to correct";
    EXPECT_EQ(Own().map->Count(), 2u) << "the rest of the job is loaded";
}

TEST_F(JobProtocolTest, TriesParametersThatAreChangedOnce) {
    const Vor::LogCapture log;
    module.Change({{"speed", 2}});
    EXPECT_EQ(Own().applied, (std::vector<unsigned>{2}));
    EXPECT_THROW(module.Change({{"speed", 12}}), Vor::Exception);
    EXPECT_EQ(Own().applied, (std::vector<unsigned>{2, 12}));
    EXPECT_EQ(log.Count(Vor::UserError, Refusal), 0u) << "who changes them gets the exception";
    module.Instance().BeginUpdateParameters();
    module.Instance().EndUpdateParameters();
    EXPECT_EQ(Own().applied, (std::vector<unsigned>{2, 12, 12})) << "an update without ParamsUpdate";
    EXPECT_EQ(log.Count(Vor::UserError, Refusal), 1u);
}

TEST_F(JobProtocolTest, SetsTheOutputsOfAJobOrItsOwn) {
    EXPECT_EQ(Own().map->Count(), 0u);
    module.Load(Section({{"speed", 7}}, Outputs, Blocks));
    EXPECT_EQ(Own().map->DataSourceList(), (Texts{"b", "a"}));
    module.Reset();
    EXPECT_EQ(Own().map->DataSourceList(), (Texts{"d"}));
    EXPECT_EQ(Own().params->speed.Get(), 1u);
    EXPECT_EQ(Own().RegisterAssembly(AssemblyId)->AddedRegisterBlocksCount(), 0u);
}

TEST_F(JobProtocolTest, ListsEachDataSourceOnceThoseOfTheAssembliesFirst) {
    module.Load(Section({{"speed", 7}}, Outputs, Blocks));
    EXPECT_EQ(Own().DataSourceList(), (Texts{"a", "b"}));
    EXPECT_EQ(Own().DataSourceList(PersistDomain::Job), (Texts{"a", "b"}));
}

TEST_F(JobProtocolTest, ReportsEachChangeOfItsMap) {
    const auto changes = [&] { return std::exchange(Own().mapChanges, 0); };
    EXPECT_EQ(changes(), 0u);
    module.Instance().OutputsUpdate();
    EXPECT_EQ(changes(), 1u);
    Own().ConfigureDefaultRegisterAssembly();
    EXPECT_EQ(changes(), 1u);
    module.Instance().BeginUpdateOutputsMap();
    EXPECT_EQ(changes(), 0u);
    module.Instance().EndUpdateOutputsMap();
    EXPECT_EQ(changes(), 1u);
    module.Instance().BeginUpdateRegisterAssembly(AssemblyId);
    module.Instance().RegisterAssemblyUpdate(AssemblyId);
    EXPECT_EQ(changes(), 0u) << "once for each update, since a large map takes its time";
    module.Instance().EndUpdateRegisterAssembly(AssemblyId);
    EXPECT_EQ(changes(), 1u);
}

/// Has parameters, and nothing else.
class PlainService : public JobProtocol {
public:
    explicit PlainService(const ControlProtocolEnviron& environ)
        : JobProtocol(environ) {
        Init({.params = params});
    }

    void Start() override { UpdateProtocolStatus(ProtocolStatus::Running); }
    void Stop() override { UpdateProtocolStatus(ProtocolStatus::Stopped); }

    const std::shared_ptr<TestParams> params = std::make_shared<TestParams>();
};

TEST(JobProtocol, NeedsNeitherAssembliesNorOutputs) {
    ServiceModule<PlainService> module;
    module.Load({{"enabled", true}, {"parametersVersion", "1"}, {"parameters", {{"speed", 3}}}});
    EXPECT_EQ(module.Own().GetProtocolStatus(), ProtocolStatus::Running);
    EXPECT_EQ(module.Own().params->speed.Get(), 3u);
    EXPECT_FALSE(module.Instance().HasRegisterAssemblyGroup());
    EXPECT_FALSE(module.Instance().HasProtocolOutput());
    EXPECT_EQ(module.Own().DataSourceList(), Texts());
    const json saved = module.Save();
    EXPECT_EQ(saved["parameters"], json({{"speed", 3}}));
    EXPECT_FALSE(saved.contains("outputs"));
    EXPECT_FALSE(saved.contains("registerAssemblyList"));
    module.Reset();
    EXPECT_EQ(module.Own().params->speed.Get(), 3u) << "it resets none of them";
}

} // namespace
} // namespace Services::Common
