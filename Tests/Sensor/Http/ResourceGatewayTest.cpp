#include "Sensor/Http/ResourceGateway.h"

#include "Tests/Sensor/Http/GatewayFixture.h"

#include <chrono>
#include <set>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Sensor::Http::LargeDocuments;
using Sensor::Http::ResourceGateway;
using VorApi::RequestInfoEx;
using VorApi::ResponseInfoEx;
using VorApi::VorDataTree;

class ResourceGatewayTest : public Tests::GatewayFixture {
protected:
    /// The paths of a relation.
    static Texts HrefsOf(const Json& document, const std::string& relation) {
        const Json links = document["_links"].value(relation, Json::array());
        Texts hrefs;
        for (const Json& link : links.is_array() ? links : Json::array({links})) {
            hrefs.push_back(link["href"]);
        }
        return hrefs;
    }

    void WriteFree(std::function<void(ResponseInfoEx&, VorDataTree&)> write) {
        free.onDocument = [write = std::move(write)](const RequestInfoEx&, ResponseInfoEx& response,
                                                     VorDataTree& data) { write(response, data); };
    }
    /// The thread on which the document becomes text.
    std::thread::id ThreadOf(const std::string& target) {
        const Client client = Send("GET", target);
        EXPECT_EQ(Wait(client).status, 200U);
        return client->AnsweredOn();
    }
    /// A document whose text has a little more than `size` bytes.
    void WriteLargeFree(std::size_t size) {
        WriteFree([size](ResponseInfoEx&, VorDataTree& data) { data["text"].Set(std::string(size, 'x')); });
    }
};

// Methods.

TEST_F(ResourceGatewayTest, GetAndHeadReadADocument) {
    notes.texts = {{"a", "Hello"}};
    for (const char* const method : {"GET", "HEAD"}) {
        const HttpResponse response = Request(method, "/notes/a");
        EXPECT_EQ(response.status, 200U);
        EXPECT_EQ(response.fields.Find("Content-Type"), "application/hal+json");
        EXPECT_EQ(response.fields.Find("Cache-Control"), "no-store");
        EXPECT_EQ(*response.body, R"({"_links":{"self":{"href":"/notes/a"},"up":{"href":"/notes"},)"
                                  R"("collection":{"href":"/notes"}},"text":"Hello"})");
    }
}

TEST_F(ResourceGatewayTest, PatchUpdatesAndReturnsTheDocumentAsItIsThen) {
    notes.texts = {{"a", "Hello"}};
    for (const char* const type : {"application/json", "application/merge-patch+json"}) {
        const HttpResponse response =
            Request("PATCH", "/notes/a?schema=1", {{"Content-Type", type}}, R"({"text":"Bye"})");
        EXPECT_EQ(response.status, 200U);
        EXPECT_EQ(Parse(response)["text"], "Bye");
        EXPECT_EQ(Parse(response)["_schema"]["type"], "object");
        EXPECT_EQ(notes.texts["a"], "Bye");
        notes.texts["a"] = "Hello";
    }
}

TEST_F(ResourceGatewayTest, PostCreatesInACollection) {
    const HttpResponse response = SendJson("POST", "/notes", R"({"id":"a b","text":"Hi"})");
    EXPECT_EQ(response.status, 201U);
    EXPECT_EQ(response.fields.Find("Location"), "/notes/a%20b");
    EXPECT_EQ(Parse(response)["text"], "Hi");
    EXPECT_EQ(Parse(response)["_links"]["self"]["href"], "/notes/a%20b");
    EXPECT_EQ(GetDocument("/notes/a%20b")["text"], "Hi");
    EXPECT_EQ(DetailOf(SendJson("POST", "/notes/", R"({"id":"a b"})"), 409), "There is a note 'a b'.");
}

TEST_F(ResourceGatewayTest, WhatWasChangedIsDoneEvenIfItCantBeRead) {
    const HttpResponse created = SendJson("POST", "/notes", R"({"id":"broken"})");
    EXPECT_EQ(created.status, 201U);
    EXPECT_EQ(created.fields.Find("Location"), "/notes/broken");
    EXPECT_EQ(created.body, nullptr);
    EXPECT_EQ(SendJson("PATCH", "/notes/broken", R"({"text":"x"})").status, 204U);
}

TEST_F(ResourceGatewayTest, WhatWasChangedIsDoneEvenIfTooManyDocumentsAreAskedFor) {
    const HttpResponse created = SendJson("POST", "/notes?expand=part", R"({"id":"crowded"})");
    EXPECT_EQ(created.status, 201U);
    EXPECT_EQ(created.fields.Find("Location"), "/notes/crowded");
    EXPECT_EQ(created.body, nullptr);
    EXPECT_EQ(SendJson("PATCH", "/notes/crowded?expand=part", R"({"text":"x"})").status, 204U);
    EXPECT_EQ(notes.texts["crowded"], "x");
    EXPECT_EQ(Get("/notes/crowded?expand=part").status, 422U);
}

TEST_F(ResourceGatewayTest, WhoPrefersNotToWaitIsAnsweredWithWhatGoesOn) {
    for (const char* const prefer : {"respond-async", "wait=10, Respond-Async; x=1"}) {
        const HttpResponse response = SendJson("POST", "/button", R"({"x":1})", {{"Prefer", prefer}});
        EXPECT_EQ(response.status, 202U);
        EXPECT_EQ(response.fields.Find("Location"), "/free");
        EXPECT_EQ(response.fields.Find("Preference-Applied"), "respond-async");
        EXPECT_EQ(Parse(response)["_links"]["self"]["href"], "/free");
        EXPECT_EQ(Parse(response)["x"], 1);
    }
    for (const char* const prefer : {"respond-asynchronously", "wait=10", "\"respond-async\"", ""}) {
        const HttpResponse response = SendJson("POST", "/button", "{}", {{"Prefer", prefer}});
        EXPECT_EQ(response.status, 200U) << prefer;
        EXPECT_FALSE(response.fields.Find("Preference-Applied")) << prefer;
    }
}

TEST_F(ResourceGatewayTest, ADocumentOfBytesIsSentAsItIs) {
    const std::string bytes("\0\xff{}", 4);
    free.onDocument = [&](const VorApi::RequestInfoEx&, VorApi::ResponseInfoEx&, VorApi::VorDataTree& data) {
        data.Set(Vor::Properties::ByteVector(bytes.data(), bytes.size()));
    };
    const HttpResponse response = Get("/free");
    EXPECT_EQ(response.status, 200U);
    EXPECT_EQ(response.fields.Find("Content-Type"), "application/octet-stream");
    EXPECT_EQ(response.fields.Find("Cache-Control"), "no-store");
    EXPECT_EQ(*response.body, bytes);
}

