#include "Sensor/Resources/JobUploads.h"

#include "Sensor/Jobs/ReceivedJob.h"
#include "Sensor/Resources/JobProperties.h"
#include "Vor/DocumentErrors.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorCommon/ArchiveFile.h"
#include "VorCommon/PersistManager.h"
#include "yApi/yFault.h"
#include "yApi/yStatus.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Sensor::Resources {

using VorCommon::ArchiveFile;

namespace {

constexpr int FileMode = 0644;

Http::Problem NotStored(const std::string& reason, yStatus status) {
    return {507, "The archive can't be stored: " + reason, status};
}

void RemoveAll(const std::string& folder) {
    std::error_code error;
    std::filesystem::remove_all(folder, error);
    if (error) {
        Vor::LogError("%s can't be removed: %s.", folder, error.message());
    }
}

} // namespace

/// The files of one upload, in a folder of its own, which is removed at the end. The operations run one after the
/// other: those without a comment on the thread of the uploads.
class JobUploads::Receipt : public std::enable_shared_from_this<JobUploads::Receipt> {
public:
    Receipt(JobUploads& uploads, std::string name, Http::UploadTerms terms)
        : jobs(uploads.environ.jobs)
        , persistence(uploads.environ.persistence)
        , changed(uploads.environ.changed)
        , alive(uploads.alive)
        , mainLoop(uploads.mainLoop)
        , count(uploads.count)
        , name(std::move(name))
        , folder((std::filesystem::path(uploads.folder) / std::to_string(++uploads.lastId)).string())
        , received(folder + "/received")
        , checked(folder + "/checked")
        , terms(std::move(terms)) {
        ++*count;
    }
    /// On any thread.
    ~Receipt() {
        Vor::CleanUp([this] { RemoveFiles(); });
        LeavePlace();
    }
    Receipt(const Receipt&) = delete;
    Receipt& operator=(const Receipt&) = delete;

    /// On any thread.
    bool HasRoom() const { return waiting < MaxWaiting; }
    /// Before each Write. On any thread.
    void Announce(std::size_t size) { waiting += size; }

    void Write(std::string_view piece) {
        if (!hasFailed) {
            try {
                WriteToFile(piece);
            } catch (const Vor::Exception& e) {
                Refuse(NotStored(e.what(), e.Status()));
            }
        }
        const std::size_t before = waiting.fetch_sub(piece.size());
        if (before >= MaxWaiting && before - piece.size() < MaxWaiting) {
            terms.wake();
        }
    }

    /// The body is whole.
    void Check() {
        if (hasFailed || !MakeChecked()) {
            return;
        }
        persistence.Post([self = shared_from_this()] { self->Place(); });
    }

private:
    void WriteToFile(std::string_view piece) {
        Vor::ThrowIfFailed(yFault_Check("JobUploads_Write"));
        Open();
        while (!piece.empty()) {
            const ssize_t written = write(descriptor, piece.data(), piece.size());
            if (written >= 0) {
                piece.remove_prefix(static_cast<std::size_t>(written));
            } else if (errno != EINTR) {
                Vor::Throw(yERROR, "%s.", std::string(std::strerror(errno)));
            }
        }
    }
    void Open() {
        if (descriptor >= 0) {
            return;
        }
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        descriptor = open(received.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, FileMode);
        if (descriptor < 0) {
            Vor::Throw(yERROR, "%s.", error ? error.message() : std::string(std::strerror(errno)));
        }
    }
    void Close() {
        if (descriptor >= 0) {
            close(std::exchange(descriptor, -1));
        }
    }
    void LeavePlace() {
        if (std::exchange(hasPlace, false)) {
            --*count;
        }
    }
    void RemoveFiles() {
        Close();
        RemoveAll(folder);
    }

    bool MakeChecked() {
        ArchiveFile::Entries entries;
        try {
            Open(); // for a body without a byte
            Close();
            entries = Jobs::ReadReceivedJob(received);
        } catch (const Vor::DocumentException& e) {
            Refuse({422, e.what(), e.Status(), e.Errors()});
            return false;
        } catch (const Vor::Exception& e) {
            Refuse(NotStored(e.what(), e.Status()));
            return false;
        }
        try {
            ArchiveFile(checked).Make(entries, ArchiveFile::Existing::Replace);
        } catch (const Vor::Exception& e) {
            Refuse(NotStored(Jobs::WithoutArchiveName(e.what(), checked), e.Status()));
            return false;
        }
        return true;
    }

