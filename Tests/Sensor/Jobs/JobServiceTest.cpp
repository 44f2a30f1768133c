#include "Sensor/Jobs/JobService.h"

#include "Sensor/Jobs/MapText.h"
#include "Sensor/Jobs/OfflineServices.h"
#include "Sensor/StartError.h"
#include "Tests/Support/DomainService.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/TestService.h"
#include "Vor/Exception.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ArchiveFile.h"
#include "VorControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "VorPlugin/PluginManager.h"
#include "yApi/yStatus.h"

#include <sstream>

#include <gtest/gtest.h>

namespace Sensor::Jobs {
namespace {

using nlohmann::json;
using VorCommon::ArchiveFile;
using VorCommon::PersistDomain;

constexpr const char* Entry = "controls/type/config.json";

/// A job with settings of the service "type", whose assemblies have version 7.
class JobServiceTest : public ::testing::Test {
protected:
    JobServiceTest() {
        plugin.Add(Tests::TestPlugin::Info("type"),
                   [this](const VorControl::ControlProtocol::ControlProtocolEnviron& environ) {
                       auto made = std::make_shared<Tests::DomainService>(environ);
                       service = made;
                       return made;
                   });
        plugin.Add("plain", plain);
        plugin.Publish(plugins);
        services.emplace(plugins);
        Service().provider->RegisterParams(PersistDomain::Job);
        Service().outputs = nullptr;
    }

    Tests::DomainService& Service() const { return *service.lock(); }

    void AddAssemblies(const std::vector<const char*>& assemblies) {
        for (const char* id : assemblies) {
            Service().AddAssembly(id);
        }
        Service().provider->RegisterRegisterAssemblyGroup(PersistDomain::Job);
    }
    void SetOutputs(std::shared_ptr<VorControl::ControlProtocol::IProtocolOutput> map) {
        Service().outputs = std::move(map);
        Service().provider->RegisterOutputsMap(PersistDomain::Job);
    }

    void Write(const std::string& text, const std::string& entry = Entry) {
        ArchiveFile(file).Write({{entry, std::make_shared<const std::vector<unsigned char>>(text.begin(), text.end())},
                                 {"other.json", std::make_shared<const std::vector<unsigned char>>(2, '7')}});
    }
    void WriteSection(const json& section) { Write(json{{"version", "1"}, {"vor:control", section}}.dump()); }
    std::string Stored() const {
        const auto bytes = ArchiveFile(file).Read().at(Entry);
        return {bytes->begin(), bytes->end()};
    }
    json StoredSection() const { return json::parse(Stored()).at("vor:control"); }

    static json Assembly(const char* id, const json& blocks) {
        return {{"properties", {{"id", id}}}, {"blocks", blocks}};
    }
    static json Block(const char* type, int outputId) { return {{"type", type}, {"outputId", outputId}}; }
    static json OneBlock() { return json::array({Block("one", 3)}); }
    static json SectionOf(const std::vector<const char*>& ids, const json& blocks) {
        json section = {{"enabled", false},
                        {"parameters", {{"port", 9}, {"name", "kept"}}},
                        {"parametersVersion", "2"},
                        {"registerAssemblyList", json::array()},
                        {"registerAssemblyVersionList", json::array()}};
        for (const char* id : ids) {
            section["registerAssemblyList"].push_back(Assembly(id, blocks));
            section["registerAssemblyVersionList"].push_back({{"id", id}, {"version", "7"}});
        }
        return section;
    }