TEST_F(ResourceGatewayTest, BytesMayHaveATypeOfTheirOwn) {
    Tests::Picture picture;
    picture.onDocument = [](const VorApi::RequestInfoEx&, VorApi::ResponseInfoEx&, VorApi::VorDataTree& data) {
        data.Set(Vor::Properties::ByteVector("PNG", 3));
    };
    router.Register("/picture", picture);
    EXPECT_EQ(Get("/picture").fields.Find("Content-Type"), "image/png");
    EXPECT_EQ(*Get("/picture/").body, "PNG");
    router.Deregister("/picture", true);
}

TEST_F(ResourceGatewayTest, AResourceMayDeleteWithoutCreating) {
    notes.texts["a"] = "Hi";
    notes.creates = false;
    EXPECT_EQ(Request("OPTIONS", "/notes").fields.Find("Allow"), "GET, HEAD, OPTIONS");
    EXPECT_EQ(SendJson("POST", "/notes", R"({"id":"b"})").status, 405U);
    EXPECT_EQ(Request("DELETE", "/notes/a").status, 204U);
    EXPECT_TRUE(notes.texts.empty());
}

TEST_F(ResourceGatewayTest, PostInvokesACommand) {
    EXPECT_EQ(*SendJson("POST", "/button", R"({"x":[1]})").body, R"({"_links":{"self":{"href":"/button"},)"
                                                                 R"("up":{"href":"/"}},"x":[1]})");
    const HttpResponse empty = Request("POST", "/button");
    EXPECT_EQ(empty.status, 200U);
    EXPECT_FALSE(Parse(empty).contains("x"));
}

TEST_F(ResourceGatewayTest, DeleteDeletes) {
    notes.texts = {{"a", ""}};
    const HttpResponse response = Request("DELETE", "/notes/a");
    EXPECT_EQ(response.status, 204U);
    EXPECT_EQ(response.body, nullptr);
    EXPECT_TRUE(notes.texts.empty());
    EXPECT_EQ(DetailOf(Request("DELETE", "/notes/a"), 404), "There is no note 'a'.");
}

TEST_F(ResourceGatewayTest, OptionsListsTheMethods) {
    notes.texts = {{"a", ""}};
    const auto allowed = [&](const char* target) {
        const HttpResponse response = Request("OPTIONS", target);
        EXPECT_EQ(response.status, 204U) << target;
        return response.fields.Find("Allow").value_or("") + " | " + response.fields.Find("Accept-Patch").value_or("");
    };
    EXPECT_EQ(allowed("/notes"), "GET, HEAD, POST, OPTIONS | ");
    EXPECT_EQ(allowed("/notes/a"),
              "GET, HEAD, PATCH, DELETE, OPTIONS | application/json, application/merge-patch+json");
    EXPECT_EQ(allowed("/button"), "POST, OPTIONS | ");
    EXPECT_EQ(allowed("/controls"), "GET, HEAD, OPTIONS | ");
    EXPECT_EQ(allowed("/controls/full"), "GET, HEAD, PATCH, OPTIONS | application/json, application/merge-patch+json");
    EXPECT_EQ(allowed("/controls/full/commands/greet"), "GET, HEAD, POST, OPTIONS | ");
    EXPECT_EQ(allowed("/controls/full/commands"), "GET, HEAD, OPTIONS | ");
    EXPECT_EQ(Request("OPTIONS", "/notes/b").status, 404U);
    EXPECT_EQ(Request("OPTIONS", "/controls/nobody").status, 404U);
}

TEST_F(ResourceGatewayTest, OptionsMayBeAboutTheServer) {
    EXPECT_EQ(Request("OPTIONS", "*").status, 204U);
    EXPECT_EQ(Request("OPTIONS", "*", {{"Host", "evil.example"}}).status, 421U);
    EXPECT_EQ(Request("HEAD", "*").status, 400U);
}

TEST_F(ResourceGatewayTest, AMethodThatTheResourceDoesntHaveIsNotAllowed) {
    notes.texts = {{"a", ""}};
    const auto refused = [&](const char* method, const char* target) {
        const HttpResponse response = SendJson(method, target, "{}");
        EXPECT_EQ(response.status, 405U) << method << target;
        return response.fields.Find("Allow");
    };
    EXPECT_EQ(refused("PUT", "/notes/a"), "GET, HEAD, PATCH, DELETE, OPTIONS");
    EXPECT_EQ(refused("POST", "/notes/a"), "GET, HEAD, PATCH, DELETE, OPTIONS");
    EXPECT_EQ(refused("PATCH", "/notes"), "GET, HEAD, POST, OPTIONS");
    EXPECT_EQ(refused("DELETE", "/notes"), "GET, HEAD, POST, OPTIONS");
    EXPECT_EQ(refused("GET", "/button"), "POST, OPTIONS");
    EXPECT_EQ(refused("BREW", "/controls"), "GET, HEAD, OPTIONS");
    EXPECT_EQ(refused("PATCH", "/controlTypes"), "GET, HEAD, OPTIONS");
    EXPECT_EQ(refused("PATCH", "/controls/full/outputs"), "GET, HEAD, OPTIONS");
    EXPECT_EQ(refused("POST", "/controls/full/commands"), "GET, HEAD, OPTIONS");
    EXPECT_EQ(DetailOf(Request("PUT", "/notes/a"), 405), "/notes/a doesn't have the method PUT.");
}

TEST_F(ResourceGatewayTest, WhatIsntThereIsNotFound) {
    EXPECT_EQ(DetailOf(Get("/nothing"), 404), "There is no resource at /nothing.");
    EXPECT_EQ(DetailOf(Get("/notes/a"), 404), "There is no note 'a'.");
    EXPECT_EQ(Parse(Get("/notes/a"))["code"], yERROR_NOT_FOUND);
    EXPECT_EQ(Get("/notes//a").status, 404U);
    EXPECT_EQ(Get("/..").status, 404U);
    EXPECT_EQ(Request("PUT", "/controls/nobody").status, 404U);
    EXPECT_EQ(SendJson("PATCH", "/controls/nobody", "{}").status, 404U);
    EXPECT_EQ(Get("/controls/bare/commands").status, 404U);
}

