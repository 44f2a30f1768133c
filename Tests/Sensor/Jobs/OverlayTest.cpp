#include "Sensor/Jobs/Overlay.h"

#include "Sensor/Jobs/OverlayStore.h"
#include "Sensor/StartError.h"
#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/MemoryStore.h"
#include "Tests/Support/TestService.h"
#include "Vor/Exception.h"
#include "Vor/MainLoop.h"
#include "VorApi/Params/Value.h"
#include "VorControl/Control/ControlModule.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Jobs {
namespace {

constexpr const char* Path = "/controls/plc/config.json";

/// Two services: "plc" with parameters, "bare" with an empty group.
class OverlayTest : public ::testing::Test {
protected:
    OverlayTest() {
        port.SetMinimum(1);
        port.EnableMaximum(true);
        port.SetMaximum(60000);
        plugin.Add("plc", plc, [this](Tests::TestService& service) {
            service.params.Register("port", port, "Port", 100);
            service.params.Register("name", name, "Name", 100);
            service.params.Register("fast", fast, "Fast", 100);
        });
        plugin.Add("bare", bare);
        plugin.Publish(plugins);
        module = std::make_unique<VorControl::ControlModule>(plugins, environ.router, environ.Record());
    }

    void Add(const std::string& text) { overlay.Add(ServiceSetting::Parse(text, "--set"), module->Manager()); }

    std::string Refusal(const std::string& text) {
        try {
            Add(text);
        } catch (const StartError& error) {
            return error.what();
        }
        return "";
    }

    nlohmann::json ReadThrough() {
        const VorCommon::PersistBuffer buffer = OverlayStore(store, overlay).Read(Path);
        const auto* begin = buffer.pointer + buffer.offset;
        return nlohmann::json::parse(begin, begin + buffer.size);
    }

    void WriteThrough(const std::string& text) { OverlayStore(store, overlay).Write(Path, text.data(), text.size()); }

    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    Vor::Params::Value<unsigned short> port{502};
    Vor::Params::Value<std::string> name;
    Vor::Params::Value<bool> fast{false};
    Tests::ControlEnviron environ;
    VorPlugin::PluginManager plugins;
    Tests::TestPlugin plugin;
    std::weak_ptr<Tests::TestService> plc;
    std::weak_ptr<Tests::TestService> bare;
    std::unique_ptr<VorControl::ControlModule> module;
    Overlay overlay;
    Tests::MemoryStore store;
};

TEST_F(OverlayTest, NamesAnUnknownService) {
    EXPECT_EQ(Refusal("nope.port=1"), "--set nope.port=1: unknown service \"nope\", known: bare, plc.");
}

TEST_F(OverlayTest, NamesAnUnknownParameter) {
    EXPECT_EQ(Refusal("plc.nope=1"),
              "--set plc.nope=1: service \"plc\" has no parameter \"nope\", known: fast, name, port.");
    EXPECT_EQ(Refusal("bare.x=1"), "--set bare.x=1: service \"bare\" has no parameter \"x\", known: none.");
}

TEST_F(OverlayTest, NamesAValueOfTheWrongKind) {
    EXPECT_EQ(Refusal("plc.port=abc"),
              "--set plc.port=abc: \"abc\" is no value of parameter \"port\", which is a number.");
    EXPECT_EQ(Refusal("plc.fast=maybe"),
              "--set plc.fast=maybe: \"maybe\" is no value of parameter \"fast\", which is true or false.");
    for (const char* text : {"plc.port=\"5\"", "plc.port=1.5", "plc.port=-1", "plc.port=65536", "plc.port=true",
                             "plc.port=", "plc.fast=1", "plc.port={}"}) {
        const std::string refusal = Refusal(text);
        EXPECT_EQ(refusal.find(std::string("--set ") + text + ": "), 0U) << refusal;
    }
}

TEST_F(OverlayTest, NamesAValueOutsideItsLimits) {
    EXPECT_EQ(Refusal("plc.port=60001"),
              "--set plc.port=60001: the value isn't taken (Port is set to be greater than its maximum).");
    EXPECT_NE(Refusal("plc.port=0"), "");
}

TEST_F(OverlayTest, LeavesTheServiceItselfAsItIs) {
    Add("plc.port=7");
    EXPECT_EQ(port.Get(), 502);
}

TEST_F(OverlayTest, ARefusedSettingIsntOverlaid) {
    EXPECT_NE(Refusal("plc.port=0"), "");
    EXPECT_EQ(overlay.Find(Path), nullptr);
}

TEST_F(OverlayTest, ReadsTheSetValuesInPlaceOfTheStoredOnes) {
    store.files[Path] = R"({"version":"1","vor:control":{"enabled":true,"parameters":{"port":502,"name":"a"}}})";
    Add("plc.port=7");
    Add("plc.port=8");
    Add("plc.fast=true");
    EXPECT_EQ(ReadThrough(),
              nlohmann::json::parse(
                  R"({"version":"1","vor:control":{"enabled":true,"parameters":{"port":8,"name":"a","fast":true}}})"));
}

TEST_F(OverlayTest, ATextIsTakenAsItStands) {
    store.files[Path] = R"({"vor:control":{"parameters":{}}})";
    Add("plc.name=12 \"x\"");
    EXPECT_EQ(ReadThrough()["vor:control"]["parameters"]["name"], "12 \"x\"");
}

TEST_F(OverlayTest, AFileWithoutParametersGetsThemWithTheirVersion) {
    store.files[Path] = R"({"vor:control":{"enabled":true}})";
    Add("plc.port=7");
    EXPECT_EQ(
        ReadThrough(),
        nlohmann::json::parse(R"({"vor:control":{"enabled":true,"parameters":{"port":7},"parametersVersion":"1"}})"));
}

TEST_F(OverlayTest, ReadsOtherFilesAsTheyAre) {
    Add("plc.port=7");
    const OverlayStore overlaid(store, overlay);
    store.files["/controls/bare/config.json"] = "not json";
    const VorCommon::PersistBuffer buffer = overlaid.Read("/controls/bare/config.json");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer.pointer + buffer.offset), buffer.size), "not json");
    EXPECT_TRUE(overlaid.Exists("/controls/bare/config.json"));
    EXPECT_FALSE(overlaid.Exists(Path));
    EXPECT_THROW(overlaid.Read(Path), Vor::Exception);
}

