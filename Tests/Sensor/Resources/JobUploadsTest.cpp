// Archives of jobs that clients send, through the gateway and without a socket.

#include "Sensor/Resources/JobUploads.h"

#include "Sensor/Http/ResourceGateway.h"
#include "Tests/Sensor/Http/GatewayFixture.h"
#include "Tests/Sensor/Resources/SensorFixture.h"
#include "Tests/Support/Faults.h"
#include "VorCommon/ArchiveFile.h"
#include "VorControl/Control/ControlProtocolOperations.h"

#include <atomic>
#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Sensor::Resources {
namespace {

using Http::HttpFields;
using Http::HttpResponse;
using Http::IBodyReceiver;
using Json = nlohmann::json;
using Texts = std::vector<std::string>;
using VorCommon::ArchiveFile;

/// A client that is answered, or whose body can be read again.
class UploadTarget : public Tests::ClientTarget {
public:
    UploadTarget(std::shared_ptr<Tests::WaitingClient> client, Vor::MainLoop& loop,
                 std::shared_ptr<std::atomic<int>> wakes)
        : ClientTarget(std::move(client))
        , loop(loop)
        , wakes(std::move(wakes)) {}
    void Wake() override {
        ++*wakes;
        loop.Post([] {});
    }

private:
    Vor::MainLoop& loop;
    const std::shared_ptr<std::atomic<int>> wakes;
};

class JobUploadsTest : public SensorFixture {
protected:
    static inline const std::string ConfigA = R"({"version":"1","vor:control":{"enabled":true}})";
    static inline const std::string ConfigB = R"({"version":"1","vor:control":{"enabled":false}})";

    JobUploadsTest() { MakeGateway(); }
    void MakeGateway() {
        gateway = std::make_unique<Http::ResourceGateway>(Http::ResourceGateway::Settings{}, host.Router(),
                                                          host.Requests(), *revisions, *streams);
    }

    std::string FileOf(const std::string& name) const { return folder.File("jobs/" + name + ".vrjob"); }
    std::string UploadFolder() const { return folder.File("jobs/.uploads"); }
    static ArchiveFile::Entries EntriesOf(const std::vector<std::pair<std::string, std::string>>& texts) {
        ArchiveFile::Entries entries;
        for (const auto& [name, text] : texts) {
            entries[name] = std::make_shared<const std::vector<unsigned char>>(text.begin(), text.end());
        }
        return entries;
    }
    void Make(const std::string& name, const std::string& configOfA) const {
        ArchiveFile(FileOf(name))
            .Make(EntriesOf({{"controls/a/config.json", configOfA}}), ArchiveFile::Existing::Replace);
    }
    /// The bytes of an archive.
    std::string ArchiveOf(const std::vector<std::pair<std::string, std::string>>& texts) const {
        const Tests::TempFolder other;
        ArchiveFile(other.File("made")).Make(EntriesOf(texts), ArchiveFile::Existing::Replace);
        return Tests::ReadWholeFile(other.File("made"));
    }
    std::string ArchiveWith(const std::string& configOfA) const {
        return ArchiveOf({{"controls/a/config.json", configOfA}});
    }
    std::string ConfigIn(const std::string& job) const {
        const auto entries = ArchiveFile(FileOf(job)).Read();
        const auto& content = *entries.at("controls/a/config.json");
        return {content.begin(), content.end()};
    }
    /// What is beside the jobs.
    std::size_t TemporaryFiles() const {
        std::size_t count = 0;
        if (!std::filesystem::exists(folder.File("jobs"))) {
            return count;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.File("jobs"))) {
            const bool isJob =
                entry.path().extension() == ".vrjob" && !entry.path().filename().string().starts_with('.');
            count += isJob || entry.path() == UploadFolder() ? 0 : 1;
        }
        return count;
    }

