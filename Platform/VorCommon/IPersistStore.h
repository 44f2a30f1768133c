#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace VorCommon {

/// The content of one stored file. It is valid as long as the buffer or a copy of it, also when the file is written
/// again.
struct PersistBuffer {
    const unsigned char* pointer = nullptr;
    std::size_t offset = 0;            ///< the content begins at pointer + offset; it isn't terminated
    std::size_t size = 0;              ///< of the content, in bytes, without the offset
    std::shared_ptr<const void> owner; ///< keeps the content
};

/// The files of one persistence domain, for a handler during one call. Not thread-safe.
/// Paths begin with a slash and are relative to the store: "/controls/modbus/config.json".
class IPersistStore {
public:
    virtual ~IPersistStore() = default;

    /// @throws Vor::Exception yERROR_NOT_FOUND without such a file, another status when it can't be read.
    virtual PersistBuffer Read(const std::string& path) const = 0;
    /// Creates or replaces the file. Folders need no creation.
    /// @throws Vor::Exception when it can't be stored; the former content stays then.
    virtual void Write(const std::string& path, const void* bytes, std::size_t size) = 0;
    virtual bool Exists(const std::string& path) const = 0;
};

} // namespace VorCommon
