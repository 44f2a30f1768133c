#pragma once

#include "VorApi/Object.h"
#include "VorApi/Threads/NamedThread.h"
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
class PersistManager : public IPersistRegistrar {
public:
    /// Gives the store that handlers see in place of the one given, which outlives it. Called on the persistence
    /// thread.
    using StoreDecorator = std::function<std::unique_ptr<IPersistStore>(IPersistStore& store, PersistDomain domain)>;

    struct Environ {
        std::string dataFolder; ///< created when a domain is first saved
        std::string job;        ///< completed with ".vrjob"
        /// Reports the main loop as blocked from before the persistence thread is woken until it has answered.
        /// Borrowed; may be null.
        RuntimeCache* runtimeCache = nullptr;
        StoreDecorator decorateStore = nullptr; ///< may be empty
        /// Told the file name of a job that LoadJob() or Restore() has loaded, on the main loop, which isn't blocked
        /// any more. May be empty; what it throws is logged.
        std::function<void(const std::string& fileName)> jobLoaded = nullptr;
    };

    /// Puts the content of a job into its empty store.
    using JobFiller = std::function<void(IPersistStore& store)>;

    /// What became of a save. A failure is also logged.
    struct SaveResult {
        yStatus status = yOK;
        std::string text; ///< what failed

        /// @throws Vor::Exception with status and text of a save that failed.
        void ThrowIfFailed() const;
    };

    /// The file name of a job: the name given, completed with ".vrjob" where that is missing.
    /// @throws Vor::Exception yERROR_PARAMETER unless it is one file name, in UTF-8, that doesn't begin with a dot.
    static std::string JobFileName(const std::string& name);

    /// Starts the thread; touches no file.
    /// @throws Vor::Exception yERROR_PARAMETER for a bad job name.
    explicit PersistManager(Environ environ);
    /// Ends the thread, after what was asked of it. Handlers must be gone, or outlive this.
    ~PersistManager();

    PersistManager(const PersistManager&) = delete;
    PersistManager& operator=(const PersistManager&) = delete;

    unsigned long long Register(IPersistHandler& handler, const std::string& text) override;
    void Deregister(unsigned long long id) override;
    void Announce(IPersistHandler& handler, PersistDomain domain, int flag) override;

    /// Initialises each domain that has no file and loads the others, the workspace first. Main loop only; blocks.
    /// A failing handler is logged and doesn't keep the others from their turn, unless what it throws is no
    /// std::exception, which ends that domain's turn.
    /// @throws Vor::Exception when a file isn't a readable archive, naming file and reason; no handler was called then
    ///         and no file was changed.
    void Load();

    /// Saves the domain. Main loop only; blocks while the handlers write, but not while the file is written.
    /// @return ready when the file is safely on the disk, or the save has failed and the file is as it was.
    std::shared_future<SaveResult> Save(PersistDomain domain);

    /// Loads another job, or the running one anew; what wasn't saved of it is lost. The name is completed with its
    /// extension. Main loop only; blocks. Before a handler is called the whole file is read, and each entry whose name
    /// ends with ".json" parsed. Failing handlers are treated as in Load().
    /// @throws Vor::Exception for a bad name, a file that isn't there, isn't a readable archive or holds an entry that
    ///         is no JSON, naming file, entry and reason. That is told in the user's log, too, no handler was called,
    ///         and the loaded job stays.
    void LoadJob(const std::string& name);

    /// Begins anew: lets the handlers initialise both domains, and loads the named job with what `fill` gives it. The
    /// files of the workspace and of that job are replaced, other jobs stay. Main loop only; blocks, also while the
    /// files are written. `fill` is called on the persistence thread, before all else.
    /// @throws Vor::Exception, or what `fill` throws, which is told in the user's log, too. For a bad name, what `fill`
    ///         throws or gives, and a file that can't be removed no handler was called and the loaded job stays. When a
    ///         file can't be written the job is loaded all the same, counts as modified, and there is no such file.
    void Restore(const std::string& name, const JobFiller& fill);

    /// The file name of the loaded job with its extension; empty before the first Load(). Any thread.
    std::string LoadedJob() const;
    /// A share of the object of the loaded job, a yType_LiveJob, which the caller gives up with yObject_Release. Each
    /// load makes a new one. Null before the first Load(). Any thread.
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
        bool hasFile;
        std::unique_ptr<ArchiveStore> store;
        std::unique_ptr<IPersistStore> decorated;
    };

    static constexpr std::size_t DomainCount = 2;

    static std::size_t IndexOf(PersistDomain domain);

    yStatus RunThread();
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
    void SaveHandlers(PersistDomain domain);
    static SaveResult LogFailedSave(PersistDomain domain, const std::exception_ptr& failure);
    std::vector<unsigned long long> HandlerIds() const;
    void CallHandler(unsigned long long id, std::string& component, const std::function<void(IPersistHandler&)>& call);

    const Environ environ;
    std::array<std::unique_ptr<ArchiveStore>, DomainCount> stores; ///< persistence thread only
    std::array<std::atomic<bool>, DomainCount> modified{};

    /// Guards what is told of the job. A leaf.
    mutable std::mutex jobMutex;
    std::string jobFile;
    Vor::Object liveJob; ///< null: none is loaded yet

    /// Guards the handlers and what is told of the running call. A leaf: nothing else is locked and no handler is
    /// called under it.
    mutable std::mutex handlersMutex;
    std::condition_variable callEnded;
    std::vector<Handler> handlers;
    unsigned long long lastId = 0;
    unsigned long long runningId = 0; ///< 0: none
    std::thread::id runningThread;

    /// Guards the queue of the thread, its end and its answer to the main loop. A leaf.
    std::mutex queueMutex;
    std::condition_variable queueChanged;
    std::condition_variable answerGiven;
    bool answered = false;
    std::exception_ptr answer; ///< the failure of what the main loop waits for
    std::deque<std::function<void()>> queue;
    bool ending = false;

    Vor::NamedThread thread; ///< last, so that it has ended before the other members are destroyed
};

} // namespace VorCommon
