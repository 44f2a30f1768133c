#pragma once

#include "VorApi/Object.h"
#include "VorApi/Threads/NamedThread.h"
#include "VorCommon/ArchiveFile.h"
#include "VorCommon/IPersistRegistrar.h"
#include "VorCommon/IPersistStore.h"
#include "VorCommon/PersistDomain.h"
#include "yApi/yStatus.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace VorCommon {

class ArchiveStore;
class RuntimeCache;

/// Owns the persistence thread and the files of the domains: the job is DATA/jobs/NAME.vrjob, the workspace
/// DATA/workspace.vrdata. The handlers run on that thread while the main loop waits for them.
class PersistManager final : public IPersistRegistrar {
public:
    /// Makes the store that handlers get in place of `store`, which outlives it. Called on the persistence thread.
    using StoreDecorator = std::function<std::unique_ptr<IPersistStore>(IPersistStore& store, PersistDomain domain)>;

    struct Environ {
        std::string dataFolder; ///< created when a domain is first saved
        std::string job;        ///< completed with ".vrjob"
        /// Reports the main loop as blocked from before the persistence thread is woken until it has answered.
        /// Borrowed; may be null.
        RuntimeCache* runtimeCache = nullptr;
        StoreDecorator decorateStore = nullptr; ///< may be empty
        /// Called with the file name of a job that LoadJob() or Restore() has loaded, or SaveJobAs() has saved, on the
        /// main loop, which isn't blocked any more. May be empty; what it throws is logged.
        std::function<void(const std::string& fileName)> jobLoaded = nullptr;
    };

    /// Writes the content of a job to its empty store.
    using JobFiller = std::function<void(IPersistStore& store)>;

    /// The result of a save. A failure is also logged.
    struct SaveResult {
        yStatus status = yOK;
        std::string text; ///< of the failure

        /// @throws Vor::Exception with status and text of a save that failed.
        void ThrowIfFailed() const;
    };

    /// The name of the workspace's file in the data folder.
    static constexpr const char* WorkspaceFile = "workspace.vrdata";

    /// The file name of a job: `name`, completed with ".vrjob" where that is missing.
    /// @throws Vor::Exception yERROR_PARAMETER unless it is one file name, in UTF-8 and without control characters,
    /// that doesn't begin with a dot.
    static std::string JobFileName(const std::string& name);

    /// Starts the thread; touches no file.
    /// @throws Vor::Exception yERROR_PARAMETER for a bad job name.
    explicit PersistManager(Environ environ);
    /// Ends the thread after the saves that were begun. Handlers are deregistered, or outlive this.
    ~PersistManager();

    PersistManager(const PersistManager&) = delete;
    PersistManager& operator=(const PersistManager&) = delete;

    unsigned long long Register(IPersistHandler& handler, const std::string& text) override;
    void Deregister(unsigned long long id) override;
    void Announce(IPersistHandler& handler, PersistDomain domain, int flag) override;

    /// Initialises each domain that has no file and loads the others, the workspace first. Main loop only; blocks.
    /// The exception of a handler is logged, and the other handlers are called. If it isn't a std::exception, no
    /// further handler is called for that domain.
    /// @throws Vor::Exception when a file isn't a readable archive, naming file and reason. Then no handler was called
    ///         and no file changed.
    void Load();

    /// Saves the domain. Main loop only; blocks while the handlers run, but not while the file is written.
    /// @return ready when the file is safely on the disk, or the save has failed and the file is as it was.
    std::shared_future<SaveResult> Save(PersistDomain domain);

    /// Saves the job to the file of another name, which is the loaded job from then on. Main loop only; blocks, also
    /// while the file is written. The file that was loaded before stays as it is.
    /// @throws Vor::Exception for a bad name, for a file that exists unless it may be replaced, and when the save
    /// fails,
    ///         which is also logged. Then the loaded job stays, and the other file is as it was.
    void SaveJobAs(const std::string& name, ArchiveFile::Existing existing);

    /// All files that the domain would have after a save; nothing is saved. Main loop only; blocks.
    /// @throws Vor::Exception as a save that fails.
    ArchiveFile::Entries ContentToSave(PersistDomain domain);

    /// Runs a task with the files of domains on the persistence thread, between the loads and saves that were begun
    /// before and those that are begun later. It must not be long, since these wait for it, and the main loop with
    /// them. Any thread; returns at once. The task also runs when this is destroyed before; what it throws is logged.
    void Post(std::function<void()> task);

