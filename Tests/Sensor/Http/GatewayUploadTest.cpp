// PUT of what a resource receives in pieces.

#include "Sensor/Http/IUploadResource.h"
#include "Tests/Sensor/Http/GatewayFixture.h"
#include "VorApi/ResourceBase.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Tests {
namespace {

using Sensor::Http::IBodyReceiver;
using Sensor::Http::IUpload;
using Sensor::Http::UploadOutcome;
using Sensor::Http::UploadTerms;

/// Files at "/files/:file/content". What an upload has received is the content, without a document, unless it is
/// refused.
class Files : public VorApi::DocumentResourceBase, public Sensor::Http::IUploadResource {
public:
    class Upload : public IUpload {
    public:
        Upload(Files& files, std::string name, UploadTerms terms)
            : files(files)
            , name(std::move(name))
            , terms(std::move(terms)) {}
        ~Upload() override { ++files.gone; }
        Upload(const Upload&) = delete;
        Upload& operator=(const Upload&) = delete;

        bool HasRoom() const override { return files.hasRoom; }
        void Take(std::string piece) override { content += piece; }
        void End() override {
            const bool isNew = files.contents.insert_or_assign(name, content).second;
            terms.ended({.path = "/files/" + name + "/content", .isNew = isNew});
        }

    private:
        Files& files;
        const std::string name;
        std::string content;
        const UploadTerms terms;
    };

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx&, VorApi::VorDataTree& data) override {
        const auto found = contents.find(*request.FindKey("file"));
        if (found == contents.end()) {
            Vor::Throw(yERROR_NOT_FOUND, "There is no file.");
        }
        data["content"].Set(found->second);
    }
    std::unique_ptr<IUpload> BeginUpload(const VorApi::RequestInfoEx& request, UploadTerms terms) override {
        if (failure != yOK) {
            Vor::Throw(failure, "It can't begin.");
        }
        last = terms;
        return std::make_unique<Upload>(*this, *request.FindKey("file"), std::move(terms));
    }

    std::map<std::string, std::string> contents;
    std::optional<UploadTerms> last;
    yStatus failure = yOK;
    bool hasRoom = true;
    int gone = 0;
};

class GatewayUploadTest : public GatewayFixture {
protected:
    static inline const std::string Path = "/files/a/content";

    GatewayUploadTest() { router.Register("/files/:file/content", files); }
    ~GatewayUploadTest() override { router.Deregister("/files/:file/content", true); }

    /// The client and the receiver of the body of a PUT that has begun.
    struct Begun {
        Client client;
        std::shared_ptr<IBodyReceiver> receiver;
    };
    Begun Begin(const std::string& target, HttpFields fields) {
        fields.Add("Host", "localhost");
        fields.Add("Transfer-Encoding", "chunked");
        const HttpRequest request{"PUT", target, std::move(fields)};
        EXPECT_TRUE(gateway->IsInPieces(request));
        auto client = std::make_shared<WaitingClient>(loop);
        auto receiver = gateway->Receive(request, Sensor::Http::Responder(std::make_shared<ClientTarget>(client)));
        EXPECT_FALSE(receiver->HasRoom()) << "the main loop comes first";
        loop.RunReady();
        return {client, receiver};
    }
    HttpResponse Put(const std::string& target, const std::string& body, HttpFields fields = {}) {
        Begun begun = Begin(target, std::move(fields));
        if (!begun.client->IsAnswered()) {
            EXPECT_TRUE(begun.receiver->HasRoom());
            begun.receiver->Take(body);
            begun.receiver->End();
        }
        begun.receiver.reset();
        files.last.reset();
        return Wait(begun.client);
    }

    Files files;
};

TEST_F(GatewayUploadTest, CreatesAndReplaces) {
    const HttpResponse created = Put(Path, "one");
    EXPECT_EQ(created.status, 201U);
    EXPECT_EQ(created.fields.Find("Location"), Path);
    EXPECT_EQ(Parse(created)["content"], "one");
    const HttpResponse replaced = Put(Path, "two", {{"Content-Type", "application/octet-stream"}});
    EXPECT_EQ(replaced.status, 200U);
    EXPECT_EQ(replaced.fields.Find("Location"), std::nullopt);
    EXPECT_EQ(Parse(replaced)["content"], "two");
    EXPECT_EQ(Parse(replaced)["_links"]["self"]["href"], Path);
}