    /// An upload that has begun or was refused.
    struct Begun {
        std::shared_ptr<Tests::WaitingClient> client;
        std::shared_ptr<IBodyReceiver> receiver;
        std::shared_ptr<std::atomic<int>> wakes;
    };
    Begun Begin(const std::string& job, HttpFields fields = {}) {
        fields.Add("Host", "localhost");
        fields.Add("Transfer-Encoding", "chunked");
        auto client = std::make_shared<Tests::WaitingClient>(loop);
        auto wakes = std::make_shared<std::atomic<int>>(0);
        auto receiver = gateway->Receive({"PUT", "/sensor/jobs/" + job + "/file", std::move(fields)},
                                         Http::Responder(std::make_shared<UploadTarget>(client, loop, wakes)));
        loop.RunReady();
        return {client, receiver, wakes};
    }
    void Send(const Begun& begun, const std::string& bytes) {
        constexpr std::size_t Piece = 50'000;
        for (std::size_t at = 0; at < bytes.size(); at += Piece) {
            WaitFor([&] { return begun.receiver->HasRoom(); });
            begun.receiver->Take(bytes.substr(at, Piece));
        }
    }
    HttpResponse AnswerOf(Begun& begun) {
        begun.receiver.reset();
        WaitFor([&] { return begun.client->IsReleased(); });
        return begun.client->IsAnswered() ? begun.client->Answer() : HttpResponse{.status = 0};
    }
    HttpResponse End(Begun& begun) {
        WaitFor([&] { return begun.receiver->HasRoom(); });
        begun.receiver->End();
        return AnswerOf(begun);
    }
    HttpResponse Put(const std::string& job, const std::string& bytes, HttpFields fields = {}) {
        Begun begun = Begin(job, std::move(fields));
        if (begun.client->IsAnswered()) {
            return AnswerOf(begun);
        }
        Send(begun, bytes);
        return End(begun);
    }
    static Json Parse(const HttpResponse& response) {
        return response.body ? Json::parse(*response.body) : Json::object();
    }
    static std::string DetailOf(const HttpResponse& response) { return Parse(response).value("detail", ""); }

    std::unique_ptr<Http::ResourceGateway> gateway;
};

TEST_F(JobUploadsTest, AnUploadMakesAJobAndReplacesOne) {
    const HttpResponse created = Put("two%20words", ArchiveOf({{"controls/a/config.json", ConfigA}, {"other", "x"}}));
    EXPECT_EQ(created.status, 201U) << DetailOf(created);
    EXPECT_EQ(created.fields.Find("Location"), "/sensor/jobs/two%20words");
    EXPECT_EQ(Parse(created)["name"], "two words");
    EXPECT_EQ(Parse(created)["services"], Json::array({"a"}));
    EXPECT_EQ(ConfigIn("two words"), ConfigA);
    EXPECT_EQ(TemporaryFiles(), 0U);

    const HttpResponse replaced = Put("two%20words", ArchiveWith(ConfigB), {{"If-Match", "*"}});
    EXPECT_EQ(replaced.status, 200U) << DetailOf(replaced);
    EXPECT_EQ(replaced.fields.Find("Location"), std::nullopt);
    EXPECT_EQ(ConfigIn("two words"), ConfigB);
    EXPECT_EQ(ArchiveFile(FileOf("two words")).Names().size(), 1U) << "all of it is replaced";
    EXPECT_EQ(StatusIn(Invoke("/sensor/jobs/two%20words/commands/load")), yOK);
}

TEST_F(JobUploadsTest, WhatIsReadCanBeUploaded) {
    EXPECT_EQ(StatusIn(Invoke("/sensor/jobs/test/commands/save")), yOK);
    const auto bytes = Read("/sensor/jobs/test/file").AsBinary();
    EXPECT_EQ(Put("second", std::string(reinterpret_cast<const char*>(bytes.Data()), bytes.Size())).status, 201U);
    EXPECT_EQ(ArchiveFile(FileOf("second")).Names().size(), ArchiveFile(FileOf("test")).Names().size());
}

TEST_F(JobUploadsTest, ALargeArchiveComesInPieces) {
    std::string noise;
    for (unsigned i = 0; noise.size() < std::size_t{3} << 20; ++i) {
        noise += std::to_string(i * 2654435761U);
    }
    EXPECT_EQ(Put("second", ArchiveOf({{"noise", noise}})).status, 201U);
    const auto entries = ArchiveFile(FileOf("second")).Read();
    EXPECT_EQ(std::string(entries.at("noise")->begin(), entries.at("noise")->end()), noise);
}

