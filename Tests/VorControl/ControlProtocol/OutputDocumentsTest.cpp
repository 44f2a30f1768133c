#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestOutputs.h"
#include "Vor/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace VorControl::ControlProtocol;
using nlohmann::json;
using Tests::WasTranslated;
using Vor::Properties::JsonSerializer;

namespace {

struct Field {
    const char* key;
    const char* title;
    bool readOnly = false;
};

/// Checks the members of a document that is Made, and that their titles were translated.
void ExpectFields(const Vor::Params::Group& group, std::initializer_list<Field> expected) {
    const auto fields = JsonSerializer::SerializeSchema(group).at("properties");
    ASSERT_EQ(group.Members().size(), expected.size());
    std::size_t position = 0;
    for (const auto& [key, title, readOnly] : expected) {
        EXPECT_EQ(group.Members()[position].Text(), key);
        EXPECT_EQ(fields.at(key).at("title"), title);
        EXPECT_EQ(fields.at(key).at("sortOrder"), position * 100);
        EXPECT_EQ(fields.at(key).value("readOnly", false), readOnly) << key;
        EXPECT_TRUE(WasTranslated("beApp.ctrl", title)) << title;
        ++position;
    }
}

/// Forgets the calls of the translator before the document is made.
struct Forgetting {
    Forgetting() { VorGetText::GetInstance().ForgetCalls(); }
};

template <class Document>
struct Made : private Forgetting, public Document {};

const json Measurements = json::parse(R"([{"type": 19, "arrayed": false}])");

} // namespace

TEST(OutputDocuments, CommonPartOfAllMaps) {
    const Made<CommonProtocolOutputProp> document;
    EXPECT_EQ(JsonSerializer::Serialize(document), (json{{"version", "1.2"}, {"acceptedDataFormats", Measurements}}));
    ExpectFields(document, {{"version", "Version", true}, {"acceptedDataFormats", "Accepted Data Formats"}});
}

TEST(OutputDocuments, NumericItem) {
    const Made<StandardOutputItem> document;
    EXPECT_EQ(JsonSerializer::Serialize(document), (json{{"outputId", 65535}, {"source", ""}}));
    ExpectFields(document, {{"outputId", "Id"}, {"source", "Source"}});
}

TEST(OutputDocuments, NumericAddRequest) {
    const Made<StandardOutputItemArgs> document;
    EXPECT_EQ(JsonSerializer::Serialize(document), (json{{"outputId", 65535}, {"source", ""}, {"autoShift", false}}));
    ExpectFields(document, {{"outputId", "Id"}, {"source", "Source"}, {"autoShift", "AutoShift"}});
}

TEST(OutputDocuments, NumericAttributes) {
    const Made<StandardOutputsAttributes> document;
    EXPECT_EQ(JsonSerializer::Serialize(document), (json{{"outputIdMin", 0}, {"outputIdMax", 0}}));
    ExpectFields(document, {{"outputIdMin", "Minimum Output Id", true}, {"outputIdMax", "Maximum Output Id", true}});
}

TEST(OutputDocuments, NumericMap) {
    const Made<StandardOutputs> document;
    EXPECT_EQ(JsonSerializer::Serialize(document), (json{{"version", "1.2"},
                                                         {"acceptedDataFormats", Measurements},
                                                         {"attributes", {{"outputIdMin", 0}, {"outputIdMax", 0}}},
                                                         {"map", json::array()}}));
    ExpectFields(document, {{"version", "Version", true},
                            {"acceptedDataFormats", "Accepted Data Formats"},
                            {"attributes", "Attributes"},
                            {"map", "OutputMap"}});
}

TEST(OutputDocuments, NumericRequestOfManyEntries) {
    Made<StandardOutputsArgs> document;
    ExpectFields(document, {{"version", "Version", true},
                            {"acceptedDataFormats", "Accepted Data Formats"},
                            {"attributes", "Attributes"},
                            {"map", "OutputMap"},
                            {"autoShift", "AutoShift"}});
    EXPECT_FALSE(document.autoShift.Get());
    JsonSerializer::Deserialize(document,
                                json::parse(R"({"map": [{"source": "a"}, {"outputId": 4}], "autoShift": true})"));
    ASSERT_EQ(document.map.Count(), 2U);
    EXPECT_EQ(document.map.At(0).source.Get(), "a");
    EXPECT_EQ(document.map.At(0).outputId.Get(), 65535);
    EXPECT_EQ(document.map.At(1).outputId.Get(), 4);
    EXPECT_TRUE(document.autoShift.Get());
}

TEST(OutputDocuments, NumericRemoveRequest) {
    const Made<StandardOutputRemoveArgs> document;
    EXPECT_EQ(JsonSerializer::Serialize(document), (json{{"outputId", 65535}, {"outputIdList", json::array()}}));
    ExpectFields(document, {{"outputId", "Id"}, {"outputIdList", "Id List"}});
    EXPECT_EQ(JsonSerializer::SerializeSchema(document)["properties"]["outputIdList"]["items"],
              (json{{"type", "integer"}}));
}

TEST(OutputDocuments, TextItem) {
    const Made<TextIdStandardOutputItem> document;
    EXPECT_EQ(JsonSerializer::Serialize(document), (json{{"outputId", ""}, {"source", ""}, {"itemType", ""}}));
    ExpectFields(document, {{"outputId", "Id"}, {"source", "Source"}, {"itemType", "Item type", true}});
}

TEST(OutputDocuments, TextAddRequest) {
    const Made<TextIdStandardOutputItemArgs> document;
    EXPECT_EQ(JsonSerializer::Serialize(document),
              (json{{"outputId", ""}, {"source", ""}, {"itemType", ""}, {"autoShift", false}}));
    ExpectFields(
        document,
        {{"outputId", "Id"}, {"source", "Source"}, {"itemType", "Item type", true}, {"autoShift", "AutoShift"}});
}

TEST(OutputDocuments, TextMapAndItsRequestAreAlike) {
    const Made<TextIdStandardOutputs> document;
    const json expected = {{"version", "1.2"}, {"acceptedDataFormats", Measurements}, {"map", json::array()}};
    EXPECT_EQ(JsonSerializer::Serialize(document), expected);
    ExpectFields(
        document,
        {{"version", "Version", true}, {"acceptedDataFormats", "Accepted Data Formats"}, {"map", "OutputMap"}});
    EXPECT_EQ(JsonSerializer::Serialize(TextIdStandardOutputsArgs()), expected);
}

TEST(OutputDocuments, TextRemoveRequest) {
    const Made<TextIdStandardOutputRemoveArgs> document;
    EXPECT_EQ(JsonSerializer::Serialize(document), (json{{"outputId", ""}, {"outputIdList", json::array()}}));
    ExpectFields(document, {{"outputId", "Id"}, {"outputIdList", "Id List"}});
    EXPECT_EQ(JsonSerializer::SerializeSchema(document)["properties"]["outputIdList"]["items"],
              (json{{"type", "string"}}));
}