    /// Loads another job, or the running one again; changes that weren't saved are lost. The name is completed with its
    /// extension. Main loop only; blocks. Before a handler is called the whole file is read, and each entry whose name
    /// ends with ".json" parsed. Failing handlers are treated as in Load().
    /// @throws Vor::Exception for a bad name, a missing file, one that isn't a readable archive or has an entry that is
    ///         no JSON, naming file, entry and reason. The failure is also written to the user's log; no handler was
    ///         called, and the loaded job stays.
    void LoadJob(const std::string& name);

    /// Starts again from the defaults: the handlers initialise both domains and then load the named job with the
    /// content that `fill` writes. The files of the workspace and of that job are replaced, other jobs stay. Main loop
    /// only; blocks, also while the files are written. `fill` is called first, on the persistence thread.
    /// @throws Vor::Exception, or what `fill` throws; the failure is also written to the user's log. After a bad name,
    ///         an exception or bad content of `fill`, or a file that can't be removed, no handler was called and the
    ///         loaded job stays. If a file can't be written, the job is loaded all the same and counts as modified, and
    ///         the file doesn't exist.
    void Restore(const std::string& name, const JobFiller& fill);

    /// The file name of the loaded job with its extension; empty before the first Load(). Any thread.
    std::string LoadedJob() const;
    /// The object of the loaded job, a yType_LiveJob, with a share that the caller releases with yObject_Release. Each
    /// load makes a new object. Null before the first Load(). Any thread.
    void* LiveJob() const;
    /// Whether a change was announced since the domain was last loaded or saved. Any thread.
    bool IsModified(PersistDomain domain) const;
    /// Where the domain's file is or would be.
    std::string FilePath(PersistDomain domain) const;

private:
    struct Handler {
        unsigned long long id;
        IPersistHandler* handler;
        std::string text;
    };

    struct LoadedDomain {
        PersistDomain domain;
        bool hasFile; ///< handlers load it; else they initialise it
        std::unique_ptr<ArchiveStore> store;
        std::unique_ptr<IPersistStore> decorated; ///< for the handlers in place of `store`; may be null
    };

    static constexpr std::size_t DomainCount = 2;

    static std::size_t IndexOf(PersistDomain domain);

    yStatus RunThread();
    /// Runs both steps on the thread. Returns when the first has ended, and throws what that throws.
    void RunWhileWaiting(std::function<void()> step, std::function<void()> after);
    LoadedDomain MakeLoadedDomain(PersistDomain domain, bool hasFile, std::unique_ptr<ArchiveStore> store) const;
    std::string JobFile() const;
    std::string JobPath(const std::string& fileName) const;
    std::string WorkspacePath() const;
    void LoadDomains();
    void LoadJobDomain(const std::string& fileName);
    void RestoreDomains(const std::string& fileName, const JobFiller& fill);
    void CommitRestored();
    void ChangeJob(const std::string& name, const std::function<void(const std::string& fileName)>& change);
    void NotifyJobLoaded() const;
    void SetLoadedJob(const std::string& fileName);
    void ApplyDomain(LoadedDomain loaded);
    void InitOrLoadHandlers(const LoadedDomain& loaded);
    void CommitInitialised();
    void SaveJobDomainAs(const std::string& fileName, ArchiveFile::Existing existing);
    /// The store of a domain that is loaded.
    ArchiveStore& LoadedStore(PersistDomain domain) const;
    void SaveHandlers(PersistDomain domain, ArchiveStore& store);
    static SaveResult LogFailedSave(PersistDomain domain, const std::exception_ptr& failure);
    std::vector<unsigned long long> HandlerIds() const;
    void CallHandler(unsigned long long id, std::string& component, const std::function<void(IPersistHandler&)>& call);

    const Environ environ;
    std::array<std::unique_ptr<ArchiveStore>, DomainCount> stores; ///< persistence thread only
    std::array<std::atomic<bool>, DomainCount> modified{};

    /// Guards the two members below. No other lock is taken while it is held.
    mutable std::mutex jobMutex;
    std::string jobFile;
    Vor::Object liveJob; ///< null: none is loaded yet

    /// Guards the handlers and the running call's id and thread. No other lock is taken and no handler called while it
    /// is held.
    mutable std::mutex handlersMutex;
    std::condition_variable callEnded;
    std::vector<Handler> handlers;
    unsigned long long lastId = 0;
    unsigned long long runningId = 0; ///< 0: none
    std::thread::id runningThread;

    /// Guards the members below except the thread. No other lock is taken while it is held.
    std::mutex queueMutex;
    std::condition_variable queueChanged;
    std::condition_variable stepEnded;
    bool hasStepEnded = false;      ///< the step for which the main loop waits
    std::exception_ptr stepFailure; ///< of that step
    std::deque<std::function<void()>> queue;
    bool ending = false;

    Vor::NamedThread thread; ///< last, so that it has ended before the other members are destroyed
};

} // namespace VorCommon