    JobService Open(const std::string& id = "type", JobService::Missing missing = JobService::Missing::Refuse) {
        store.emplace(file);
        store->OpenJob();
        JobService job(*services, *store, id, missing);
        job.Load();
        return job;
    }
    std::string Refusal(const std::function<void()>& work) {
        try {
            work();
        } catch (const Vor::Exception& e) {
            return e.what();
        }
        return "(done)";
    }
    std::string Edit(const JobService::Selection& selection, const std::string& command, const json& document) {
        return Refusal([&] {
            JobService job = Open();
            job.Edit(selection, command, document);
            job.Save();
            store->Commit();
        });
    }
    std::string Table(const JobService::Selection& selection = {}) {
        JobService job = Open();
        std::ostringstream out;
        MapText(job, selection).PrintTable(out);
        return out.str();
    }
    std::string Csv(const JobService::Selection& selection = {}) {
        JobService job = Open();
        std::ostringstream out;
        MapText(job, selection).PrintCsv(out);
        return out.str();
    }

    Tests::TempFolder folder;
    const std::string file = folder.File("test.vrjob");
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    std::weak_ptr<Tests::DomainService> service;
    std::weak_ptr<Tests::TestService> plain;
    VorPlugin::PluginManager plugins;
    Tests::TestPlugin plugin;
    std::optional<OfflineServices> services;
    std::optional<VorCommon::ArchiveStore> store;
};

TEST_F(JobServiceTest, LoadsTheMapOfADisabledServiceAndStartsNothing) {
    AddAssemblies({"a"});
    WriteSection(SectionOf({"a"}, OneBlock()));
    EXPECT_EQ(
        Table(),
        "shown (a)\nAddress  Registers  Type  Data Source  Name\n3        1          one                one name\n");
    EXPECT_FALSE(Open().Instance().IsEnabled());
    EXPECT_EQ(std::count(Service().calls.begin(), Service().calls.end(), "Start"), 0);
}

TEST_F(JobServiceTest, AnEditIsSavedAndEverythingElseStays) {
    AddAssemblies({"a"});
    WriteSection(SectionOf({"a"}, OneBlock()));
    EXPECT_EQ(Edit({}, "add", json::parse(R"({"blocks":[{"type":"four","outputId":10,"displayName":"new"}]})")),
              "(done)");
    const json section = StoredSection();
    EXPECT_EQ(section.at("enabled"), false);
    EXPECT_EQ(section.at("parameters"), json::parse(R"({"port":9,"name":"kept"})"));
    EXPECT_EQ(section.at("registerAssemblyVersionList"), json::parse(R"([{"id":"a","version":"7"}])"));
    ASSERT_EQ(section.at("registerAssemblyList").at(0).at("blocks").size(), 2U);
    EXPECT_EQ(section.at("registerAssemblyList").at(0).at("blocks").at(1).at("displayName"), "new");
    EXPECT_TRUE(ArchiveFile(file).Read().contains("other.json"));
    EXPECT_EQ(Edit({}, "update", {{"outputId", 10}, {"newParams", {{"outputId", 50}}}}), "(done)");
    EXPECT_EQ(Edit({}, "remove", json::parse(R"({"outputIdList":[{"outputId":3}]})")), "(done)");
    EXPECT_EQ(Csv(), "assembly,outputId,registerCount,type,dataSource,displayName\r\na,50,4,four,,new\r\n");
    EXPECT_EQ(Edit({}, "compact", {{"startingOutputId", 7}}), "(done)");
    EXPECT_EQ(Csv(), "assembly,outputId,registerCount,type,dataSource,displayName\r\na,7,4,four,,new\r\n");
    EXPECT_EQ(Edit({}, "removeAll", json::object()), "(done)");
    EXPECT_EQ(Table(), "shown (a)\n  (empty)\n");
}

TEST_F(JobServiceTest, AnEnabledServiceStaysEnabledAndOneThatDoesNotSayStaysSo) {
    AddAssemblies({"a"});
    json section = SectionOf({"a"}, json::array());
    section["enabled"] = true;
    WriteSection(section);
    EXPECT_EQ(Edit({}, "removeAll", json::object()), "(done)");
    EXPECT_EQ(StoredSection().at("enabled"), true);
    section.erase("enabled");
    WriteSection(section);
    EXPECT_EQ(Edit({}, "removeAll", json::object()), "(done)");
    EXPECT_FALSE(StoredSection().contains("enabled"));
}

TEST_F(JobServiceTest, AnEditThatFailsLeavesTheJobAsItWas) {
    AddAssemblies({"a"});
    WriteSection(SectionOf({"a"}, OneBlock()));
    const std::string before = Stored();
    const std::string refusal =
        Edit({}, "add", json::parse(R"({"blocks":[{"type":"one","outputId":4},{"type":"one","outputId":3}]})"));
    EXPECT_EQ(refusal.find("Only 1 out of 2 data sources were added."), 0U) << refusal;
    EXPECT_NE(refusal.find("The block output id/address 3 conflicts"), std::string::npos) << refusal;
    EXPECT_NE(Edit({}, "remove", json::parse(R"({"outputIdList":[{"outputId":9}]})")), "(done)");
    EXPECT_NE(Edit({}, "update", {{"outputId", 9}}), "(done)");
    EXPECT_EQ(Stored(), before);
}

TEST_F(JobServiceTest, NamesTheKeyThatIsNotTakenAndWhatIsExpected) {
    AddAssemblies({"a"});
    WriteSection(SectionOf({"a"}, json::array()));
    const std::string before = Stored();
    EXPECT_EQ(Edit({}, "add", {{"block", json::array()}}), "block: unknown key. Expected one of: autoShift, blocks.");
    EXPECT_EQ(Edit({}, "add", {{"blocks", {Block("one", 4), {{"Type", "one"}}}}}),
              "blocks[1].Type: unknown key. Expected one of: dataSource, displayName, outputId, registerCount, type.");
    EXPECT_EQ(Edit({}, "update", {{"newParams", {{"id", 1}}}}),
              "newParams.id: unknown key. Expected one of: dataSource, displayName, outputId, registerCount.");
    EXPECT_EQ(Edit({}, "add", {{"blocks", 7}}).find("blocks: expected an array"), 0U)
        << Edit({}, "add", {{"blocks", 7}});
    EXPECT_EQ(Edit({}, "add", json::parse(R"({"blocks":[{"outputId":65536}]})")).find("blocks[0].outputId: expected"),
              0U)
        << Edit({}, "add", json::parse(R"({"blocks":[{"outputId":65536}]})"));
    EXPECT_EQ(Edit({}, "add", json::array()), "expected a JSON object but got array.");
    EXPECT_EQ(Edit({}, "Add", json::object()),
              "there is no command 'Add'. Expected one of: add, remove, removeAll, compact, update.");
    EXPECT_EQ(Stored(), before);
}

TEST_F(JobServiceTest, OneOfSeveralAssembliesIsChosen) {
    AddAssemblies({"b", "a"});
    WriteSection(SectionOf({"a", "b"}, OneBlock()));
    EXPECT_EQ(Edit({}, "removeAll", json::object()),
              "service 'type' has several assemblies. Expected --assembly with one of: a, b.");
    EXPECT_EQ(Edit({.assembly = "c"}, "removeAll", json::object()),
              "service 'type' has no assembly 'c'. Expected one of: a, b.");
    EXPECT_EQ(Edit({.assembly = "b"}, "removeAll", json::object()), "(done)");
    EXPECT_EQ(Csv(), "assembly,outputId,registerCount,type,dataSource,displayName\r\na,3,1,one,,one name\r\n");
    EXPECT_EQ(Table({.assembly = "b"}), "shown (b)\n  (empty)\n");
    EXPECT_EQ(Refusal([&] { Csv({.assembly = "c"}); }), "service 'type' has no assembly 'c'. Expected one of: a, b.");
}

TEST_F(JobServiceTest, AnOutputMapIsShownAndEdited) {
    AddAssemblies({"a"});
    SetOutputs(std::make_shared<VorControl::ControlProtocol::StandardProtocolOutputMap>(4, 0, 100));
    json section = SectionOf({"a"}, json::array());
    section["outputs"] = json::parse(R"({"map":[{"outputId":4,"source":"profile/max"}]})");
    WriteSection(section);
    EXPECT_EQ(Table(), "shown (a)\n  (empty)\nOutputs\nId  Data Source\n4   profile/max\n");
    EXPECT_EQ(Edit({.outputs = true}, "add", {{"outputId", 9}, {"source", "a, \"b\""}}), "(done)");
    EXPECT_EQ(Csv({.outputs = true}), "outputId,source\r\n4,profile/max\r\n9,\"a, \"\"b\"\"\"\r\n");
    EXPECT_EQ(Csv(), "assembly,outputId,registerCount,type,dataSource,displayName\r\n");
    EXPECT_EQ(Edit({.outputs = true}, "update", json::object()),
              "there is no command 'update'. Expected one of: add, addAll, remove, removeAll, compactId, updateId.");
    EXPECT_EQ(Edit({.outputs = true}, "compactId", json::object()), "(done)");
    EXPECT_EQ(Csv({.outputs = true}), "outputId,source\r\n0,profile/max\r\n1,\"a, \"\"b\"\"\"\r\n");
    EXPECT_EQ(StoredSection().at("outputs").at("map").size(), 2U);
}

TEST_F(JobServiceTest, AnOutputMapOfTextsIsTheOnlyMapOfAServiceWithoutAssemblies) {
    SetOutputs(std::make_shared<VorControl::ControlProtocol::TextIdStandardProtocolOutputMap>(4));
    Service().group = nullptr;
    json section = SectionOf({}, json::array());
    section["outputs"] = json::parse(R"({"map":[{"outputId":"height","source":"profile/max"}]})");
    WriteSection(section);
    EXPECT_EQ(Edit({}, "add", {{"outputId", "depth"}, {"source", "profile/min"}}), "(done)");
    EXPECT_EQ(Csv(), "outputId,source,itemType\r\ndepth,profile/min,\r\nheight,profile/max,\r\n");
    JobService job = Open();
    std::ostringstream out;
    MapText(job, {}).PrintJson(out);
    EXPECT_EQ(json::parse(out.str()).at("outputs").at(1).at("outputId"), "height");
    EXPECT_EQ(json::parse(out.str()).at("assemblies"), json::array());
}

TEST_F(JobServiceTest, AServiceWithoutAMapHasNothingToEdit) {
    Service().group = nullptr;
    WriteSection(SectionOf({}, json::array()));
    EXPECT_EQ(Edit({}, "add", json::object()), "service 'type' has no map.");
    EXPECT_EQ(Edit({.outputs = true}, "add", json::object()), "service 'type' has no output map.");
    EXPECT_EQ(Table(), "");
}

TEST_F(JobServiceTest, TellsWhatTheLoadLeftOut) {
    AddAssemblies({"a"});
    WriteSection(SectionOf({"a", "gone"}, OneBlock()));
    JobService job = Open();
    EXPECT_EQ(job.Notes(), std::vector<std::string>{"type service could not load a connection map configuration "
                                                    "because the connection map is no longer supported by the "
                                                    "service."});
}

TEST_F(JobServiceTest, WhatCannotBeAppliedIsNotEdited) {
    AddAssemblies({"a"});
    WriteSection(SectionOf({"a"}, json::array({Block("unknown", 3)})));
    const std::string before = Stored();
    const std::string refusal = Edit({}, "removeAll", json::object());
    EXPECT_EQ(refusal.find("entry '/controls/type/config.json' can't be applied."), 0U) << refusal;
    EXPECT_NE(refusal.find("connection map a"), std::string::npos) << refusal;
    EXPECT_EQ(Stored(), before);
}

TEST_F(JobServiceTest, SettingsFromBeforeThereWereVersionsAreEdited) {
    AddAssemblies({"a"});
    json section = SectionOf({"a"}, OneBlock());
    section.erase("registerAssemblyVersionList");
    WriteSection(section);
    EXPECT_EQ(Edit({}, "compact", {{"startingOutputId", 0}}), "(done)");
    EXPECT_EQ(StoredSection().at("registerAssemblyVersionList"), json::parse(R"([{"id":"a","version":"7"}])"));
    EXPECT_EQ(Csv(), "assembly,outputId,registerCount,type,dataSource,displayName\r\na,0,1,one,,one name\r\n");
}

TEST_F(JobServiceTest, RefusesSettingsThatAreNone) {
    AddAssemblies({"a"});
    for (const char* text :
         {"[]", "null", "7", "{}", R"({"version":"1"})", R"({"vor:control":{}})", R"({"version":"2","vor:control":{}})",
          R"({"version":1,"vor:control":{}})", R"({"version":"1","vor:control":[]})"}) {
        Write(text);
        EXPECT_EQ(Refusal([&] { Open(); }), "entry '/controls/type/config.json' holds no settings of version 1.")
            << text;
    }
    Write("{}", "controls/another/config.json");
    std::filesystem::remove(file);
    Write("{}", "controls/another/config.json");
    EXPECT_EQ(Refusal([&] { Open(); }), "the job holds nothing of service 'type'. Expected one that jobs show names.");
}

TEST_F(JobServiceTest, NamesTheServicesThatThereAre) {
    WriteSection(json::object());
    EXPECT_EQ(Refusal([&] { Open("x"); }), "there is no service 'x'. Expected one of: plain, type.");
}

TEST_F(JobServiceTest, AServiceThatTheJobDoesNotHoldBeginsFromItsDefaults) {
    AddAssemblies({"a"});
    Service().params->port = 9;
    Write("{}", "other/config.json");
    JobService job = Open("type", JobService::Missing::UseDefaults);
    job.Edit({}, "add", {{"blocks", OneBlock()}});
    job.Set(ServiceSetting::Parse("type.name=new", "jobs set test"));
    job.Save();
    store->Commit();
    const json section = StoredSection();
    EXPECT_EQ(section.at("enabled"), false);
    EXPECT_EQ(section.at("parameters"), json::parse(R"({"port":502,"name":"new"})"));
    EXPECT_EQ(section.at("registerAssemblyList").at(0).at("blocks").size(), 1U);
    EXPECT_TRUE(ArchiveFile(file).Read().contains("other/config.json"));
}

TEST_F(JobServiceTest, AServiceIsEnabledWithoutTheRestOfItsSettings) {
    AddAssemblies({"a"});
    const json section = SectionOf({"a"}, json::array({Block("unknown", 3)}));
    WriteSection(section);
    for (const bool on : {true, false}) {
        store.emplace(file);
        store->OpenJob();
        JobService job(*services, *store, "type", JobService::Missing::UseDefaults);
        job.Enable(on);
        job.Save();
        store->Commit();
        json expected = section;
        expected["enabled"] = on;
        EXPECT_EQ(StoredSection(), expected);
    }
}

TEST_F(JobServiceTest, ASettingIsSavedAndEverythingElseStays) {
    AddAssemblies({"a"});
    WriteSection(SectionOf({"a"}, OneBlock()));
    JobService job = Open();
    job.Set(ServiceSetting::Parse("type.port=1502", "jobs set test"));
    job.Save();
    store->Commit();
    EXPECT_EQ(StoredSection().at("parameters"), json::parse(R"({"port":1502,"name":"kept"})"));
    EXPECT_EQ(Csv(), "assembly,outputId,registerCount,type,dataSource,displayName\r\na,3,1,one,,one name\r\n");
    try {
        job.Set(ServiceSetting::Parse("type.port=x", "jobs set test"));
        ADD_FAILURE() << "set";
    } catch (const StartError& error) {
        EXPECT_EQ(std::string(error.what()),
                  "jobs set test type.port=x: \"x\" is no value of parameter \"port\", which is a number.");
    }
}

} // namespace
} // namespace Sensor::Jobs
