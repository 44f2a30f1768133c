#include "VorCommon/ArchiveFile.h"

#include "Vor/Exception.h"
#include "VorCommon/MoveArchive.h"
#include "yApi/yFault.h"
#include "yApi/yStatus.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <sqlite3.h>
#include <zlib.h>

namespace VorCommon {

namespace {

constexpr int BusyTimeoutMilliseconds = 1000;
constexpr sqlite3_int64 RegularFileMode = S_IFREG | 0644;

[[noreturn]] void Refuse(const std::string& path, yStatus status, const std::string& reason) {
    Vor::Throw(status, "Archive '%s': %s.", path, reason);
}

yStatus StatusOf(int result) {
    switch (result & 0xFF) {
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
    case SQLITE_TOOBIG:
        return yERROR_FORMAT;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return yERROR_BUSY;
    default:
        return yERROR;
    }
}

/// An open database. Closing one with an open transaction rolls that back.
class Database {
public:
    Database(const std::string& path, int flags)
        : path(path) {
        const int result =
            sqlite3_open_v2(path.c_str(), &handle, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
        if (result != SQLITE_OK) {
            const std::string reason = handle != nullptr ? sqlite3_errmsg(handle) : sqlite3_errstr(result);
            sqlite3_close(handle);
            Refuse(path, StatusOf(result), reason);
        }
        sqlite3_busy_timeout(handle, BusyTimeoutMilliseconds);
        sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, static_cast<int>(2 * ArchiveFile::MaxEntrySize));
        // The file may come from anywhere: nothing of its schema is run.
        sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
        sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
        sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    }

    ~Database() { sqlite3_close(handle); }

    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    sqlite3* Handle() const { return handle; }
    const std::string& Path() const { return path; }

    void Check(int result) const {
        if (result != SQLITE_OK && result != SQLITE_ROW && result != SQLITE_DONE) {
            Refuse(path, StatusOf(result), sqlite3_errmsg(handle));
        }
    }

    void Execute(const char* sql) const { Check(sqlite3_exec(handle, sql, nullptr, nullptr, nullptr)); }

private:
    std::string path;
    sqlite3* handle = nullptr;
};

class Statement {
public:
    Statement(const Database& database, const char* sql)
        : database(database) {
        database.Check(sqlite3_prepare_v2(database.Handle(), sql, -1, &handle, nullptr));
    }

    ~Statement() { sqlite3_finalize(handle); }

    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    sqlite3_stmt* Handle() const { return handle; }

    bool Step() {
        const int result = sqlite3_step(handle);
        database.Check(result);
        return result == SQLITE_ROW;
    }

    void Rewind() { sqlite3_reset(handle); }

    void BindText(int index, const std::string& text) {
        database.Check(sqlite3_bind_text(handle, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT));
    }

    void BindInteger(int index, sqlite3_int64 value) { database.Check(sqlite3_bind_int64(handle, index, value)); }

