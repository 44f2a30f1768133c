#include "VorControl/Protocol/ControlTypesResource.h"

#include "Tests/VorControl/Protocol/ResourceFixture.h"
#include "VorControl/Protocol/ProtocolTypesProperties.h"

namespace {

using Json = nlohmann::json;

class ControlTypesResourceTest : public Tests::ResourceFixture {};

TEST_F(ControlTypesResourceTest, ListsTheTypesAscendingWithAllTheirMembers) {
    const VorApi::VorDataTree items = Read("/controlTypes")["items"];
    ASSERT_EQ(items.Count(), 2U);
    EXPECT_EQ(items.At(0).ToJson(), Json::parse(R"({"type":"bare","displayName":"bare service","description":"",
        "helpHtml":"","helpUrl":"","categories":[],"icon":{"mimeType":"","data":""}})"));
    EXPECT_EQ(items.At(1).ToJson(), Json::parse(R"({"type":"full","displayName":"full service",
        "description":"All of it","helpHtml":"<b>h</b>","helpUrl":"http://h","categories":["c1","c2"],
        "icon":{"mimeType":"image/png","data":"AQL/"}})"));
    EXPECT_EQ(items.At(0).Names(),
              (Texts{"type", "displayName", "description", "helpHtml", "helpUrl", "categories", "icon"}));
}

TEST_F(ControlTypesResourceTest, ATypeTakesNothingOverFromTheOneBefore) {
    VorControl::Protocol::ProtocolTypesProperties properties;
    properties.Populate(Instance("full").Info());
    properties.Populate(Instance("bare").Info());
    EXPECT_TRUE(properties.categories.Get().empty());
    EXPECT_EQ(properties.icon.data.Get().Size(), 0U);
    EXPECT_EQ(properties.icon.mimeType.Get(), "");
    EXPECT_EQ(properties.helpUrl.Get(), "");
}

TEST_F(ControlTypesResourceTest, MembersHaveTitlesAndAreReadOnly) {
    const VorApi::VorDataTree properties = ReadWithSchema("/controlTypes")["items"].At(0)["_schema"]["properties"];
    const std::vector<std::pair<std::string, std::string>> titles{{"type", "Identifier"},
                                                                  {"displayName", "Display Type"},
                                                                  {"description", "Description"},
                                                                  {"helpHtml", "Help In HTML"},
                                                                  {"helpUrl", "Help URL"},
                                                                  {"categories", "Categories"},
                                                                  {"icon", "Icon"}};
    for (const auto& [name, title] : titles) {
        EXPECT_EQ(properties[name]["title"].AsText(), title);
        EXPECT_TRUE(properties[name]["readOnly"].AsBool()) << name;
    }
    EXPECT_EQ(properties["icon"]["properties"]["mimeType"]["title"].AsText(), "Icon MIME Type");
    EXPECT_EQ(properties["icon"]["properties"]["data"]["title"].AsText(), "Icon Data");
    EXPECT_TRUE(properties["icon"]["properties"]["data"]["readOnly"].AsBool());
}

TEST_F(ControlTypesResourceTest, CantBeUpdated) {
    EXPECT_TEXTLESS_FAILURE(Update("/controlTypes", Json::object()), yERROR_UNIMPLEMENTED);
}

} // namespace
