#include "VorCommon/PersistManager.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/Utf8.h"
#include "VorApi/LogThrown.h"
#include "VorCommon/ArchiveStore.h"
#include "VorCommon/IPersistHandler.h"
#include "VorCommon/LiveJob.h"
#include "VorCommon/RuntimeCache.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

namespace VorCommon {

namespace {

constexpr const char* JobExtension = ".vrjob";
constexpr std::size_t MaxFileNameSize = 255;

/// Whether a text in UTF-8 contains one of U+0000 to U+001F or U+007F to U+009F.
bool HasControlCharacters(const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isTwoBytes = byte == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (byte < 0x20 || byte == 0x7F || isTwoBytes) {
            return true;
        }
    }
    return false;
}

/// The exception of the call, or null. No handler of it is active any more on return, so that the pointer may be passed
/// to another thread.
template <typename Function>
std::exception_ptr FailureOf(const Function& function) {
    try {
        function();
    } catch (...) {
        return std::current_exception();
    }
    return nullptr;
}

} // namespace

std::string PersistManager::JobFileName(const std::string& name) {
    if (!Vor::IsUtf8(name)) {
        Vor::Throw(yERROR_PARAMETER, "The name of a job must be text in UTF-8.");
    }
    const std::string extension = JobExtension;
    std::string fileName = name.ends_with(extension) ? name : name + extension;
    if (HasControlCharacters(name)) {
        Vor::Throw(yERROR_PARAMETER, "The name of a job can't contain control characters.");
    }
    if (name.empty() || name.front() == '.' || name.find('/') != std::string::npos ||
        fileName.size() > MaxFileNameSize) {
        Vor::Throw(yERROR_PARAMETER, "'%s' is not a job name: it must be one file name that doesn't begin with a dot.",
                   name);
    }
    return fileName;
}

PersistManager::PersistManager(Environ environ)
    : environ(std::move(environ))
    , jobFile(JobFileName(this->environ.job))
    , thread("Persistence", [this] { return RunThread(); }) {}

PersistManager::~PersistManager() {
    {
        const std::lock_guard guard(queueMutex);
        ending = true;
    }
    queueChanged.notify_one();
}

unsigned long long PersistManager::Register(IPersistHandler& handler, const std::string& text) {
    const std::lock_guard guard(handlersMutex);
    handlers.push_back({++lastId, &handler, text});
    return lastId;
}

void PersistManager::Deregister(unsigned long long id) {
    std::unique_lock guard(handlersMutex);
    std::erase_if(handlers, [id](const Handler& handler) { return handler.id == id; });
    callEnded.wait(guard, [&] { return id == 0 || runningId != id || runningThread == std::this_thread::get_id(); });
}

void PersistManager::Announce(IPersistHandler&, PersistDomain domain, int) {
    modified[IndexOf(domain)] = true;
}

void PersistManager::Load() {
    RunWhileWaiting([this] { LoadDomains(); }, [this] { CommitInitialised(); });
}

void PersistManager::LoadJob(const std::string& name) {
    try {
        ChangeJob(name, [this](const std::string& fileName) { LoadJobDomain(fileName); });
    } catch (const std::exception& e) {
        Vor::LogUser(Vor::UserError, "VorCommon", "The job wasn't loaded: %s", e.what());
        throw;
    }
}

void PersistManager::Restore(const std::string& name, const JobFiller& fill) {
    try {
        ChangeJob(name, [this, &fill](const std::string& fileName) { RestoreDomains(fileName, fill); });
    } catch (const std::exception& e) {
        Vor::LogUser(Vor::UserError, "VorCommon", "The restore failed: %s", e.what());
        throw;
    }
}

void PersistManager::SaveResult::ThrowIfFailed() const {
    if (status != yOK) {
        Vor::Throw(status, "%s", text);
    }
}

std::shared_future<PersistManager::SaveResult> PersistManager::Save(PersistDomain domain) {
    struct Progress {
        bool wasModified = false;
        std::exception_ptr failure;
        std::promise<SaveResult> result;
    };
    const std::size_t index = IndexOf(domain);
    const auto progress = std::make_shared<Progress>();
    std::shared_future<SaveResult> result = progress->result.get_future().share();
    RunWhileWaiting(
        [=, this] {
            progress->wasModified = modified[index].exchange(false);
            progress->failure = FailureOf([&] { SaveHandlers(domain, LoadedStore(domain)); });
        },
        [=, this] {
            if (progress->failure == nullptr) {
                progress->failure = FailureOf([&] { stores[index]->Commit(); });
            }
            if (progress->failure == nullptr) {
                progress->result.set_value({});
                return;
            }
            if (progress->wasModified) {
                modified[index] = true;
            }
            progress->result.set_value(LogFailedSave(domain, progress->failure));
        });
    return result;
}