    /// The bytes are borrowed until the statement is rewound.
    void BindBlob(int index, const std::vector<unsigned char>& bytes) {
        const int result = bytes.empty() ? sqlite3_bind_zeroblob(handle, index, 0)
                                         : sqlite3_bind_blob(handle, index, bytes.data(),
                                                             static_cast<int>(bytes.size()), SQLITE_STATIC);
        database.Check(result);
    }

private:
    const Database& database;
    sqlite3_stmt* handle = nullptr;
};

void RequireArchiveTable(const Database& database) {
    Statement find(database, "SELECT 1 FROM sqlite_schema WHERE name = 'sqlar' AND type = 'table' AND rootpage > 0");
    if (!find.Step()) {
        Refuse(database.Path(), yERROR_FORMAT, "it is a database without the table of an archive");
    }
}

/// SQLite itself reads a last page that is cut short as if it ended with zeros.
void RequireWholePages(const Database& database) {
    Statement pages(database, "SELECT page_count * page_size FROM pragma_page_count, pragma_page_size");
    pages.Step();
    std::error_code error;
    const auto size = std::filesystem::file_size(database.Path(), error);
    if (error || size < static_cast<std::uintmax_t>(sqlite3_column_int64(pages.Handle(), 0))) {
        Refuse(database.Path(), yERROR_FORMAT, "it is cut short");
    }
}

void RequireFewRows(const Database& database, std::size_t rowCount) {
    if (rowCount > ArchiveFile::MaxEntryCount) {
        Refuse(database.Path(), yERROR_FORMAT,
               "it has more than " + std::to_string(ArchiveFile::MaxEntryCount) + " entries");
    }
}

/// One row of `SELECT name, mode, sz, data`, or of `SELECT name, mode`, which has no content.
class Row {
public:
    Row(const Database& database, sqlite3_stmt* row)
        : database(database)
        , row(row) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, 0));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(row, 0));
        if (sqlite3_column_type(row, 0) != SQLITE_TEXT || text == nullptr || size == 0 ||
            size > ArchiveFile::MaxNameSize || std::strlen(text) != size) {
            Refuse(database.Path(), yERROR_FORMAT, "the name of an entry is missing, too long or not a text");
        }
        name.assign(text, size);
        type = static_cast<unsigned>(sqlite3_column_int64(row, 1)) & S_IFMT;
    }

    const std::string& Name() const { return name; }
    bool IsFolder() const { return type == S_IFDIR; }

    /// `sz` is the size of the content; where the data are shorter they are a zlib stream.
    ArchiveFile::Content Content() const {
        if (type == S_IFLNK) {
            RefuseEntry("is a symbolic link");
        }
        const sqlite3_int64 declared = sqlite3_column_int64(row, 2);
        if (declared < 0 || static_cast<std::size_t>(declared) > ArchiveFile::MaxEntrySize) {
            RefuseEntry("has a bad size");
        }
        const auto* data = static_cast<const unsigned char*>(sqlite3_column_blob(row, 3));
        const auto stored = static_cast<std::size_t>(sqlite3_column_bytes(row, 3));
        const auto size = static_cast<std::size_t>(declared);
        if (stored == size) {
            return std::make_shared<const std::vector<unsigned char>>(data, data + stored);
        }
        auto content = std::make_shared<std::vector<unsigned char>>(size);
        uLongf inflated = size;
        if (stored > size || uncompress(content->data(), &inflated, data, stored) != Z_OK || inflated != size) {
            RefuseEntry("can't be uncompressed to its size");
        }
        return content;
    }

private:
    [[noreturn]] void RefuseEntry(const char* reason) const {
        Refuse(database.Path(), yERROR_FORMAT, "entry '" + name + "' " + reason);
    }

    const Database& database;
    sqlite3_stmt* row;
    std::string name;
    unsigned type = 0;
};

void WriteEntries(const Database& database, const ArchiveFile::Entries& entries) {
    // Not an upsert: the table of another program may lack the primary key.
    Statement remove(database, "DELETE FROM sqlar WHERE name = ?1");
    Statement insert(database, "INSERT INTO sqlar(name, mode, mtime, sz, data) VALUES(?1, ?2, ?3, ?4, ?5)");
    const std::time_t now = std::time(nullptr);
    for (const auto& [name, content] : entries) {
        remove.BindText(1, name);
        remove.Step();
        remove.Rewind();
        insert.BindText(1, name);
        insert.BindInteger(2, RegularFileMode);
        insert.BindInteger(3, now);
        insert.BindInteger(4, static_cast<sqlite3_int64>(content->size()));
        insert.BindBlob(5, *content);
        insert.Step();
        insert.Rewind();
    }
}

/// With a rollback journal and waiting for the disk.
void MakeCrashSafe(const Database& database) {
    database.Execute("PRAGMA journal_mode = DELETE");
    database.Execute("PRAGMA synchronous = FULL");
}

void CheckSystemCall(int result, const std::string& path, const char* what) {
    if (result != 0) {
        Refuse(path, yERROR, std::string(what) + ": " + std::strerror(errno));
    }
}