TEST_F(JobUploadsTest, ADamagedArchiveIsRefusedWithThePlace) {
    Make("second", ConfigB);
    const std::string whole = ArchiveWith(ConfigA);
    const auto placesOf = [](const HttpResponse& refused) {
        Texts places;
        for (const Json& error : Parse(refused).value("errors", Json::array())) {
            places.push_back(error["pointer"].get<std::string>() + " " + error["text"].get<std::string>());
        }
        return places;
    };
    for (const auto& [bytes, places] : std::vector<std::pair<std::string, Texts>>{
             {"", {" The archive can't be read: it is a database without the table of an archive."}},
             {"no archive", {" The archive can't be read: file is not a database."}},
             {whole.substr(0, whole.size() - 1), {" The archive can't be read: it is cut short."}},
             {ArchiveWith("{"),
              {"/controls~1a~1config.json Entry 'controls/a/config.json' is no JSON: Line 1, column "}},
             {ArchiveOf({{"controls/a/config.json", "{}"}, {"controls/b/config.json", "[]"}, {"x.json", "1 2"}}),
              {"/controls~1a~1config.json The archive isn't a job: entry 'controls/a/config.json' holds no settings",
               "/controls~1b~1config.json The archive isn't a job: entry 'controls/b/config.json' holds no settings",
               "/x.json Entry 'x.json' is no JSON: Line 1, column "}},
         }) {
        const HttpResponse refused = Put("second", bytes);
        EXPECT_EQ(refused.status, 422U);
        const Texts found = placesOf(refused);
        ASSERT_EQ(found.size(), places.size()) << Parse(refused);
        for (std::size_t i = 0; i < places.size(); ++i) {
            EXPECT_TRUE(found[i].starts_with(places[i])) << found[i];
        }
        EXPECT_TRUE(placesOf(refused).front().ends_with(DetailOf(refused)));
        EXPECT_EQ(DetailOf(refused).find(folder.Path().string()), std::string::npos) << DetailOf(refused);
        EXPECT_EQ(ConfigIn("second"), ConfigB);
        EXPECT_EQ(TemporaryFiles(), 0U);
    }
    EXPECT_EQ(Put("third", "no archive").status, 422U);
    EXPECT_FALSE(ArchiveFile(FileOf("third")).Exists());
}

TEST_F(JobUploadsTest, SomeJobsCantBeReplaced) {
    for (const char* const name : {"second.vrjob", ".second", "a%2Fb", "..%2Fworkspace", ".."}) {
        EXPECT_EQ(Put(name, ArchiveWith(ConfigA)).status, 422U) << name;
    }
    EXPECT_EQ(DetailOf(Put(std::string(241, 'a'), ArchiveWith(ConfigA))),
              "The name of the job has 241 bytes, and at most 240 were expected.");
    const HttpResponse loaded = Put("test", ArchiveWith(ConfigA));
    EXPECT_EQ(loaded.status, 409U);
    EXPECT_EQ(DetailOf(loaded), "The job 'test' can't be replaced while it is loaded.");
    EXPECT_FALSE(std::filesystem::exists(UploadFolder())) << "nothing was received";
}

TEST_F(JobUploadsTest, AJobThatIsLoadedOrMadeMeanwhileIsKept) {
    Make("second", ConfigB);
    Begun replacing = Begin("second");
    Send(replacing, ArchiveWith(ConfigA));
    EXPECT_EQ(StatusIn(Invoke("/sensor/jobs/second/commands/load")), yOK);
    const HttpResponse refused = End(replacing);
    EXPECT_EQ(refused.status, 409U);
    EXPECT_EQ(DetailOf(refused), "The job 'second' can't be replaced while it is loaded.");
    EXPECT_EQ(ConfigIn("second"), ConfigB);

    Begun making = Begin("third", {{"If-None-Match", "*"}});
    Send(making, ArchiveWith(ConfigA));
    Make("third", ConfigB);
    const HttpResponse late = End(making);
    EXPECT_EQ(late.status, 412U);
    EXPECT_EQ(DetailOf(late), "There is a job 'third' already, and the field If-None-Match is *.");
    EXPECT_EQ(ConfigIn("third"), ConfigB);
    EXPECT_EQ(TemporaryFiles(), 0U);
}

TEST_F(JobUploadsTest, AClientThatGoesLeavesNothing) {
    Make("second", ConfigB);
    Begun gone = Begin("second");
    Send(gone, ArchiveWith(ConfigA));
    gone.receiver.reset();
    EXPECT_EQ(Put("third", ArchiveWith(ConfigA)).status, 201U) << "which is done behind it";
    EXPECT_EQ(TemporaryFiles(), 0U);
    EXPECT_EQ(ConfigIn("second"), ConfigB);
    EXPECT_FALSE(gone.client->IsAnswered());
}

TEST_F(JobUploadsTest, WhatAFormerRunHasLeftIsRemoved) {
    Make("second", ConfigB);
    std::filesystem::create_directories(UploadFolder() + "/3");
    Tests::WriteWholeFile(UploadFolder() + "/3/received", "some");
    gateway.reset();
    directory.reset();
    directory = std::make_unique<SensorDir>(host.Router(), Environ(), *streams);
    MakeGateway();
    EXPECT_FALSE(std::filesystem::exists(UploadFolder()));
    EXPECT_EQ(ConfigIn("second"), ConfigB);
    EXPECT_EQ(Put("third", ArchiveWith(ConfigA)).status, 201U);
}

