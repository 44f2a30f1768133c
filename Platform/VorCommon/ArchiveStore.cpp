#include "VorCommon/ArchiveStore.h"

#include "Vor/Exception.h"
#include "Vor/JsonText.h"
#include "yApi/yFault.h"
#include "yApi/yStatus.h"

#include <memory>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace VorCommon {

namespace {

constexpr const char* JsonExtension = ".json";

std::string EntryName(const std::string& path) {
    if (path.size() < 2 || path.front() != '/' || path.size() - 1 > ArchiveFile::MaxNameSize ||
        path.find('\0') != std::string::npos) {
        Vor::Throw(yERROR_PARAMETER, "'%s' is not the path of a stored file.", path);
    }
    return path.substr(1);
}

ArchiveFile::Entries Merge(const ArchiveFile::Entries& older, const ArchiveFile::Entries& newer) {
    ArchiveFile::Entries merged = newer;
    merged.insert(older.begin(), older.end());
    return merged;
}

} // namespace

ArchiveStore::ArchiveStore(std::string filePath)
    : file(std::move(filePath)) {}

bool ArchiveStore::Open() {
    const bool exists = file.Exists();
    committed = exists ? file.Read() : ArchiveFile::Entries();
    written.clear();
    return exists;
}

PersistBuffer ArchiveStore::Read(const std::string& path) const {
    const yStatus fault = yFault_Check("IPersistStore_Read");
    if (fault != yOK) {
        Vor::Throw(fault, "Archive '%s': can't read '%s'.", file.Path(), path);
    }
    const ArchiveFile::Content* content = Find(EntryName(path));
    if (content == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND, "Archive '%s': there is no '%s'.", file.Path(), path);
    }
    PersistBuffer buffer;
    buffer.pointer = (*content)->data();
    buffer.size = (*content)->size();
    buffer.owner = *content;
    return buffer;
}

void ArchiveStore::Write(const std::string& path, const void* bytes, std::size_t size) {
    const yStatus fault = yFault_Check("IPersistStore_Write");
    if (fault != yOK) {
        Vor::Throw(fault, "Archive '%s': can't write '%s'.", file.Path(), path);
    }
    const std::string name = EntryName(path);
    RequireRoom(name, size);
    const auto* begin = static_cast<const unsigned char*>(bytes);
    written[name] = std::make_shared<const std::vector<unsigned char>>(begin, begin + size);
}

bool ArchiveStore::Exists(const std::string& path) const {
    return Find(EntryName(path)) != nullptr;
}

void ArchiveStore::Commit() {
    ArchiveFile::Entries merged = Files();
    ArchiveFile::Entries changes = std::exchange(written, {});
    const bool exists = file.Exists();
    if (exists ? changes.empty() : merged.empty()) {
        return;
    }
    file.Write(exists ? changes : merged);
    committed = std::move(merged);
}

void ArchiveStore::OpenJob() {
    committed = file.Read();
    written.clear();
    RequireJson();
}

ArchiveFile::Entries ArchiveStore::Files() const {
    return Merge(committed, written);
}

void ArchiveStore::RequireJson() const {
    for (const auto& [name, content] : Files()) {
        if (!name.ends_with(JsonExtension)) {
            continue;
        }
        try {
            Vor::ParseJson(reinterpret_cast<const char*>(content->data()), content->size());
        } catch (const Vor::Exception& e) {
            Vor::ThrowNested(yERROR_FORMAT, "Archive '%s': entry '%s' is no JSON: %s", file.Path(), name, e.what());
        }
    }
}

void ArchiveStore::WriteAll(const ArchiveStore& other) {
    for (const auto& [name, content] : other.Files()) {
        RequireRoom(name, content->size());
        written[name] = content;
    }
}

void ArchiveStore::Discard() {
    written.clear();
}

const ArchiveFile::Content* ArchiveStore::Find(const std::string& name) const {
    for (const ArchiveFile::Entries* entries : {&written, &committed}) {
        const auto found = entries->find(name);
        if (found != entries->end()) {
            return &found->second;
        }
    }
    return nullptr;
}

void ArchiveStore::RequireRoom(const std::string& name, std::size_t size) const {
    std::size_t count = 1;
    std::size_t total = size;
    for (const auto& [other, content] : Files()) {
        if (other != name) {
            count += 1;
            total += content->size();
        }
    }
    if (size > ArchiveFile::MaxEntrySize || total > ArchiveFile::MaxTotalSize || count > ArchiveFile::MaxEntryCount) {
        Vor::Throw(yERROR_FULL, "Archive '%s': '%s' with %zu bytes is too large.", file.Path(), name, size);
    }
}

} // namespace VorCommon