TEST_F(OverlayTest, LeavesABrokenFileToItsReader) {
    Add("plc.port=7");
    std::string nested(100, '[');
    for (const std::string& text :
         {std::string("{"), std::string("[]"), std::string("{}"), std::string(R"({"vor:control":1})"),
          std::string(R"({"vor:control":{"parameters":[]}})"), nested + std::string(100, ']')}) {
        store.files[Path] = text;
        const VorCommon::PersistBuffer buffer = OverlayStore(store, overlay).Read(Path);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer.pointer + buffer.offset), buffer.size), text);
    }
}

TEST_F(OverlayTest, WritesTheStoredValueBack) {
    store.files[Path] = R"({"vor:control":{"parameters":{"port":502,"name":"a"}}})";
    Add("plc.port=7");
    WriteThrough(R"({"vor:control":{"parameters":{"port":7,"name":"b"}}})");
    EXPECT_EQ(store.files[Path], R"({"vor:control":{"parameters":{"name":"b","port":502}}})");
}

TEST_F(OverlayTest, AValueThatWasChangedSinceIsWritten) {
    store.files[Path] = R"({"vor:control":{"parameters":{"port":502}}})";
    Add("plc.port=7");
    WriteThrough(R"({"vor:control":{"parameters":{"port":9}}})");
    EXPECT_EQ(store.files[Path], R"({"vor:control":{"parameters":{"port":9}}})");
}

TEST_F(OverlayTest, AValueThatWasntStoredIsntWritten) {
    Add("plc.port=7");
    WriteThrough(R"({"vor:control":{"parameters":{"port":7,"name":"b"}}})");
    EXPECT_EQ(store.files[Path], R"({"vor:control":{"parameters":{"name":"b"}}})");
}

TEST_F(OverlayTest, WritesOtherFilesAsTheyAre) {
    Add("plc.port=7");
    OverlayStore(store, overlay).Write("/controls/bare/config.json", "{ }", 3);
    EXPECT_EQ(store.files["/controls/bare/config.json"], "{ }");
    WriteThrough("no json");
    EXPECT_EQ(store.files[Path], "no json");
}

TEST_F(OverlayTest, AFailureToWriteReachesTheWriter) {
    Add("plc.port=7");
    store.writeStatus = yERROR;
    EXPECT_THROW(WriteThrough(R"({"vor:control":{"parameters":{"port":7}}})"), Vor::Exception);
}

} // namespace
} // namespace Sensor::Jobs