/// Returns when the file or the folder is on the disk. Errors name `path`.
void Sync(const std::string& name, int flags, const std::string& path) {
    const int descriptor = open(name.c_str(), O_RDONLY | O_CLOEXEC | flags);
    CheckSystemCall(descriptor < 0 ? -1 : 0, path, "can't be opened to be synchronised");
    const int result = fsync(descriptor);
    const int error = errno;
    close(descriptor);
    errno = error;
    CheckSystemCall(result, path, "can't be synchronised");
}

/// A file's name is safely on the disk only when its folder is.
void SyncFolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    Sync(folder.empty() ? "." : folder, O_DIRECTORY, path);
}

void CreateFolderOf(const std::string& path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code error;
    if (!folder.empty() && !std::filesystem::create_directories(folder, error) && error) {
        Refuse(path, yERROR, "can't create its folder: " + error.message());
    }
}

void RequireFolderOf(const std::string& path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code error;
    if (!folder.empty() && !std::filesystem::is_directory(folder, error)) {
        Refuse(path, yERROR, "its folder doesn't exist");
    }
}

void RequireFile(const ArchiveFile& file) {
    if (!file.Exists()) {
        Refuse(file.Path(), yERROR_NOT_FOUND, "there is no such file");
    }
}

[[noreturn]] void RefuseExisting(const std::string& path) {
    Refuse(path, yERROR_ALREADY_EXISTS, "it exists already");
}

void CheckFault(const char* name, const std::string& path) {
    const yStatus status = yFault_Check(name);
    if (status != yOK) {
        Refuse(path, status, "the disk failed");
    }
}

/// An existing file must keep its old content if it isn't replaced in the end.
void RollBackInterruptedSave(const std::string& place) {
    try {
        if (ArchiveFile(place).Exists()) {
            Database(place, SQLITE_OPEN_READWRITE).Execute("SELECT 1 FROM sqlite_schema");
        }
    } catch (const Vor::Exception&) {
        return; // no archive: there is nothing to keep
    }
}

void RemoveIfThere(const std::string& path) {
    std::error_code error;
    std::filesystem::remove(path, error);
}

int Rename(const std::string& made, const std::string& place, unsigned flags) {
    const int result = renameat2(AT_FDCWD, made.c_str(), AT_FDCWD, place.c_str(), flags);
    // Not every file system supports flags.
    return result != 0 && errno == EINVAL ? std::rename(made.c_str(), place.c_str()) : result;
}

/// Moves a whole file, which is on the disk, to its place.
void PutInPlace(const std::string& made, const std::string& place, ArchiveFile::Existing existing) {
    const bool replace = existing == ArchiveFile::Existing::Replace;
    if (!replace && ArchiveFile(place).Exists()) {
        RefuseExisting(place);
    }
    RollBackInterruptedSave(place);
    // SQLite would apply the journal of a former file to the new one.
    RemoveIfThere(place + "-journal");
    if (Rename(made, place, replace ? 0 : RENAME_NOREPLACE) != 0) {
        if (errno == EEXIST) {
            RefuseExisting(place);
        }
        CheckSystemCall(-1, place, "can't be put in its place");
    }
    SyncFolderOf(place);
}

/// A file that is written beside its place and then moved there. Its first name begins with a dot, so it is no job.
class NewFile {
public:
    explicit NewFile(const std::string& place)
        : place(place)
        , made((std::filesystem::path(place).parent_path() /
                ("." + std::filesystem::path(place).filename().string() + ".new"))
                   .string()) {
        RemoveMade();
    }

    /// Removes the file unless it was put in its place.
    ~NewFile() { RemoveMade(); }

    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    const std::string& Path() const { return made; }

    void Sync() const { VorCommon::Sync(made, 0, place); }

    void PutInPlace(ArchiveFile::Existing existing) const { VorCommon::PutInPlace(made, place, existing); }

private:
    void RemoveMade() const {
        RemoveIfThere(made);
        RemoveIfThere(made + "-journal");
    }

    const std::string place;
    const std::string made;
};

} // namespace

ArchiveFile::ArchiveFile(std::string path)
    : path(std::move(path)) {}

bool ArchiveFile::Exists() const {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    return status.type() != std::filesystem::file_type::not_found;
}