void PersistManager::SaveJobAs(const std::string& name, ArchiveFile::Existing existing) {
    ChangeJob(name, [this, existing](const std::string& fileName) { SaveJobDomainAs(fileName, existing); });
}

ArchiveFile::Entries PersistManager::ContentToSave(PersistDomain domain) {
    ArchiveFile::Entries content;
    RunWhileWaiting(
        [&] {
            ArchiveStore copy = LoadedStore(domain);
            SaveHandlers(domain, copy);
            content = copy.Files();
        },
        [] {});
    return content;
}

void PersistManager::Post(std::function<void()> task) {
    {
        const std::lock_guard guard(queueMutex);
        queue.emplace_back([task = std::move(task)] {
            try {
                task();
            } catch (const std::exception& e) {
                Vor::LogThrown(e, "A task with the files of domains failed.");
            }
        });
    }
    queueChanged.notify_one();
}

std::string PersistManager::LoadedJob() const {
    const std::lock_guard guard(jobMutex);
    return liveJob ? jobFile : std::string();
}

void* PersistManager::LiveJob() const {
    const std::lock_guard guard(jobMutex);
    return yObject_Share(liveJob.Get());
}

bool PersistManager::IsModified(PersistDomain domain) const {
    return modified[IndexOf(domain)];
}

std::string PersistManager::FilePath(PersistDomain domain) const {
    return domain == PersistDomain::Job ? JobPath(JobFile()) : WorkspacePath();
}

std::string PersistManager::JobFile() const {
    const std::lock_guard guard(jobMutex);
    return jobFile;
}

std::string PersistManager::JobPath(const std::string& fileName) const {
    return (std::filesystem::path(environ.dataFolder) / "jobs" / fileName).string();
}

std::string PersistManager::WorkspacePath() const {
    return (std::filesystem::path(environ.dataFolder) / WorkspaceFile).string();
}

std::size_t PersistManager::IndexOf(PersistDomain domain) {
    switch (domain) {
    case PersistDomain::Workspace:
        return 0;
    case PersistDomain::Job:
        return 1;
    }
    Vor::Throw(yERROR_PARAMETER, "%d is not a persistence domain.", static_cast<int>(domain));
}

yStatus PersistManager::RunThread() {
    std::unique_lock guard(queueMutex);
    while (true) {
        queueChanged.wait(guard, [this] { return ending || !queue.empty(); });
        if (queue.empty()) {
            return yOK;
        }
        {
            const std::function<void()> task = std::move(queue.front());
            queue.pop_front();
            guard.unlock();
            task();
        }
        guard.lock();
    }
}

void PersistManager::RunWhileWaiting(std::function<void()> step, std::function<void()> after) {
    std::optional<RuntimeCache::MainLoopBlock> blocked;
    if (environ.runtimeCache != nullptr) {
        blocked.emplace(*environ.runtimeCache);
    }
    std::unique_lock guard(queueMutex);
    hasStepEnded = false;
    queue.emplace_back([this, step = std::move(step), after = std::move(after)] {
        // The failure is moved: this thread keeps no reference to the exception.
        std::exception_ptr failure = FailureOf(step);
        {
            const std::lock_guard guard(queueMutex);
            hasStepEnded = true;
            stepFailure = std::move(failure);
        }
        stepEnded.notify_one();
        after();
    });
    queueChanged.notify_one();
    stepEnded.wait(guard, [this] { return hasStepEnded; });
    std::exception_ptr failure = std::exchange(stepFailure, nullptr);
    guard.unlock();
    if (failure != nullptr) {
        std::rethrow_exception(std::move(failure));
    }
}

PersistManager::LoadedDomain PersistManager::MakeLoadedDomain(PersistDomain domain, bool hasFile,
                                                              std::unique_ptr<ArchiveStore> store) const {
    auto decorated = environ.decorateStore ? environ.decorateStore(*store, domain) : nullptr;
    return {domain, hasFile, std::move(store), std::move(decorated)};
}