TEST_F(JobUploadsTest, AFullDiskReplacesNothing) {
    Make("second", ConfigB);
    const std::string bytes = ArchiveWith(ConfigA);
    for (const char* const fault : {"JobUploads_Write", "ArchiveFile_Commit", "MoveArchive"}) {
        Tests::Faults faults;
        faults.Set(fault, yERROR);
        const HttpResponse refused = Put("second", bytes);
        EXPECT_EQ(refused.status, 507U) << fault;
        EXPECT_TRUE(DetailOf(refused).starts_with("The archive can't be stored: ")) << DetailOf(refused);
        EXPECT_EQ(ConfigIn("second"), ConfigB);
        EXPECT_EQ(TemporaryFiles(), 0U) << fault;
        EXPECT_EQ(yFault_HitCount(), 1U) << fault;
    }
    EXPECT_EQ(Put("second", bytes).status, 200U);
}

TEST_F(JobUploadsTest, ADiskThatFailsIsReportedBeforeTheEnd) {
    Tests::Faults faults;
    faults.Set("JobUploads_Write", yERROR);
    Begun begun = Begin("second");
    begun.receiver->Take("some");
    WaitFor([&] { return begun.client->IsAnswered(); });
    EXPECT_EQ(begun.client->Answer().status, 507U);
    begun.receiver->Take("more"); // which was on its way
    begun.receiver->End();
    AnswerOf(begun);
    EXPECT_EQ(TemporaryFiles(), 0U);
    EXPECT_FALSE(ArchiveFile(FileOf("second")).Exists());
}

TEST_F(JobUploadsTest, OfTwoUploadsOfOneJobTheLastWins) {
    Begun first = Begin("second");
    Begun other = Begin("second");
    const std::string a = ArchiveWith(ConfigA);
    const std::string b = ArchiveWith(ConfigB);
    for (std::size_t at = 0; at < a.size() || at < b.size(); at += 1000) {
        for (const auto& [begun, bytes] : {std::pair(&first, &a), std::pair(&other, &b)}) {
            if (at < bytes->size()) {
                WaitFor([&, receiver = begun->receiver] { return receiver->HasRoom(); });
                begun->receiver->Take(bytes->substr(at, 1000));
            }
        }
    }
    EXPECT_EQ(End(other).status, 201U);
    EXPECT_EQ(ConfigIn("second"), ConfigB);
    EXPECT_EQ(End(first).status, 200U);
    EXPECT_EQ(ConfigIn("second"), ConfigA);
}

TEST_F(JobUploadsTest, AFewAtATimeAreReceived) {
    std::vector<Begun> all;
    for (std::size_t i = 0; i < JobUploads::MaxCount; ++i) {
        all.push_back(Begin("job" + std::to_string(i)));
        EXPECT_TRUE(all.back().receiver->HasRoom());
    }
    const HttpResponse refused = Put("more", ArchiveWith(ConfigA));
    EXPECT_EQ(refused.status, 503U);
    EXPECT_EQ(refused.fields.Find("Retry-After"), "1");
    EXPECT_EQ(DetailOf(refused), "4 archives of jobs are being received, which is the most that may.");
    Send(all.back(), ArchiveWith(ConfigA));
    EXPECT_EQ(End(all.back()).status, 201U);
    EXPECT_EQ(Put("more", ArchiveWith(ConfigA)).status, 201U) << "as soon as one is answered";
}

TEST_F(JobUploadsTest, TheClientIsReadFromAsFastAsTheDiskWrites) {
    Begun begun = Begin("second");
    const int wakes = *begun.wakes;
    begun.receiver->Take(std::string(JobUploads::MaxWaiting, 'x'));
    WaitFor([&] { return *begun.wakes > wakes; });
    EXPECT_TRUE(begun.receiver->HasRoom());
    EXPECT_EQ(End(begun).status, 422U);
}

TEST_F(JobUploadsTest, AnUploadMayEndAfterTheResources) {
    std::promise<void> released;
    host.Persistence().Post([wait = released.get_future().share()] { wait.wait(); });
    Begun begun = Begin("second");
    Send(begun, ArchiveWith(ConfigA));
    begun.receiver->End();
    begun.receiver.reset();
    gateway.reset();
    directory.reset();
    released.set_value();
    std::promise<void> done; // behind the upload, if it came so far
    host.Persistence().Post([&done] { done.set_value(); });
    done.get_future().wait();
    loop.RunReady();
    EXPECT_TRUE(!ArchiveFile(FileOf("second")).Exists() || ConfigIn("second") == ConfigA);
    EXPECT_FALSE(begun.client->IsAnswered());
}

} // namespace
} // namespace Sensor::Resources
