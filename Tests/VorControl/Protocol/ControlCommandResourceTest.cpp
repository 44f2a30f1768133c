#include "VorControl/Protocol/ControlCommandResource.h"

#include "Tests/VorControl/Protocol/ResourceFixture.h"

namespace {

using Json = nlohmann::json;
using VorApi::RequestInfoEx;

class ControlCommandResourceTest : public Tests::ResourceFixture {};

TEST_F(ControlCommandResourceTest, TheCollectionEmbedsEachCommand) {
    EXPECT_EQ(RelationsOf("/controls/full/commands"),
              (Texts{"embed item[] /controls/full/commands/greet", "embed item[] /controls/full/commands/quiet",
                     "embed item[] /controls/full/commands/fail"}));
}

TEST_F(ControlCommandResourceTest, ACommandIsDescribedByItsIdAndItsParameters) {
    EXPECT_EQ(Read("/controls/full/commands/greet").Dump(false),
              R"({"id":"greet","parameters":{"name":"nobody","times":1}})");
    const VorApi::VorDataTree schema = ReadWithSchema("/controls/full/commands/greet")["_schema"];
    EXPECT_EQ(schema["properties"]["id"]["type"].AsText(), "string");
    EXPECT_EQ(schema["properties"]["parameters"]["properties"]["times"]["type"].AsText(), "integer");
    EXPECT_FAILURE(Read("/controls/full/commands/x"), yERROR_NOT_FOUND, "no command x");
}

TEST_F(ControlCommandResourceTest, AServiceWithoutCommandsIsUnimplemented) {
    EXPECT_TEXTLESS_FAILURE(Read("/controls/bare/commands"), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(Read("/controls/bare/commands/greet"), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(Invoke("/controls/bare/commands/greet"), yERROR_UNIMPLEMENTED);
    EXPECT_EQ(Tests::StatusOf([&] { Read("/controls/x/commands"); }), yERROR_NOT_FOUND);
}

TEST_F(ControlCommandResourceTest, ArgumentsStandAtTheTopOrUnderParametersWhichWin) {
    const std::string path = "/controls/full/commands/greet";
    const auto text = [&](const Json& body) { return Invoke(path, body)["text"].AsText(); };
    EXPECT_EQ(text(nullptr), "nobody 1");
    EXPECT_EQ(text(Json::object()), "nobody 1");
    EXPECT_EQ(text({{"name", "you"}, {"other", 1}}), "you 1");
    EXPECT_EQ(text({{"parameters", {{"name", "you"}, {"times", 2}}}}), "you 2");
    EXPECT_EQ(text({{"name", "top"}, {"times", 3}, {"parameters", {{"name", "below"}}}}), "below 3");
    EXPECT_EQ(Tests::StatusOf([&] { text({{"times", "x"}}); }), yERROR_PARAMETER);
    EXPECT_EQ(Tests::StatusOf([&] { text(Json::array()); }), yERROR_PARAMETER);
    EXPECT_EQ(Tests::StatusOf([&] { text({{"parameters", 1}}); }), yERROR_PARAMETER);
}

TEST_F(ControlCommandResourceTest, TheResultHasItsSchemaIfTheClientWantsIt) {
    const VorApi::VorDataTree result = Document(VorRest::Verb::Invoke, "/controls/full/commands/greet", nullptr, true);
    EXPECT_EQ(result.Names(), (Texts{"text", "_schema"}));
}

TEST_F(ControlCommandResourceTest, ACommandWithoutResultReturnsAnEmptyObject) {
    EXPECT_EQ(Invoke("/controls/full/commands/quiet").Dump(false), "{}");
}

TEST_F(ControlCommandResourceTest, AFailureOfTheCommandPassesThrough) {
    EXPECT_FAILURE(Invoke("/controls/full/commands/fail"), yERROR_CONFLICT, "it failed");
    EXPECT_FAILURE(Invoke("/controls/full/commands/x"), yERROR_NOT_FOUND, "no command x");
}

TEST_F(ControlCommandResourceTest, AnInvocationNeedsTheCommand) {
    EXPECT_TEXTLESS_FAILURE(Invoke("/controls/full/commands"), yERROR_PARAMETER);
    auto& resource = As<VorControl::Protocol::ControlCommandResource>(ResourceAt("/controls/full/commands"));
    EXPECT_TEXTLESS_FAILURE(resource.Invoke(RequestInfoEx({}, false), VorApi::VorDataTree()), yERROR_PARAMETER);
}

TEST_F(ControlCommandResourceTest, IsReadOnly) {
    EXPECT_TEXTLESS_FAILURE(Update("/controls/full/commands/greet", Json::object()), yERROR_READ_ONLY);
}

} // namespace
