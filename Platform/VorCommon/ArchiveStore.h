#pragma once

#include "VorCommon/ArchiveFile.h"
#include "VorCommon/IPersistStore.h"

#include <cstddef>
#include <string>

namespace VorCommon {

/// The files of one domain, held in memory between the read and the commit of its archive. The path
/// "/controls/x/config.json" is the entry "controls/x/config.json". Not thread-safe.
class ArchiveStore : public IPersistStore {
public:
    explicit ArchiveStore(std::string filePath);

    /// Reads the archive if there is one.
    /// @return false when there is none.
    /// @throws Vor::Exception as ArchiveFile::Read(); the store stays as it was.
    bool Open();

    PersistBuffer Read(const std::string& path) const override;
    /// Kept in memory until Commit().
    void Write(const std::string& path, const void* bytes, std::size_t size) override;
    bool Exists(const std::string& path) const override;

    /// Writes the changes since the last commit to the archive, all or nothing. Without changes an existing archive
    /// isn't touched, and without content none is made.
    /// @throws Vor::Exception as ArchiveFile::Write(); the changes are discarded then.
    void Commit();
    /// Reads the archive of a job, which must be there.
    /// @throws Vor::Exception as ArchiveFile::Read() and RequireJson().
    void OpenJob();
    /// @throws Vor::Exception yERROR_FORMAT, naming file, entry and reason, when an entry whose name ends with ".json"
    ///         is no JSON.
    void RequireJson() const;
    /// All files with the changes, by the name in the archive.
    ArchiveFile::Entries Files() const;
    /// Writes all files of the other store.
    void WriteAll(const ArchiveStore& other);
    /// Discards the changes since the last commit.
    void Discard();

private:
    const ArchiveFile::Content* Find(const std::string& name) const;
    /// Throws yERROR_FULL for content that would exceed the limits of a read.
    void RequireRoom(const std::string& name, std::size_t size) const;

    ArchiveFile file;
    ArchiveFile::Entries committed;
    ArchiveFile::Entries written; ///< since the last commit
};

} // namespace VorCommon