TEST_F(GatewayUploadTest, RefusesBeforeTheBody) {
    files.contents["a"] = "old";
    notes.texts = {{"a", ""}};
    const std::string newPath = "/files/b/content";
    const auto detail = [&](unsigned status, const std::string& target, const HttpFields& fields) {
        return DetailOf(Put(target, "new", fields), status);
    };
    EXPECT_EQ(detail(404, "/nothing", {}), "There is no resource at /nothing.");
    EXPECT_EQ(detail(405, "/notes/a", {}), "/notes/a doesn't have the method PUT.");
    EXPECT_EQ(detail(400, Path + "?schema=2", {}), "The query has schema=2, and 0, 1 or 2020-12 was expected.");
    EXPECT_EQ(detail(415, Path, {{"Content-Type", "application/json"}}),
              "The body is 'application/json', and 'application/octet-stream' was expected.");
    EXPECT_EQ(detail(415, Path, {{"Content-Encoding", "gzip"}}),
              "The body is encoded as 'gzip', and a body without Content-Encoding was expected.");
    EXPECT_EQ(detail(400, Path, {{"Content-Range", "bytes 0-2/9"}}),
              "The body is a part of a content (Content-Range), and a whole one was expected.");
    EXPECT_EQ(detail(412, Path, {{"If-None-Match", "*"}}),
              "There is something at " + Path + ", and the field If-None-Match is *.");
    EXPECT_EQ(detail(412, newPath, {{"If-Match", "*"}}),
              "There is nothing at " + newPath + ", and the field If-Match is *.");
    EXPECT_EQ(detail(412, Path, {{"If-Match", "\"x\""}}),
              "The configuration has the tag (none), and the field If-Match is \"x\".");
    for (const auto& [failure, status] : std::vector<std::pair<yStatus, unsigned>>{
             {yERROR_PARAMETER, 422}, {yERROR_CONFLICT, 409}, {yERROR_FULL, 409}, {yERROR_BUSY, 503}}) {
        files.failure = failure;
        const HttpResponse refused = Put(newPath, "new");
        EXPECT_EQ(DetailOf(refused, status), "It can't begin.");
        EXPECT_EQ(refused.fields.Find("Retry-After").has_value(), status == 503);
    }
    EXPECT_EQ(files.contents, (std::map<std::string, std::string>{{"a", "old"}}));
    EXPECT_EQ(files.gone, 0) << "none has begun";
}

TEST_F(GatewayUploadTest, ConditionsThatHoldRefuseNothing) {
    EXPECT_EQ(Put(Path, "one", {{"If-None-Match", "*"}}).status, 201U);
    EXPECT_EQ(Put(Path, "two", {{"If-None-Match", "\"x\""}}).status, 200U) << "there is no such tag";
    EXPECT_EQ(Put(Path, "three", {{"If-Match", "*"}}).status, 200U);
    const Begun begun = Begin("/files/b/content", {{"If-None-Match", "*"}});
    EXPECT_TRUE(files.last->onlyNew) << "another client may be faster";
}

TEST_F(GatewayUploadTest, IsRefusedWhileTheBodyComes) {
    Begun begun = Begin(Path, {});
    begun.receiver->Take("some");
    const std::vector<Vor::DocumentError> errors{{"/entry", "It is wrong.", yERROR_FORMAT}};
    files.last->ended({.refusal = Sensor::Http::Problem{422, "It is wrong.", yERROR_FORMAT, errors}});
    const HttpResponse refused = begun.client->Answer();
    EXPECT_EQ(DetailOf(refused, 422), "It is wrong.");
    EXPECT_EQ(Parse(refused)["errors"],
              Json::array({{{"pointer", "/entry"}, {"text", "It is wrong."}, {"status", yERROR_FORMAT}}}));
}

TEST_F(GatewayUploadTest, WaitsForTheResource) {
    files.hasRoom = false;
    const Begun begun = Begin(Path, {});
    EXPECT_FALSE(begun.receiver->HasRoom());
    files.hasRoom = true;
    EXPECT_TRUE(begun.receiver->HasRoom());
}

TEST_F(GatewayUploadTest, AClientThatGoesLeavesNothing) {
    Begun begun = Begin(Path, {});
    begun.receiver->Take("some");
    begun.receiver.reset();
    EXPECT_EQ(files.gone, 1);
    auto client = std::make_shared<WaitingClient>(loop);
    gateway->Receive({"PUT", Path, {{"Host", "localhost"}, {"Content-Length", "5"}}},
                     Sensor::Http::Responder(std::make_shared<ClientTarget>(client)));
    files.last.reset();
    loop.RunReady();
    EXPECT_FALSE(files.last) << "it had gone before it began";
    EXPECT_TRUE(files.contents.empty());
}

TEST_F(GatewayUploadTest, WithoutABodyThereIsNothingToReplaceWith) {
    EXPECT_FALSE(gateway->IsInPieces({"PUT", Path, {{"Host", "localhost"}, {"Content-Length", "0"}}}));
    EXPECT_FALSE(gateway->IsInPieces({"POST", Path, {{"Host", "localhost"}, {"Content-Length", "5"}}}));
    EXPECT_EQ(DetailOf(Request("PUT", Path), 422),
              "The request has no body, and the content of " + Path + " was expected.");
}

TEST_F(GatewayUploadTest, TheMethodIsListed) {
    EXPECT_EQ(Request("OPTIONS", Path).fields.Find("Allow"), "PUT, OPTIONS");
    files.contents["a"] = "";
    EXPECT_EQ(Request("OPTIONS", Path).fields.Find("Allow"), "GET, HEAD, PUT, OPTIONS");
    EXPECT_EQ(Request("POST", Path).fields.Find("Allow"), "GET, HEAD, PUT, OPTIONS");
}

TEST_F(GatewayUploadTest, AnEndAfterTheGatewayHasNoEffect) {
    Begun begun = Begin(Path, {});
    begun.receiver.reset();
    gateway.reset();
    files.last->ended({.path = Path, .isNew = true});
    EXPECT_FALSE(begun.client->IsAnswered());
    files.last.reset();
}

} // namespace
} // namespace Tests