void PersistManager::LoadDomains() {
    std::vector<LoadedDomain> domains;
    for (const PersistDomain domain : {PersistDomain::Workspace, PersistDomain::Job}) {
        auto store = std::make_unique<ArchiveStore>(FilePath(domain));
        const bool hasFile = store->Open();
        domains.push_back(MakeLoadedDomain(domain, hasFile, std::move(store)));
    }
    SetLoadedJob(JobFile());
    for (LoadedDomain& loaded : domains) {
        ApplyDomain(std::move(loaded));
    }
}

void PersistManager::LoadJobDomain(const std::string& fileName) {
    auto store = std::make_unique<ArchiveStore>(JobPath(fileName));
    store->OpenJob();
    LoadedDomain loaded = MakeLoadedDomain(PersistDomain::Job, true, std::move(store));
    SetLoadedJob(fileName);
    ApplyDomain(std::move(loaded));
}

void PersistManager::RestoreDomains(const std::string& fileName, const JobFiller& fill) {
    ArchiveStore filled(JobPath(fileName));
    fill(filled);
    filled.RequireJson();
    ArchiveFile(WorkspacePath()).Remove();
    ArchiveFile(JobPath(fileName)).Remove();

    ApplyDomain(MakeLoadedDomain(PersistDomain::Workspace, false, std::make_unique<ArchiveStore>(WorkspacePath())));
    LoadedDomain job = MakeLoadedDomain(PersistDomain::Job, false, std::make_unique<ArchiveStore>(JobPath(fileName)));
    InitOrLoadHandlers(job);
    job.store->WriteAll(filled);
    job.hasFile = true;
    SetLoadedJob(fileName);
    ApplyDomain(std::move(job));
    CommitRestored();
}

// Both files are tried; the first failure is thrown.
void PersistManager::CommitRestored() {
    std::exception_ptr first;
    for (const PersistDomain domain : {PersistDomain::Workspace, PersistDomain::Job}) {
        const std::size_t index = IndexOf(domain);
        std::exception_ptr failure = FailureOf([&] { stores[index]->Commit(); });
        if (failure != nullptr) {
            modified[index] = true;
            first = first == nullptr ? std::move(failure) : std::move(first);
        }
    }
    if (first != nullptr) {
        std::rethrow_exception(std::move(first));
    }
}

// Runs the change on the thread while the caller waits, and notifies the application if another job was loaded.
void PersistManager::ChangeJob(const std::string& name,
                               const std::function<void(const std::string& fileName)>& change) {
    const Vor::Object before = Vor::Object::Adopt(LiveJob());
    std::exception_ptr failure = FailureOf([&] {
        const std::string fileName = JobFileName(name);
        RunWhileWaiting([&] { change(fileName); }, [] {});
    });
    const Vor::Object after = Vor::Object::Adopt(LiveJob());
    if (before.Get() != after.Get()) {
        NotifyJobLoaded();
    }
    if (failure != nullptr) {
        std::rethrow_exception(std::move(failure));
    }
}

void PersistManager::NotifyJobLoaded() const {
    if (!environ.jobLoaded) {
        return;
    }
    try {
        environ.jobLoaded(LoadedJob());
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "A failure when the program was notified of the loaded job.");
    }
}

void PersistManager::SetLoadedJob(const std::string& fileName) {
    Vor::Object made;
    Vor::ThrowIfFailed(LiveJob_Construct(made.Out(), fileName));
    const std::lock_guard guard(jobMutex);
    jobFile = fileName;
    std::swap(liveJob, made);
}

void PersistManager::ApplyDomain(LoadedDomain loaded) {
    const std::size_t index = IndexOf(loaded.domain);
    modified[index] = false;
    InitOrLoadHandlers(loaded);
    loaded.decorated.reset();
    stores[index] = std::move(loaded.store);
}

// Every handler is called unless one throws something other than a std::exception.
void PersistManager::InitOrLoadHandlers(const LoadedDomain& loaded) {
    IPersistStore& store = loaded.decorated ? *loaded.decorated : *loaded.store;
    const char* const action = loaded.hasFile ? "load" : "initialise";
    for (const unsigned long long id : HandlerIds()) {
        std::string component;
        try {
            CallHandler(id, component, [&](IPersistHandler& handler) {
                if (loaded.hasFile) {
                    handler.LoadPersistDomain(loaded.domain, store);
                } else {
                    handler.InitPersistDomain(loaded.domain, store);
                }
            });
        } catch (const std::exception& e) {
            Vor::LogThrown(e, "Persist handler \"%s\" failed to %s the %s domain (%s).", component, action,
                           PersistDomain_Name(loaded.domain), e.what());
        } catch (...) {
            Vor::LogError("Persist handler \"%s\" failed to %s the %s domain (unknown exception). No further handler "
                          "takes part.",
                          component, action, PersistDomain_Name(loaded.domain));
            loaded.store->Discard();
            return;
        }
    }
}

