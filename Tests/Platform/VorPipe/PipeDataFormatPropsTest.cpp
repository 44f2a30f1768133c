#include "VorPipe/PipeDataFormatProps.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Vor/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Properties::JsonSerializer;
using VorPipe::PipeDataFormatProps;
using VorPipe::PipeDataType;

TEST(PipeDataFormatProps, TypeIsANumberInTheDocument) {
    PipeDataFormatProps format;
    EXPECT_EQ(JsonSerializer::Serialize(format), (json{{"type", 0}, {"arrayed", false}}));
    format.type = PipeDataType::Measurement;
    format.arrayed = true;
    EXPECT_EQ(JsonSerializer::Serialize(format), (json{{"type", 19}, {"arrayed", true}}));
}

TEST(PipeDataFormatProps, TypeIsReadInSixteenBits) {
    PipeDataFormatProps format;
    JsonSerializer::Deserialize(format, {{"type", 20}});
    EXPECT_EQ(format.type.Get(), PipeDataType::String);
    JsonSerializer::Deserialize(format, {{"type", 65535}});
    EXPECT_EQ(format.type.Get(), static_cast<PipeDataType>(65535));
    EXPECT_FAILURE(JsonSerializer::Deserialize(format, {{"type", 65555}}), yERROR_PARAMETER,
                   "The number 65555 is outside of the enumeration.");
    EXPECT_EQ(format.type.Get(), static_cast<PipeDataType>(65535));
}

TEST(PipeDataFormatProps, TitlesAreTranslated) {
    VorGetText::GetInstance().ForgetCalls();
    const PipeDataFormatProps format;
    const auto fields = JsonSerializer::SerializeSchema(format)["properties"];
    EXPECT_EQ(fields["type"]["title"], "Type");
    EXPECT_EQ(fields["type"]["sortOrder"], 0);
    EXPECT_EQ(fields["arrayed"]["title"], "Arrayed");
    EXPECT_EQ(fields["arrayed"]["sortOrder"], 100);
    EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl", "Type"));
    EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl", "Arrayed"));
}
