#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VorCommon {

/// One file that is an SQLite Archive: an SQLite database with the table `sqlar(name, mode, mtime, sz, data)`, as
/// https://sqlite.org/sqlar.html defines it, so that `sqlite3 FILE -A --list` lists it. What is read is untrusted:
/// whatever breaks a limit or the format is refused with a `Vor::Exception` that names the file and the reason, and the
/// file stays as it is. Blocks on the disk. Not thread-safe.
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
    /// True also when something is there that can't be read.
    bool Exists() const;

    /// All files of the archive, without its folders. A save that was interrupted is taken back first.
    /// @throws Vor::Exception yERROR_NOT_FOUND without a file, yERROR_FORMAT when it is no archive, damaged or beyond
    ///         the limits, yERROR_BUSY when another program has it locked, else yERROR.
    Entries Read() const;

    /// Creates or replaces these entries, all or none, also when the process or the machine stops in between, and
    /// returns when they are safely on the disk. What else the archive holds stays. A file that doesn't exist is
    /// created with its folder; a file that is no archive is refused and stays.
    /// @throws Vor::Exception as Read().
    void Write(const Entries& entries);

    /// Whether a file that is made takes the place of one that is there.
    enum class Existing { Refuse, Replace };

    /// Makes the file, with its folder, of exactly these entries. It appears whole, or not at all.
    /// @throws Vor::Exception as Write(), yERROR_ALREADY_EXISTS for a file that mustn't be replaced.
    void Make(const Entries& entries, Existing existing);

    /// Makes a copy of the file, which may be in use, in a folder that is there. It appears whole, or not at all. The
    /// file must be a whole archive; its entries aren't looked at.
    /// @throws Vor::Exception as Read(), yERROR_ALREADY_EXISTS for a file that mustn't be replaced.
    void CopyTo(const std::string& copy, Existing existing) const;

    /// Removes the file, with what an interrupted save has left beside it. Nothing happens without one.
    /// @throws Vor::Exception when it can't be removed; it then stays.
    void Remove();

private:
    std::string path;
};

} // namespace VorCommon