std::vector<std::string> ArchiveFile::Names() const {
    CheckFault("ArchiveFile_Read", path);
    RequireFile(*this);
    const Database database(path, SQLITE_OPEN_READWRITE);
    RequireArchiveTable(database);
    RequireWholePages(database);
    Statement select(database, "SELECT name, mode FROM sqlar");
    std::vector<std::string> names;
    std::size_t rowCount = 0;
    while (select.Step()) {
        RequireFewRows(database, ++rowCount);
        const Row row(database, select.Handle());
        if (!row.IsFolder()) {
            names.push_back(row.Name());
        }
    }
    return names;
}

ArchiveFile::Entries ArchiveFile::Read() const {
    CheckFault("ArchiveFile_Read", path);
    RequireFile(*this);
    // Not read-only: only a writer can roll back an interrupted save. SQLite itself opens a file that it may not write
    // for reading.
    const Database database(path, SQLITE_OPEN_READWRITE);
    RequireArchiveTable(database);
    RequireWholePages(database);
    Statement select(database, "SELECT name, mode, sz, data FROM sqlar");
    Entries entries;
    std::size_t rowCount = 0;
    std::size_t totalSize = 0;
    while (select.Step()) {
        RequireFewRows(database, ++rowCount);
        const Row row(database, select.Handle());
        if (row.IsFolder()) {
            continue;
        }
        Content content = row.Content();
        totalSize += content->size();
        if (totalSize > MaxTotalSize) {
            Refuse(path, yERROR_FORMAT, "its content is larger than " + std::to_string(MaxTotalSize) + " bytes");
        }
        if (!entries.emplace(row.Name(), std::move(content)).second) {
            Refuse(path, yERROR_FORMAT, "entry '" + row.Name() + "' stands twice");
        }
    }
    return entries;
}

void ArchiveFile::Write(const Entries& entries) {
    CheckFault("ArchiveFile_Write", path);
    if (!Exists()) {
        Make(entries, Existing::Replace);
        return;
    }
    {
        const Database database(path, SQLITE_OPEN_READWRITE);
        RequireArchiveTable(database);
        RequireWholePages(database);
        MakeCrashSafe(database);
        database.Execute("BEGIN IMMEDIATE");
        WriteEntries(database, entries);
        CheckFault("ArchiveFile_Commit", path);
        database.Execute("COMMIT");
    }
    SyncFolderOf(path);
}

void ArchiveFile::Remove() {
    CheckFault("ArchiveFile_Remove", path);
    if (!Exists()) {
        return;
    }
    CheckSystemCall(unlink(path.c_str()), path, "can't be removed");
    std::error_code error;
    std::filesystem::remove(path + "-journal", error);
    SyncFolderOf(path);
}

void ArchiveFile::Make(const Entries& entries, Existing existing) {
    CreateFolderOf(path);
    NewFile made(path);
    {
        const Database database(made.Path(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        MakeCrashSafe(database);
        database.Execute("BEGIN IMMEDIATE");
        database.Execute("CREATE TABLE sqlar(name TEXT PRIMARY KEY, mode INT, mtime INT, sz INT, data BLOB)");
        WriteEntries(database, entries);
        CheckFault("ArchiveFile_Commit", path);
        database.Execute("COMMIT");
    }
    made.PutInPlace(existing);
}

void ArchiveFile::CopyTo(const std::string& copy, Existing existing) const {
    CheckFault("ArchiveFile_Read", path);
    RequireFile(*this);
    if (existing == Existing::Refuse && ArchiveFile(copy).Exists()) {
        RefuseExisting(copy);
    }
    RequireFolderOf(copy);
    NewFile made(copy);
    {
        const Database database(path, SQLITE_OPEN_READWRITE);
        RequireArchiveTable(database);
        RequireWholePages(database);
        Statement vacuum(database, "VACUUM INTO ?1");
        vacuum.BindText(1, made.Path());
        vacuum.Step();
    }
    made.Sync();
    made.PutInPlace(existing);
}

void MoveArchive(const std::string& made, const std::string& place, ArchiveFile::Existing existing) {
    CheckFault("MoveArchive", place);
    RequireFile(ArchiveFile(made));
    PutInPlace(made, place, existing);
}

} // namespace VorCommon
