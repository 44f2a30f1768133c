#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VorCommon {

/// One file that is an SQLite Archive: an SQLite database with the table `sqlar(name, mode, mtime, sz, data)`, as
/// https://sqlite.org/sqlar.html defines it, so that `sqlite3 FILE -A --list` lists it. Files are untrusted: one that
/// breaks a limit or the format is refused with a `Vor::Exception` that names the file and the reason, and stays as it
/// is. Calls block until the disk has answered. Not thread-safe.
class ArchiveFile {
public:
    using Content = std::shared_ptr<const std::vector<unsigned char>>;
    /// By the name in the archive, which has no leading slash.
    using Entries = std::map<std::string, Content>;

    static constexpr std::size_t MaxEntryCount = 4096;
    static constexpr std::size_t MaxNameSize = 1024;                           ///< bytes
    static constexpr std::size_t MaxEntrySize = std::size_t{16} * 1024 * 1024; ///< bytes, uncompressed
    static constexpr std::size_t MaxTotalSize = std::size_t{64} * 1024 * 1024; ///< bytes of all entries, uncompressed

    explicit ArchiveFile(std::string path);

    const std::string& Path() const { return path; }
    /// True also for a file that can't be read.
    bool Exists() const;

    /// All files of the archive, without its folders. An interrupted save is rolled back first.
    /// @throws Vor::Exception yERROR_NOT_FOUND without a file, yERROR_FORMAT when it is no archive, damaged or beyond
    ///         the limits, yERROR_BUSY when another program has it locked, else yERROR.
    Entries Read() const;

    /// The names of all files of the archive, in no order; their content isn't read.
    /// @throws Vor::Exception as Read().
    std::vector<std::string> Names() const;

    /// Creates or replaces these entries, all or none, also when the process or the machine stops in between, and
    /// returns when they are safely on the disk. Other entries stay. A file that doesn't exist is created with its
    /// folder; a file that is no archive is refused and stays.
    /// @throws Vor::Exception as Read().
    void Write(const Entries& entries);

    /// What to do with a file that already exists in the place of a new one.
    enum class Existing { Refuse, Replace };

    /// Creates the file, and its folder, with exactly these entries. It appears whole, or not at all.
    /// @throws Vor::Exception as Write(), yERROR_ALREADY_EXISTS for a file that mustn't be replaced.
    void Make(const Entries& entries, Existing existing);

    /// Copies the file, which may be in use, into a folder that exists. The copy appears whole, or not at all. The file
    /// must be a whole archive; its entries aren't checked.
    /// @throws Vor::Exception as Read(), yERROR_ALREADY_EXISTS for a file that mustn't be replaced.
    void CopyTo(const std::string& copy, Existing existing) const;

    /// Removes the file and what an interrupted save has left beside it. Does nothing if there is no file.
    /// @throws Vor::Exception when it can't be removed.
    void Remove();

private:
    std::string path;
};

} // namespace VorCommon