TEST_F(ResourceGatewayTest, ACommandThatDoesntExistIsNotFoundByAnyMethod) {
    for (const char* const path :
         {"/controls/full/commands/nothing", "/controls/bare/commands/x", "/controls/nobody/commands/x",
          "/controls/full/outputs/commands/nothing", "/controls/full/registerAssemblies/a1/commands/nothing"}) {
        for (const char* const method : {"GET", "HEAD", "POST", "PATCH", "PUT", "DELETE", "OPTIONS"}) {
            EXPECT_EQ(SendJson(method, path, "{}").status, 404U) << method << ' ' << path;
        }
        EXPECT_EQ(SendJson("POST", path, "{}", {{"If-Match", "\"x\""}}).status, 404U) << path;
    }
}

// Targets.

TEST_F(ResourceGatewayTest, PathsAreCodedBothWaysAndMayEndWithASlash) {
    notes.texts = {{"a/b c\xc3\xa4", "x"}};
    const Json list = GetDocument("/notes/");
    EXPECT_EQ(list["_links"]["self"]["href"], "/notes");
    const std::string path = list["_embedded"]["item"][0]["_links"]["self"]["href"];
    EXPECT_EQ(path, "/notes/a%2Fb%20c%C3%A4");
    for (const char* const same : {"/notes/a%2Fb%20c%C3%A4/", "/notes/%61%2fb%20c%c3%a4", "/%6eotes/a%2Fb%20c%C3%A4"}) {
        EXPECT_EQ(GetDocument(same)["_links"]["self"]["href"], path);
    }
    for (const char* const other : {"//", "/notes//", "//notes"}) {
        EXPECT_EQ(Get(other).status, 404U) << other;
    }
}

TEST_F(ResourceGatewayTest, AMalformedTargetIsABadRequest) {
    for (const char* const target : {"", "*", "/a%", "/%ff", "https://localhost/"}) {
        EXPECT_EQ(Get(target).status, 400U) << target;
    }
    EXPECT_EQ(DetailOf(Get("/notes?schema=yes"), 400), "The query has schema=yes, and 0, 1 or 2020-12 was expected.");
}

TEST_F(ResourceGatewayTest, TheSchemaComesWhenItIsWanted) {
    notes.texts = {{"a", ""}};
    EXPECT_TRUE(GetDocument("/notes/a?schema=1").contains("_schema"));
    EXPECT_FALSE(GetDocument("/notes/a?schema=0").contains("_schema"));
    EXPECT_FALSE(GetDocument("/notes/a?other=1").contains("_schema"));
}

TEST_F(ResourceGatewayTest, TheSchemaComesAsJsonSchema) {
    notes.texts = {{"a", ""}};
    const Json note = GetDocument("/notes/a?schema=2020-12");
    EXPECT_EQ(note["_schema"]["$schema"], "https://json-schema.org/draft/2020-12/schema");
    EXPECT_EQ(note["_schema"]["properties"]["text"]["type"], "string");
    const Json list = GetDocument("/notes?schema=2020-12&expand=item");
    EXPECT_TRUE(list["_schema"]["properties"].contains("_embedded"));
    EXPECT_EQ(list["_embedded"]["item"][0]["_schema"]["properties"]["text"]["type"], "string");

    const Json assembly = GetDocument("/controls/full/registerAssemblies/a1?schema=2020-12");
    EXPECT_FALSE(assembly["attributes"].contains("_schema"));
    EXPECT_EQ(assembly["_schema"]["properties"]["attributes"]["properties"]["outputIdMin"]["type"], "integer");
    EXPECT_EQ(assembly["_schema"]["properties"]["supportedBlockTypes"]["prefixItems"].size(),
              assembly["supportedBlockTypes"].size());
}

TEST_F(ResourceGatewayTest, AResourceGetsTheQuery) {
    free.onDocument = [](const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx&, VorApi::VorDataTree& data) {
        for (const auto& [name, value] : request.GetQuery()) {
            data[name].Set(value);
        }
    };
    const Json document = GetDocument("/free?q=two+w%6Frds&n=3");
    EXPECT_EQ(document["q"], "two words");
    EXPECT_EQ(document["n"], "3");
}

// Bodies.

TEST_F(ResourceGatewayTest, ABodyThatIsntJsonIsRefused) {
    notes.texts = {{"a", "Hello"}};
    EXPECT_EQ(
        DetailOf(SendJson("PATCH", "/notes/a", "{\n \"text\" 1}"), 400),
        "The body isn't the JSON that was expected. Line 2, column 9: syntax error while parsing object separator - "
        "unexpected number literal; expected ':'.");
    EXPECT_EQ(SendJson("PATCH", "/notes/a", "").status, 400U);
    EXPECT_EQ(SendJson("POST", "/button", "{").status, 400U);
    EXPECT_EQ(SendJson("POST", "/button", "\"\xff\"").status, 400U);
    const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    EXPECT_EQ(SendJson("POST", "/button", nested(64)).status, 200U);
    EXPECT_EQ(DetailOf(SendJson("POST", "/button", nested(65)), 400),
              "The body isn't the JSON that was expected. Line 1, column 65: nested more than 64 levels deep.");
    EXPECT_EQ(notes.texts["a"], "Hello");
}

TEST_F(ResourceGatewayTest, ABodyOfAnotherTypeIsRefused) {
    const HttpResponse patch = Request("PATCH", "/notes/a", {{"Content-Type", "text/plain"}}, "{}");
    EXPECT_EQ(DetailOf(patch, 415), "The body is 'text/plain', and one of these types, in UTF-8, was expected: "
                                    "application/json, application/merge-patch+json");
    EXPECT_EQ(patch.fields.Find("Accept-Patch"), "application/json, application/merge-patch+json");
    const HttpResponse post = Request("POST", "/button", {}, "{}");
    EXPECT_EQ(post.status, 415U);
    EXPECT_EQ(post.fields.Find("Accept"), "application/json");
    EXPECT_EQ(Request("POST", "/button", {{"Content-Type", "application/merge-patch+json"}}, "{}").status, 415U);
}

