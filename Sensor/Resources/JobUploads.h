#pragma once

#include "Net/NetThread.h"
#include "Sensor/Http/IUploadResource.h"
#include "Sensor/Resources/JobsEnviron.h"
#include "Vor/AsyncRunner.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>

namespace Sensor::Resources {

/// Receives the archives of jobs. What comes is written to a file beside the jobs, on a thread of this; when it is
/// whole it is checked there, and an archive with the same entries, which is safely on the disk, is moved to its place
/// on the persistence thread. Main loop only. The uploads that it has begun are destroyed before it.
class JobUploads {
public:
    /// The most uploads at a time.
    static constexpr std::size_t MaxCount = 4;
    /// Bytes of one upload that wait for the disk. A client isn't read from while there are more.
    static constexpr std::size_t MaxWaiting = std::size_t{256} * 1024;

    /// Removes what is left of uploads that didn't end, as when the program was killed. What the environment has
    /// outlives this.
    explicit JobUploads(const JobsEnviron& environ);
    ~JobUploads();
    JobUploads(const JobUploads&) = delete;
    JobUploads& operator=(const JobUploads&) = delete;

    /// Begins to receive the archive of the job of that name. Throws what SensorJobs::RequireReplaceable throws, and
    /// yERROR_BUSY when there are MaxCount uploads.
    std::unique_ptr<Http::IUpload> Begin(const std::string& name, Http::UploadTerms terms);

private:
    class Receipt;
    class Upload;

    const JobsEnviron environ;
    const std::string folder;
    const std::shared_ptr<std::atomic<std::size_t>> count = std::make_shared<std::atomic<std::size_t>>(0);
    std::size_t lastId = 0;
    const std::shared_ptr<const bool> alive = std::make_shared<bool>(true);
    const std::shared_ptr<Vor::AsyncRunner> mainLoop = std::make_shared<Vor::AsyncRunner>();
    Net::NetThread thread{"JobUploads"};
};

} // namespace Sensor::Resources
