// What HTTP allows at the resources of devices.

#include "Sensor/Http/ResourceMap.h"
#include "Tests/VorControl/Protocol/DeviceResourceFixture.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using Sensor::Http::ResourceMap;
using VorRest::Verb;

class DeviceMethodsTest : public Tests::DeviceResourceFixture {
protected:
    DeviceMethodsTest() {
        Select();
        reporter.keys.emplace("io", "device-0", "port-0");
    }

    const ResourceMap map{router};
    const std::string device = "/controls/io/devices/device-0";
    const std::string port = device + "/ports/port-0";
};

TEST_F(DeviceMethodsTest, EachPathAllowsWhatItsResourceDoes) {
    const std::string assembly = port + "/registerAssemblies/registerAssembly-0";
    for (const auto& [path, allow] :
         std::vector<std::pair<std::string, std::string>>{{"/controls/io/availableDevices", "GET, HEAD, OPTIONS"},
                                                          {"/controls/io/devices", "GET, HEAD, POST, OPTIONS"},
                                                          {device, "GET, HEAD, DELETE, OPTIONS"},
                                                          {device + "/ports", "GET, HEAD, OPTIONS"},
                                                          {port, "GET, HEAD, PATCH, OPTIONS"},
                                                          {port + "/metrics", "GET, HEAD, OPTIONS"},
                                                          {port + "/commands/trigger", "POST, OPTIONS"},
                                                          {port + "/registerAssemblies", "GET, HEAD, OPTIONS"},
                                                          {assembly, "GET, HEAD, OPTIONS"},
                                                          {assembly + "/commands", "GET, HEAD, OPTIONS"},
                                                          {assembly + "/commands/add", "GET, HEAD, POST, OPTIONS"},
                                                          {port + "/commands", ""},
                                                          {port + "/commands/pull", ""},
                                                          {device + "/ports/port-7/commands/trigger", ""},
                                                          {"/controls/io/devices/device-1", ""},
                                                          {"/controls/bare/devices", ""},
                                                          {"/controls/bare/availableDevices", ""}}) {
        EXPECT_EQ(map.MethodsOf(path).Allow(), allow) << path;
    }
}

TEST_F(DeviceMethodsTest, MethodsAreVerbs) {
    EXPECT_EQ(map.VerbOf("POST", "/controls/io/devices"), Verb::Create);
    EXPECT_EQ(map.VerbOf("DELETE", device), Verb::Delete);
    EXPECT_EQ(map.VerbOf("PATCH", port), Verb::Update);
    EXPECT_EQ(map.VerbOf("POST", port + "/commands/trigger"), Verb::Invoke);
    EXPECT_EQ(map.VerbOf("POST", device + "/ports"), std::nullopt);
    EXPECT_EQ(map.VerbOf("DELETE", port), std::nullopt);
}

TEST_F(DeviceMethodsTest, APortLeadsToItsFigures) {
    const auto document = map.Describe(port, Ask(Verb::Read, port));
    EXPECT_TRUE(document.HasLink("vor:metrics"));
    EXPECT_FALSE(document.HasLink("vor:commands")) << "there is no list of them";
    ASSERT_EQ(document.embedded.size(), 1U);
    EXPECT_EQ(document.embedded[0].link.href, port + "/registerAssemblies");
}

} // namespace