TEST_F(ResourceGatewayTest, AHeaderIsEnoughForARefusal) {
    const auto statusOf = [&](const char* method, const char* target, HttpFields fields) {
        fields.Add("Host", "localhost");
        const auto refusal = gateway->CheckHeader({.method = method, .target = target, .fields = fields});
        return refusal ? refusal->status : 0;
    };
    EXPECT_EQ(statusOf("GET", "/", {}), 0U);
    EXPECT_EQ(statusOf("GET", "/%", {}), 400U);
    EXPECT_EQ(statusOf("POST", "/", {}), 0U);
    EXPECT_EQ(statusOf("POST", "/", {{"Content-Length", "0"}}), 0U);
    EXPECT_EQ(statusOf("POST", "/", {{"Content-Length", "2"}}), 415U);
    EXPECT_EQ(statusOf("POST", "/", {{"Transfer-Encoding", "chunked"}}), 415U);
    EXPECT_EQ(statusOf("POST", "/", {{"Content-Length", "2"}, {"Content-Type", "application/json"}}), 0U);
    EXPECT_EQ(statusOf("POST", "/", {{"Origin", "http://evil.example"}}), 403U);
}

TEST_F(ResourceGatewayTest, PagesOfOtherHostsAreRefused) {
    notes.texts = {{"a", ""}};
    EXPECT_EQ(Request("GET", "/notes", {{"Host", "evil.example"}}).status, 421U);
    EXPECT_EQ(Request("DELETE", "/notes/a", {{"Origin", "http://evil.example"}}).status, 403U);
    EXPECT_EQ(notes.texts.size(), 1U);
    Restart({.hosts = {"sensor.example"}});
    EXPECT_EQ(Request("GET", "/notes", {{"Host", "sensor.example"}}).status, 200U);
}

TEST_F(ResourceGatewayTest, ATargetMayBeAUrlWhoseHostCounts) {
    notes.texts = {{"a", "Hello"}};
    const HttpFields otherHost{{"Host", "evil.example"}};
    EXPECT_EQ(Request("GET", "http://127.0.0.1:8080/notes/a", otherHost).status, 200U);
    EXPECT_EQ(Parse(Request("GET", "http://localhost", otherHost))["_links"]["self"]["href"], "/");
    for (const char* const method : {"GET", "PATCH", "POST", "DELETE"}) {
        EXPECT_EQ(Request(method, "http://evil.example/notes/a").status, 421U);
    }
    EXPECT_EQ(
        SendJson("POST", "http://localhost:8080/notes", R"({"id":"b"})", {{"Origin", "http://localhost:8080"}}).status,
        201U);
    EXPECT_EQ(Request("DELETE", "http://localhost:8080/notes/b", {{"Origin", "http://evil.example"}}).status, 403U);
    EXPECT_TRUE(notes.texts.contains("b"));
}

TEST_F(ResourceGatewayTest, NullInAPatchIsRefusedWhereverAMemberWouldGo) {
    notes.texts = {{"a", "Hello"}};
    const HttpResponse response = SendJson("PATCH", "/notes/a", R"({"text":null,"b":{"c/d~":null,"e":[null]}})");
    EXPECT_EQ(DetailOf(response, 422), "null would remove /b/c~1d~0, and members can't be removed.");
    EXPECT_EQ(Parse(response)["errors"].size(), 2U);
    EXPECT_EQ(Parse(response)["errors"][0]["pointer"], "/b/c~1d~0");
    EXPECT_EQ(Parse(response)["errors"][1]["pointer"], "/text");
    EXPECT_EQ(Parse(response)["code"], yERROR_PARAMETER);
    for (const char* const body : {"null", "[]", "7"}) {
        EXPECT_EQ(DetailOf(SendJson("PATCH", "/notes/a", body), 422),
                  "The document of a PATCH is an object with the members to be changed.");
    }
    EXPECT_EQ(notes.texts["a"], "Hello");
}