// Makes the files of the domains that the handlers have initialised.
void PersistManager::CommitInitialised() {
    for (const PersistDomain domain : {PersistDomain::Workspace, PersistDomain::Job}) {
        const std::unique_ptr<ArchiveStore>& store = stores[IndexOf(domain)];
        const std::exception_ptr failure = FailureOf([&] {
            if (store != nullptr) {
                store->Commit();
            }
        });
        if (failure != nullptr) {
            LogFailedSave(domain, failure);
        }
    }
}

void PersistManager::SaveJobDomainAs(const std::string& fileName, ArchiveFile::Existing existing) {
    const std::size_t index = IndexOf(PersistDomain::Job);
    const bool wasModified = modified[index].exchange(false);
    std::exception_ptr failure = FailureOf([&] {
        ArchiveStore copy = LoadedStore(PersistDomain::Job);
        SaveHandlers(PersistDomain::Job, copy);
        const std::string path = JobPath(fileName);
        ArchiveFile(path).Make(copy.Files(), existing);
        auto store = std::make_unique<ArchiveStore>(path);
        store->Open();
        SetLoadedJob(fileName);
        stores[index] = std::move(store);
    });
    if (failure == nullptr) {
        return;
    }
    if (wasModified) {
        modified[index] = true;
    }
    LogFailedSave(PersistDomain::Job, failure);
    std::rethrow_exception(std::move(failure));
}

ArchiveStore& PersistManager::LoadedStore(PersistDomain domain) const {
    const std::unique_ptr<ArchiveStore>& store = stores[IndexOf(domain)];
    if (store == nullptr) {
        Vor::Throw(yERROR_STATE, "The %s domain can't be saved before it is loaded.", PersistDomain_Name(domain));
    }
    return *store;
}

// At the first failure the remaining handlers aren't called, and what was written is discarded.
void PersistManager::SaveHandlers(PersistDomain domain, ArchiveStore& store) {
    std::string component;
    try {
        const auto decorated = environ.decorateStore ? environ.decorateStore(store, domain) : nullptr;
        IPersistStore& seen = decorated ? *decorated : store;
        for (const unsigned long long id : HandlerIds()) {
            CallHandler(id, component, [&](IPersistHandler& handler) { handler.SavePersistDomain(domain, seen); });
        }
    } catch (const std::exception& e) {
        store.Discard();
        Vor::ThrowNested(Vor::Exception::StatusOf(e), "Persist handler \"%s\" failed to save the %s domain (%s).",
                         component, PersistDomain_Name(domain), e.what());
    } catch (...) {
        store.Discard();
        Vor::Throw(yERROR, "Persist handler \"%s\" failed to save the %s domain (unknown exception).", component,
                   PersistDomain_Name(domain));
    }
}

PersistManager::SaveResult PersistManager::LogFailedSave(PersistDomain domain, const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "The %s domain wasn't saved (%s).", PersistDomain_Name(domain), e.what());
        return {Vor::Exception::StatusOf(e), e.what()};
    }
}

std::vector<unsigned long long> PersistManager::HandlerIds() const {
    const std::lock_guard guard(handlersMutex);
    std::vector<unsigned long long> ids;
    ids.reserve(handlers.size());
    for (const Handler& handler : handlers) {
        ids.push_back(handler.id);
    }
    return ids;
}

// Calls the handler unless it was deregistered. `component` gets its name in logs.
void PersistManager::CallHandler(unsigned long long id, std::string& component,
                                 const std::function<void(IPersistHandler&)>& call) {
    IPersistHandler* handler = nullptr;
    {
        const std::lock_guard guard(handlersMutex);
        const auto found =
            std::find_if(handlers.begin(), handlers.end(), [id](const Handler& entry) { return entry.id == id; });
        if (found == handlers.end()) {
            return;
        }
        handler = found->handler;
        component = found->text;
        runningId = id;
        runningThread = std::this_thread::get_id();
    }
    std::exception_ptr failure = FailureOf([&] {
        component = handler->Component();
        call(*handler);
    });
    {
        const std::lock_guard guard(handlersMutex);
        runningId = 0;
    }
    callEnded.notify_all();
    if (failure != nullptr) {
        std::rethrow_exception(std::move(failure));
    }
}

} // namespace VorCommon