    /// On the persistence thread.
    void Place() {
        Http::UploadOutcome outcome{.path = JobProperties::PathOf(name)};
        try {
            outcome.isNew = jobs.Place(checked, name,
                                       terms.onlyNew ? ArchiveFile::Existing::Refuse : ArchiveFile::Existing::Replace);
        } catch (const Vor::Exception& e) {
            outcome.refusal = RefusalOf(e);
        }
        EndWith(std::move(outcome));
    }
    Http::Problem RefusalOf(const Vor::Exception& failure) const {
        switch (failure.Status()) {
        case yERROR_ALREADY_EXISTS:
            return {412, "There is a job '" + name + "' already, and the field If-None-Match is *.", failure.Status()};
        case yERROR_CONFLICT:
        case yERROR_FULL:
            return {409, failure.what(), failure.Status()};
        default:
            return NotStored(failure.what(), failure.Status());
        }
    }

    void Refuse(Http::Problem problem) {
        hasFailed = true;
        EndWith({.refusal = std::move(problem)});
    }
    /// What the client is answered comes when all of this is over.
    void EndWith(Http::UploadOutcome outcome) {
        RemoveFiles();
        LeavePlace();
        if (const auto runner = mainLoop.lock()) {
            runner->Run(
                [token = alive, ended = std::move(terms.ended), changed = changed, outcome = std::move(outcome)] {
                    if (token.expired()) {
                        return;
                    }
                    if (!outcome.refusal) {
                        changed();
                    }
                    ended(outcome);
                });
        }
    }

    const SensorJobs jobs;
    VorCommon::PersistManager& persistence;
    const std::function<void()> changed;
    const std::weak_ptr<const bool> alive;
    const std::weak_ptr<Vor::AsyncRunner> mainLoop;
    const std::shared_ptr<std::atomic<std::size_t>> count;
    const std::string name;
    const std::string folder;
    const std::string received;
    const std::string checked;
    Http::UploadTerms terms;
    std::atomic<std::size_t> waiting = 0; ///< bytes
    int descriptor = -1;                  ///< of what was received
    bool hasFailed = false;
    bool hasPlace = true; ///< is counted
};

/// The network thread's side of an upload.
class JobUploads::Upload : public Http::IUpload {
public:
    Upload(Net::NetThread& thread, std::shared_ptr<Receipt> receipt)
        : thread(thread)
        , receipt(std::move(receipt)) {}
    // The files are removed on that thread, behind what is written.
    ~Upload() override {
        Vor::CleanUp([this] { thread.Post([last = std::move(receipt)] {}); });
    }
    Upload(const Upload&) = delete;
    Upload& operator=(const Upload&) = delete;

    bool HasRoom() const override { return receipt->HasRoom(); }
    void Take(std::string piece) override {
        receipt->Announce(piece.size());
        thread.Post([to = receipt, piece = std::move(piece)] { to->Write(piece); });
    }
    void End() override {
        thread.Post([whole = receipt] { whole->Check(); });
    }

private:
    Net::NetThread& thread;
    std::shared_ptr<Receipt> receipt;
};

JobUploads::JobUploads(const JobsEnviron& environ)
    : environ(environ)
    , folder(environ.jobs.UploadFolder()) {
    RemoveAll(folder);
}

// What the thread hasn't begun is dropped, and the files are removed with it.
JobUploads::~JobUploads() = default;

std::unique_ptr<Http::IUpload> JobUploads::Begin(const std::string& name, Http::UploadTerms terms) {
    environ.jobs.RequireReplaceable(name);
    if (*count >= MaxCount) {
        Vor::Throw(yERROR_BUSY, "%d archives of jobs are being received, which is the most that may.",
                   static_cast<int>(MaxCount));
    }
    return std::make_unique<Upload>(thread, std::make_shared<Receipt>(*this, name, std::move(terms)));
}

} // namespace Sensor::Resources