TEST_F(ResourceGatewayTest, ARefusalIsNotMuchLongerThanTheBodyThatIsRefused) {
    notes.texts = {{"a", "Hello"}};
    Json members;
    for (int i = 0; i < 1000; ++i) {
        members["m" + std::to_string(i)] = nullptr;
    }
    const std::string body = Json{{std::string(100'000, 'n'), members}}.dump();
    const HttpResponse response = SendJson("PATCH", "/notes/a", body);
    EXPECT_EQ(response.status, 422U);
    EXPECT_EQ(Parse(response)["errors"].size(), 1U) << "the place alone is as long as all of them may be";
    EXPECT_LT(response.body->size(), 4 * body.size());
}

// Hypertext.

TEST_F(ResourceGatewayTest, AServiceHasItsRelationsFirstAndThenThoseOfItsRoutes) {
    const Json service = GetDocument("/controls/full");
    const std::string text = *Get("/controls/full").body;
    EXPECT_EQ(HrefsOf(service, "self"), Texts{"/controls/full"});
    EXPECT_EQ(HrefsOf(service, "vor:command"), (Texts{"/controls/full/commands/greet", "/controls/full/commands/quiet",
                                                      "/controls/full/commands/fail"}));
    EXPECT_EQ(HrefsOf(service, "up"), Texts{"/controls"});
    EXPECT_EQ(HrefsOf(service, "collection"), Texts{"/controls"});
    EXPECT_EQ(HrefsOf(service, "vor:metrics"), Texts{"/controls/full/metrics"});
    EXPECT_EQ(HrefsOf(service, "vor:commands"), Texts{"/controls/full/commands"});
    EXPECT_EQ(service["_links"]["curies"], Json::parse(R"([{"name":"vor","href":"/rels/{rel}","templated":true}])"));
    EXPECT_LT(text.find("vor:command\""), text.find("\"up\""));
    EXPECT_EQ(service["_embedded"]["vor:datasources"],
              Json::parse(R"({"_links":{"self":{"href":"/controls/full/outputs"}}})"));
    EXPECT_EQ(service["_embedded"]["vor:registerAssembly"],
              Json::parse(R"([{"_links":{"self":{"href":"/controls/full/registerAssemblies/a1"}}}])"));
    EXPECT_EQ(service["id"], "full");
}

TEST_F(ResourceGatewayTest, LinksThatLeadNowhereAreLeftOut) {
    const Json bare = GetDocument("/controls/bare");
    EXPECT_FALSE(bare["_links"].contains("vor:metrics"));
    EXPECT_FALSE(bare["_links"].contains("vor:commands"));
    EXPECT_FALSE(bare["_links"].contains("curies"));
    EXPECT_FALSE(bare.contains("_embedded"));
    WriteFree([](ResponseInfoEx& response, VorDataTree&) {
        for (const char* const path : {"/nothing", "/notes/a", "/controls/nobody", "/controls/nobody/commands/x",
                                       "/controls/full/commands/nothing", "/button", "/%", "nothing", "/notes"}) {
            response.Link("to", path, true, VorDataTree());
            response.Embed("part", path, true, VorDataTree());
        }
    });
    const Json document = GetDocument("/free");
    EXPECT_EQ(HrefsOf(document, "to"), (Texts{"/button", "/notes"}));
    EXPECT_EQ(document["_embedded"]["part"].size(), 2U);
    EXPECT_EQ(HrefsOf(document, "up"), Texts{"/"});
    EXPECT_FALSE(GetDocument("/")["_links"].contains("up"));
}

TEST_F(ResourceGatewayTest, WhatTheDocumentLinksItselfIsntAddedAgain) {
    Tests::FreeDocument figures;
    router.Register("/free/metrics", figures);
    EXPECT_EQ(HrefsOf(GetDocument("/free"), "vor:metrics"), Texts{"/free/metrics"});
    WriteFree([](ResponseInfoEx& response, VorDataTree&) {
        response.Link("up", "/notes", false, VorDataTree());
        response.Link("vor:metrics", "/notes", false, VorDataTree());
    });
    EXPECT_EQ(HrefsOf(GetDocument("/free"), "up"), Texts{"/notes"});
    EXPECT_EQ(HrefsOf(GetDocument("/free"), "vor:metrics"), Texts{"/notes"});
    router.Deregister("/free/metrics", true);
    Tests::FreeDocument things;
    router.Register("/things/:thing", things);
    EXPECT_EQ(HrefsOf(GetDocument("/things/a"), "collection"), Texts{"/things"});
    things.onDocument = [](const RequestInfoEx&, ResponseInfoEx& response, VorDataTree&) {
        response.Link("collection", "/notes", false, VorDataTree());
    };
    EXPECT_EQ(HrefsOf(GetDocument("/things/a"), "collection"), Texts{"/notes"});
    router.Deregister("/things/:thing", true);
}

TEST_F(ResourceGatewayTest, AnItemIsNoPartOfItsCollection) {
    notes.texts = {{"metrics", ""}};
    EXPECT_EQ(Get("/notes/metrics").status, 200U);
    EXPECT_FALSE(GetDocument("/notes")["_links"].contains("vor:metrics"));
}

TEST_F(ResourceGatewayTest, ACollectionIsInNoCollection) {
    const char* const path = "/controls/full/registerAssemblies";
    EXPECT_EQ(HrefsOf(GetDocument(std::string(path) + "/a1"), "collection"), Texts{path});
    EXPECT_EQ(HrefsOf(GetDocument(path), "collection"), Texts{});
    EXPECT_EQ(HrefsOf(GetDocument(path), "up"), Texts{"/controls/full"});
}

TEST_F(ResourceGatewayTest, RelationsOfPartsAreExplainedToo) {
    WriteFree([](ResponseInfoEx& response, VorDataTree&) { response.Embed("vor:x", "/notes", true, VorDataTree()); });
    EXPECT_TRUE(GetDocument("/free")["_links"].contains("curies"));
}

TEST_F(ResourceGatewayTest, EmbedsAreFilledOnDemandOneLevelDeep) {
    const Json service = GetDocument("/controls/full?expand=vor:registerAssembly,other&schema=1");
    EXPECT_EQ(service["_embedded"]["vor:registerAssembly"][0]["id"], "a1");
    EXPECT_TRUE(service["_embedded"]["vor:registerAssembly"][0]["attributes"].contains("_schema"));
    EXPECT_EQ(service["_embedded"]["vor:datasources"].size(), 1U);
    const Json list = GetDocument("/controls?expand=item");
    EXPECT_EQ(list["_embedded"]["item"][0]["id"], "bare");
    EXPECT_EQ(list["_embedded"]["item"][1]["id"], "full");
    EXPECT_EQ(list["_embedded"]["item"][1]["_embedded"]["vor:datasources"].size(), 1U);
    EXPECT_EQ(HrefsOf(list["_embedded"]["item"][1], "vor:metrics"), Texts{"/controls/full/metrics"});
}

TEST_F(ResourceGatewayTest, AnEmbedThatCantBeReadIsLeftOut) {
    notes.texts = {{"a", "1"}, {"broken", "2"}, {"c", "3"}};
    EXPECT_EQ(GetDocument("/notes")["_embedded"]["item"].size(), 3U);
    const Json items = GetDocument("/notes?expand=item")["_embedded"]["item"];
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0]["text"], "1");
    EXPECT_EQ(items[1]["text"], "3");
}

TEST_F(ResourceGatewayTest, AThousandEmbedsAreFilledAndNotOneMore) {
    for (std::size_t i = 0; i < ResourceGateway::MaxExpanded; ++i) {
        notes.texts["n" + std::to_string(i)] = "x";
    }
    const Json items = GetDocument("/notes?expand=item")["_embedded"]["item"];
    ASSERT_EQ(items.size(), 1000U);
    EXPECT_EQ(items[999]["text"], "x");
    notes.texts["more"];
    EXPECT_EQ(DetailOf(Get("/notes?expand=item"), 422), "The query asks for more than the 1000 documents that it may.");
    EXPECT_EQ(GetDocument("/notes")["_embedded"]["item"].size(), 1001U);
}

TEST_F(ResourceGatewayTest, TheMainLoopGoesOnBetweenTheDocumentsOfEmbeds) {
    WriteFree([](ResponseInfoEx& response, VorDataTree&) {
        for (int i = 0; i < 3; ++i) {
            response.Embed("item", "/free", true, VorDataTree());
        }
    });
    const Client client = Send("GET", "/free?expand=item");
    loop.Step();
    unsigned readsBefore = 0;
    loop.Post([&] { readsBefore = free.reads; });
    EXPECT_EQ(Wait(client).status, 200U);
    EXPECT_EQ(free.reads, 4U);
    EXPECT_LT(readsBefore, 4U);
}

TEST_F(ResourceGatewayTest, NoLinkAndNoEmbedIsDead) {
    notes.texts = {{"a/b", ""}};
    service->AddOutput(1, "source");
    Texts waiting{"/"};
    std::set<std::string> seen{"/"};
    std::set<std::string> relations;
    const auto follow = [&](const std::string& relation, const Json& target) {
        relations.insert(relation);
        if (!target.value("templated", false) && seen.insert(target["href"]).second) {
            waiting.push_back(target["href"]);
        }
    };
    const auto followAll = [&](const Json& document) {
        for (const auto& [relation, targets] : document["_links"].items()) {
            for (const Json& target : targets.is_array() ? targets : Json::array({targets})) {
                follow(relation, target);
            }
        }
    };
    while (!waiting.empty()) {
        const Json document = GetDocument(waiting.back() + "?schema=1");
        waiting.pop_back();
        followAll(document);
        const Json embedded = document.value("_embedded", Json::object());
        for (const auto& [relation, parts] : embedded.items()) {
            relations.insert(relation);
            for (const Json& part : parts.is_array() ? parts : Json::array({parts})) {
                followAll(part);
            }
        }
    }
    EXPECT_GT(seen.size(), 30U);
    EXPECT_TRUE(seen.contains("/controls/full/registerAssemblies/a1/commands/add"));
    for (const std::string& relation : relations) {
        if (relation.starts_with("vor:")) {
            EXPECT_EQ(GetDocument("/rels/" + relation.substr(4))["relation"], relation);
        }
    }
    EXPECT_TRUE(relations.contains("vor:datasources"));
}

TEST_F(ResourceGatewayTest, EachKindOfProblemIsExplained) {
    const Json list = GetDocument("/problems?expand=item");
    EXPECT_GT(list["_embedded"]["item"].size(), 10U);
    const Json problem = Parse(Get("/nothing"));
    const Json explanation = GetDocument(problem["type"].get<std::string>() + "?schema=1");
    EXPECT_EQ(explanation["type"], problem["type"]);
    EXPECT_EQ(explanation["title"], problem["title"]);
    EXPECT_EQ(explanation["status"], 404);
    EXPECT_EQ(explanation["_schema"]["properties"]["status"]["title"], "HTTP Status");
    EXPECT_EQ(DetailOf(Get("/problems/none"), 404), "There is no explanation of 'none'.");
    EXPECT_EQ(Get("/rels/none").status, 404U);
}

// Revisions.

TEST_F(ResourceGatewayTest, DocumentsBelowAServiceHaveATag) {
    revisions.revision = 7;
    for (const char* const path : {"/controls/full", "/controls/full/outputs", "/controls/full/commands/greet"}) {
        EXPECT_EQ(Get(path).fields.Find("ETag"), "\"boot-7\"") << path;
    }
    for (const char* const path : {"/controls", "/controls/full/metrics", "/controlTypes"}) {
        EXPECT_EQ(Get(path).fields.Find("ETag"), std::nullopt) << path;
    }
    EXPECT_EQ(Request("GET", "/controls/full", {{"If-None-Match", "\"boot-7\""}}).status, 200U);
    EXPECT_EQ(Request("GET", "/controls/full", {{"If-Match", "\"boot-1\""}}).status, 200U);
}

TEST_F(ResourceGatewayTest, AStaleChangeIsRefused) {
    const std::string change = R"({"parameters":{"port":503}})";
    revisions.revision = 2;
    const HttpResponse stale = SendJson("PATCH", "/controls/full", change, {{"If-Match", "\"boot-1\""}});
    EXPECT_EQ(DetailOf(stale, 412), "The configuration has the tag \"boot-2\", and the field If-Match is \"boot-1\".");
    EXPECT_EQ(stale.fields.Find("ETag"), "\"boot-2\"");
    EXPECT_EQ(SendJson("PATCH", "/controls/full", change, {{"If-Match", "W/\"boot-2\""}}).status, 412U);
    EXPECT_EQ(SendJson("POST", "/controls/full/commands/greet", "{}", {{"If-Match", "\"boot-1\""}}).status, 412U);
    EXPECT_EQ(service->params->port.Get(), 502);

    service->onParamsUpdate = [&] { ++revisions.revision; };
    const HttpResponse done = SendJson("PATCH", "/controls/full", change, {{"If-Match", "\"other\", \"boot-2\""}});
    EXPECT_EQ(done.status, 200U);
    EXPECT_EQ(done.fields.Find("ETag"), "\"boot-3\"");
    EXPECT_EQ(service->params->port.Get(), 503);
    EXPECT_EQ(SendJson("PATCH", "/controls/full", change, {{"If-Match", "*"}}).status, 200U);
    EXPECT_EQ(SendJson("PATCH", "/controls/full", change).status, 200U);
    EXPECT_EQ(SendJson("POST", "/controls/full/commands/greet", "{}", {{"If-Match", "\"boot-5\""}}).status, 200U);
}

TEST_F(ResourceGatewayTest, WhatHasNoTagMatchesAnAsteriskOnly) {
    notes.texts = {{"a", ""}};
    EXPECT_EQ(DetailOf(Request("DELETE", "/notes/a", {{"If-Match", "\"x\""}}), 412),
              "The configuration has the tag (none), and the field If-Match is \"x\".");
    EXPECT_EQ(Request("DELETE", "/notes/b", {{"If-Match", "\"x\""}}).status, 404U);
    EXPECT_EQ(Request("DELETE", "/notes/a", {{"If-Match", "*"}}).status, 204U);
    EXPECT_EQ(Request("POST", "/button", {{"If-Match", "\"x\""}}).status, 412U);
    EXPECT_EQ(Request("POST", "/button", {{"If-Match", "*"}}).status, 200U);
}

TEST_F(ResourceGatewayTest, OfTwoEditorsWithTheSameTagOneWins) {
    service->onParamsUpdate = [&] { ++revisions.revision; };
    for (int race = 0; race < 1000; ++race) {
        const HttpFields fields{{"If-Match", *revisions.TagOf("/controls/full")}, {"Content-Type", "application/json"}};
        const Client one = Send("PATCH", "/controls/full", fields, R"({"parameters":{"port":1}})");
        const Client other = Send("PATCH", "/controls/full", fields, R"({"parameters":{"port":2}})");
        EXPECT_EQ(Wait(one).status, 200U);
        EXPECT_EQ(Wait(other).status, 412U);
    }
    EXPECT_EQ(revisions.revision, 1001U);
}

// Failures.

TEST_F(ResourceGatewayTest, ARefusedDocumentNamesWhatIsWrong) {
    const HttpResponse response = SendJson("PATCH", "/controls/full", R"({"enabled":"yes","parameters":{"port":"x"}})");
    EXPECT_EQ(response.status, 422U);
    const Json errors = Parse(response)["errors"];
    ASSERT_EQ(errors.size(), 2U);
    EXPECT_EQ(errors[0]["pointer"], "/enabled");
    EXPECT_EQ(errors[1]["pointer"], "/parameters/port");
    EXPECT_EQ(errors[1]["status"], yERROR_PARAMETER);
    EXPECT_EQ(Parse(response)["detail"], errors[0]["text"]);
}

TEST_F(ResourceGatewayTest, RefusedArgumentsOfACommandAreNamedWhereTheyAreInTheBody) {
    const auto places = [&](const char* path, const Json& body) {
        const HttpResponse response = SendJson("POST", path, body.dump());
        EXPECT_EQ(response.status, 422U) << path;
        Texts pointers;
        for (const Json& error : Parse(response).value("errors", Json::array())) {
            pointers.push_back(error["pointer"]);
        }
        return pointers;
    };
    const char* const greet = "/controls/full/commands/greet";
    EXPECT_EQ(places(greet, {{"name", 1}, {"times", "x"}}), (Texts{"/name", "/times"}));
    EXPECT_EQ(places(greet, {{"name", "a"}, {"parameters", {{"name", 1}, {"times", 70000}}}}),
              (Texts{"/parameters/name", "/parameters/times"}));
    const char* const add = "/controls/full/registerAssemblies/a1/commands/add";
    const Json blocks{{"blocks", {{{"outputId", 1}}, {{"outputId", "x"}}}}, {"autoShift", 1}};
    EXPECT_EQ(places(add, blocks), (Texts{"/blocks/1/outputId", "/autoShift"}));
    EXPECT_EQ(places(add, {{"parameters", blocks}}), (Texts{"/parameters/blocks/1/outputId", "/parameters/autoShift"}));
    EXPECT_EQ(places("/controls/full/outputs/commands/add", {{"outputId", Json::array()}, {"source", 1}}),
              (Texts{"/outputId", "/source"}));
}

TEST_F(ResourceGatewayTest, AFailedCommandSaysWhy) {
    EXPECT_EQ(DetailOf(SendJson("POST", "/controls/full/commands/fail", "{}"), 409), "it failed");
    EXPECT_EQ(SendJson("POST", "/controls/full/commands/greet", R"({"times":"x"})").status, 422U);
    EXPECT_EQ(Parse(SendJson("POST", "/controls/full/commands/greet", R"({"name":"you"})"))["text"], "you 1");
}

TEST_F(ResourceGatewayTest, AFailureInsideIsNotExplained) {
    button.onInvoke = [] { throw std::logic_error("secret"); };
    EXPECT_EQ(DetailOf(Request("POST", "/button"), 500).find("secret"), std::string::npos);
    button.onInvoke = [] { throw 7; };
    EXPECT_EQ(Request("POST", "/button").status, 500U);
}

// Streams.

TEST_F(ResourceGatewayTest, AStreamIsOpenedForWhoAcceptsOne) {
    const HttpResponse response = Request("GET", "/controls/full/metrics/?x=1", {{"Accept", "text/event-stream"}});
    EXPECT_EQ(response.fields.Find("Content-Type"), "text/event-stream");
    EXPECT_EQ(streams.opened, "/controls/full/metrics");
    streams.failure = yERROR_UNIMPLEMENTED;
    EXPECT_EQ(DetailOf(Request("GET", "/notes", {{"Accept", "text/event-stream"}}), 406),
              "/notes isn't a stream of events.");
    streams.failure = yERROR_BUSY;
    EXPECT_EQ(Request("GET", "/notes", {{"Accept", "text/event-stream"}}).fields.Find("Retry-After"), "1");
    EXPECT_EQ(Request("GET", "/notes", {{"Accept", "*/*"}}).status, 200U);
    EXPECT_EQ(Request("HEAD", "/notes", {{"Accept", "text/event-stream"}}).status, 200U);
    EXPECT_EQ(Request("POST", "/button", {{"Accept", "text/event-stream"}}).status, 200U);
    streams.failure = yERROR_NOT_FOUND;
    EXPECT_EQ(Request("GET", "/nothing", {{"Accept", "text/event-stream"}}).status, 404U);
}

// Late answers.

TEST_F(ResourceGatewayTest, AResourceMayAnswerLater) {
    std::optional<VorApi::Completion> completion;
    WriteFree([&](ResponseInfoEx& response, VorDataTree&) { completion = response.Defer(); });
    const Client client = Send("GET", "/free");
    loop.RunReady();
    EXPECT_FALSE(client->IsAnswered());
    std::thread([&] { completion->Complete(VorDataTree::FromJson({{"late", true}})); }).join();
    EXPECT_EQ(Parse(Wait(client))["late"], true);
}

TEST_F(ResourceGatewayTest, ALateAnswerThatNeverComesIsATimeout) {
    std::optional<VorApi::Completion> completion;
    WriteFree([&](ResponseInfoEx& response, VorDataTree&) { completion = response.Defer(); });
    const Client client = Send("GET", "/free");
    loop.RunReady();
    loop.Advance(30s);
    EXPECT_EQ(DetailOf(Wait(client), 504), "The resource gave no answer in time.");
}

TEST_F(ResourceGatewayTest, ALateAnswerMayComeAfterItsEnd) {
    std::optional<VorApi::Completion> completion;
    WriteFree([&](ResponseInfoEx& response, VorDataTree&) { completion = response.Defer(); });
    std::vector<VorApi::Completion> completions;
    std::vector<Client> clients;
    for (int i = 0; i < 2; ++i) {
        clients.push_back(Send("GET", "/free"));
        loop.RunReady();
        completions.push_back(completion.value());
    }
    gateway.reset();
    EXPECT_FALSE(router.Find("/problems"));
    completions[0].Complete(VorDataTree());
    completions[1].Fail(std::make_exception_ptr(std::runtime_error("late")));
    loop.RunReady();
    EXPECT_FALSE(clients[0]->IsAnswered());
    EXPECT_FALSE(clients[1]->IsAnswered());
}

TEST_F(ResourceGatewayTest, ItsEndDropsWhatWaits) {
    const Client client = Send("GET", "/free");
    gateway.reset();
    loop.RunReady();
    EXPECT_TRUE(client->IsReleased());
    EXPECT_FALSE(client->IsAnswered());
}

// Memory.

TEST_F(ResourceGatewayTest, LargeDocumentsAreMadeOneAtATimeAfterSmallOnes) {
    WriteLargeFree(2 * LargeDocuments::LargeSize);
    EXPECT_EQ(Get("/free").status, 200U);
    std::vector<Client> clients;
    for (std::size_t i = 0; i < LargeDocuments::MaxWaiting; ++i) {
        clients.push_back(Send("GET", "/free"));
    }
    unsigned readsBefore = 0;
    entry.onDocument = [&](const RequestInfoEx&, ResponseInfoEx&, VorDataTree&) { readsBefore = free.reads; };
    const Client small = Send("GET", "/");
    const Client more = Send("GET", "/free");
    EXPECT_EQ(Wait(small).status, 200U);
    EXPECT_EQ(readsBefore, 1U);
    const HttpResponse busy = Wait(more);
    EXPECT_EQ(DetailOf(busy, 503), "Too many requests wait for large documents.");
    EXPECT_EQ(busy.fields.Find("Retry-After"), "1");
    for (const Client& client : clients) {
        EXPECT_EQ(Wait(client).body->size(), Wait(clients.front()).body->size());
    }
    EXPECT_EQ(free.reads, 17U);
}

TEST_F(ResourceGatewayTest, TheFirstOfABurstShowsThatADocumentIsLarge) {
    WriteLargeFree(8 * LargeDocuments::LargeSize);
    std::vector<Client> clients;
    for (std::size_t i = 0; i < LargeDocuments::MaxWaiting + 2; ++i) {
        clients.push_back(Send("GET", "/free"));
    }
    EXPECT_EQ(Wait(clients.back()).status, 503U);
    clients.pop_back();
    for (const Client& client : clients) {
        EXPECT_EQ(Wait(client).status, 200U);
        client->Leave();
    }
    EXPECT_EQ(free.reads, 17U);
}

TEST_F(ResourceGatewayTest, NoLargeDocumentIsMadeForAClientThatHasGone) {
    WriteLargeFree(2 * LargeDocuments::LargeSize);
    Get("/free");
    const Client gone = Send("GET", "/free");
    const Client stays = Send("GET", "/free");
    gone->Leave();
    EXPECT_EQ(Wait(stays).status, 200U);
    EXPECT_EQ(free.reads, 2U);
}

TEST_F(ResourceGatewayTest, BytesForWhichNoRoomIsLeftArentSent) {
    constexpr std::size_t Size = 1000;
    Restart({.memoryLimit = Size * 3 / 2});
    free.onDocument = [bytes = std::string(Size, 'x')](const RequestInfoEx&, ResponseInfoEx&, VorDataTree& data) {
        data.Set(Vor::Properties::ByteVector(bytes.data(), bytes.size()));
    };
    const Client slow = Send("GET", "/free");
    EXPECT_EQ(Wait(slow).body->size(), Size);
    EXPECT_EQ(DetailOf(Get("/free"), 503),
              "The documents that are being made and sent occupy all the memory that they may.");
    slow->Leave();
    EXPECT_EQ(Get("/free").status, 200U);
}

TEST_F(ResourceGatewayTest, AFullBudgetIsGivenBackByWhoReads) {
    Restart({.memoryLimit = LargeDocuments::LargeSize});
    WriteLargeFree(LargeDocuments::LargeSize);
    const Client slow = Send("GET", "/free");
    EXPECT_EQ(Wait(slow).status, 200U);
    const HttpResponse refused = Get("/notes");
    EXPECT_EQ(DetailOf(refused, 503),
              "The documents that are being made and sent occupy all the memory that they may.");
    EXPECT_EQ(refused.fields.Find("Retry-After"), "1");
    EXPECT_EQ(SendJson("POST", "/button", "{}").status, 503U);
    const Client next = Send("GET", "/free");
    loop.RunReady();
    EXPECT_FALSE(next->IsAnswered());
    loop.Advance(LargeDocuments::MaxWaitTime - 1s);
    const Client last = Send("GET", "/free");
    loop.Advance(1s);
    const HttpResponse late = Wait(next);
    EXPECT_EQ(DetailOf(late, 503), "The sensor was busy with other large documents for too long to make this one.");
    EXPECT_EQ(late.fields.Find("Retry-After"), "1");
    slow->Leave();
    EXPECT_EQ(Wait(last).status, 200U);
    last->Leave();
    EXPECT_EQ(Get("/notes").status, 200U);
}

TEST_F(ResourceGatewayTest, ABodyOccupiesMemoryUntilItIsHandled) {
    Restart({.memoryLimit = 10'000});
    const HttpFields fields{{"Content-Type", "application/json"}};
    const Client first = Send("POST", "/button", fields, Json(std::string(1000, 'x')).dump());
    const Client second = Send("POST", "/button", fields, "{}");
    EXPECT_EQ(second->Answer().status, 503U) << "at once";
    EXPECT_EQ(Wait(first).status, 200U);
}

TEST_F(ResourceGatewayTest, LargeTextsAreMadeOnAThreadOfTheirOwn) {
    const std::thread::id small = ThreadOf("/");
    EXPECT_EQ(ThreadOf("/notes"), small);
    WriteLargeFree(2 * LargeDocuments::LargeSize);
    const std::thread::id large = ThreadOf("/free");
    EXPECT_NE(large, small) << "so that no other text waits for them";
    EXPECT_EQ(ThreadOf("/free"), large);
    for (const char* const name : {"a", "b", "c"}) {
        notes.texts[name] = std::string(LargeDocuments::LargeSize / 2, 'x');
    }
    EXPECT_EQ(ThreadOf("/notes?expand=item"), large) << "all parts together count";
    EXPECT_EQ(ThreadOf("/notes"), small) << "without its parts it is another document";
}

TEST_F(ResourceGatewayTest, ADocumentIsntLargeBecauseItsSchemaIs) {
    free.onDocument = [](const RequestInfoEx& request, ResponseInfoEx&, VorDataTree& data) {
        data["text"].Set(std::string(request.WantsSchema() ? 2 * LargeDocuments::LargeSize : 10, 'x'));
    };
    Get("/free?schema=1");
    loop.RunReady();
    std::vector<Client> clients;
    for (std::size_t i = 0; i < 2 * LargeDocuments::MaxWaiting; ++i) {
        clients.push_back(Send("GET", "/free"));
    }
    for (const Client& client : clients) {
        EXPECT_EQ(Wait(client).status, 200U);
    }
}

TEST_F(ResourceGatewayTest, ADocumentThatHasBecomeSmallIsNoLongerLarge) {
    WriteLargeFree(2 * LargeDocuments::LargeSize);
    Get("/free");
    WriteLargeFree(10);
    Get("/free");
    loop.RunReady();
    for (std::size_t i = 0; i < 2 * LargeDocuments::MaxWaiting; ++i) {
        Send("GET", "/free");
    }
    EXPECT_EQ(Get("/free").status, 200U);
    EXPECT_EQ(free.reads, 35U);
}

} // namespace
